// As strict as the system's about sizes; all else is what the test said.
#include "tests/dialup/fake_ras.h"

#include <raserror.h>

#include <cwchar>

namespace {

FakeRas ras;

const auto kConnection = reinterpret_cast<HRASCONN>(0x77);

}  // namespace

#define EXPORT extern "C" __declspec(dllexport)

EXPORT FakeRas* FakePhoneBook() {
    return &ras;
}

EXPORT DWORD WINAPI RasEnumEntriesW(LPCWSTR, LPCWSTR, LPRASENTRYNAMEW entries, LPDWORD size, LPDWORD count) {
    const DWORD needed = ras.nameCount * sizeof(*entries);
    if (entries->dwSize != sizeof(*entries)) return ERROR_INVALID_SIZE;
    if (ras.listError) return ras.listError;
    const bool fits = *size >= needed;
    *size = needed;
    *count = ras.nameCount;
    if (!fits) return ERROR_BUFFER_TOO_SMALL;
    for (DWORD i = 0; i < ras.nameCount; ++i)
        std::wcscpy(entries[i].szEntryName, ras.names[i]);
    return 0;
}

EXPORT DWORD WINAPI RasEnumConnectionsW(LPRASCONNW connections, LPDWORD size, LPDWORD count) {
    if (connections->dwSize != sizeof(*connections)) return ERROR_INVALID_SIZE;
    const DWORD needed = ras.connections * sizeof(*connections);
    const bool fits = *size >= needed;
    *size = needed;
    *count = ras.connections;
    return fits ? 0 : ERROR_BUFFER_TOO_SMALL;
}

EXPORT DWORD WINAPI RasGetEntryDialParamsW(LPCWSTR, LPRASDIALPARAMSW parameters, LPBOOL hasPassword) {
    if (parameters->dwSize != sizeof(*parameters)) return ERROR_INVALID_SIZE;
    std::wcscpy(parameters->szUserName, L"caller");
    *hasPassword = TRUE;
    return 0;
}

EXPORT DWORD WINAPI RasDialW(LPRASDIALEXTENSIONS extensions, LPCWSTR book, LPRASDIALPARAMSW parameters,
                             DWORD notifierType, LPVOID notifier, LPHRASCONN connection) {
    constexpr DWORD kWindow = 0xFFFFFFFF;
    if (parameters->dwSize != sizeof(*parameters)) return ERROR_INVALID_SIZE;
    if (extensions || book || notifierType != kWindow) return ERROR_INVALID_PARAMETER;
    std::wcsncpy(ras.entry, parameters->szEntryName, 31);
    std::wcsncpy(ras.phone, parameters->szPhoneNumber, 31);
    std::wcsncpy(ras.user, parameters->szUserName, 31);
    ras.notified = static_cast<HWND>(notifier);
    *connection = kConnection;
    ras.dials = ras.dials + 1;
    return ras.dialError;
}

EXPORT DWORD WINAPI RasHangUpW(HRASCONN connection) {
    ras.hungUp = connection;
    ras.hangUps = ras.hangUps + 1;
    return connection == kConnection ? 0 : ERROR_INVALID_HANDLE;
}
