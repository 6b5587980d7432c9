// The program's calls to the system go through the import table. A suite may put functions of its own there.
#pragma once

#include <winsock2.h>

#include <windows.h>

// Makes calls of the system's function `Name` reach `function`: the linker takes this entry of the import
// table before it looks into the system's library.
#define IN_PLACE_OF(Name, function)                                       \
    extern "C" {                                                          \
    extern decltype(&(function)) inPlaceOf##Name __asm__("__imp_" #Name); \
    decltype(&(function)) inPlaceOf##Name = function;                     \
    }

// The system's own.
template <class Function>
Function RealFunction(const char* name, const wchar_t* library = L"kernel32.dll") {
    return reinterpret_cast<Function>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(library), name)));
}
