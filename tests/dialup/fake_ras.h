// A phone book and a line of the tests' own, in a library of the system library's name. The test says what
// they hold and plays the line: it posts the events of a call to `notified` itself.
#pragma once

#include <winsock2.h>

#include <windows.h>

#include <ras.h>

struct FakeRas {
    static constexpr DWORD kMostNames = 101;

    // The test's.
    DWORD nameCount = 0;
    wchar_t names[kMostNames][32] = {};
    DWORD listError = 0;
    DWORD dialError = 0;
    DWORD connections = 0;  // that are up already

    // What was asked for.
    volatile int dials = 0;
    volatile int hangUps = 0;
    HWND notified = nullptr;
    wchar_t entry[32] = {};
    wchar_t phone[32] = {};
    wchar_t user[32] = {};
    HRASCONN hungUp = nullptr;
};

// Null where the library is missing or the system's.
inline FakeRas* GetFakeRas() {
    using Get = FakeRas* (*)();
    const HMODULE library = LoadLibraryW(L"rasapi32.dll");
    const auto get =
        library ? reinterpret_cast<Get>(reinterpret_cast<void*>(GetProcAddress(library, "FakePhoneBook")))
                : nullptr;
    return get ? get() : nullptr;
}
