// Calls that the device has through its own headers only, which define them over an export of another name.
#include "platform/platform.h"

extern "C" BOOL EventModify(HANDLE event, DWORD change);

constexpr DWORD kSetEvent = 3;

extern "C" BOOL WINAPI SetEvent(HANDLE event) {
    return EventModify(event, kSetEvent);
}
