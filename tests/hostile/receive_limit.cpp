#include "tests/hostile/receive_limit.h"

#include <winsock2.h>

#include <windows.h>

std::atomic<unsigned long> receiveLimit{kLongLimit};

namespace {

using Select = decltype(&select);

// Only the program waits for whole seconds: 120, or 10 while commands are on the way. Any other limit stays.
long Shortened(const timeval& limit) {
    if (limit.tv_usec == 0 && limit.tv_sec == 120) return static_cast<long>(receiveLimit);
    if (limit.tv_usec == 0 && limit.tv_sec == 10) return static_cast<long>(receiveLimit / 2);
    return limit.tv_sec * 1000 + limit.tv_usec / 1000;
}

int WSAAPI SelectShorter(int count, fd_set* readable, fd_set* writable, fd_set* failed,
                         const PTIMEVAL limit) {
    static const auto wait = reinterpret_cast<Select>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ws2_32.dll"), "select")));
    if (!limit) return wait(count, readable, writable, failed, limit);
    const long milliseconds = Shortened(*limit);
    timeval shorter = {milliseconds / 1000, milliseconds % 1000 * 1000};
    return wait(count, readable, writable, failed, &shorter);
}

}  // namespace

// Calls of a system function go through this pointer, which the linker takes from here before it looks into
// the system's library.
extern "C" {
extern Select __imp_select;
Select __imp_select = SelectShorter;
}
