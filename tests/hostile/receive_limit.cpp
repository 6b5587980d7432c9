#include "tests/hostile/receive_limit.h"

#include <winsock2.h>

#include <windows.h>

std::atomic<unsigned long> receiveLimit{kLongLimit};
std::atomic<unsigned long> askedLimit{0};

namespace {

using SetOption = decltype(&setsockopt);

int WSAAPI SetShortLimit(SOCKET socket, int level, int option, const char* value, int size) {
    static const auto set = reinterpret_cast<SetOption>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ws2_32.dll"), "setsockopt")));
    if (level != SOL_SOCKET || option != SO_RCVTIMEO) return set(socket, level, option, value, size);
    askedLimit = *reinterpret_cast<const DWORD*>(value);
    const DWORD limit = receiveLimit;
    return set(socket, level, option, reinterpret_cast<const char*>(&limit), sizeof limit);
}

}  // namespace

// Calls of a system function go through this pointer, which the linker takes from here before it looks into
// the system's library.
extern "C" {
extern SetOption __imp_setsockopt;
SetOption __imp_setsockopt = SetShortLimit;
}
