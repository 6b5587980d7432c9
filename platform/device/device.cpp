// The device's spelling of what platform.h promises: a pointer fits a window's 32-bit words there.
#include "platform/platform.h"

void SetWindowPointer(HWND window, int offset, void* pointer) {
    SetWindowLongW(window, offset, reinterpret_cast<LONG>(pointer));
}

void* GetWindowPointer(HWND window, int offset) {
    return reinterpret_cast<void*>(GetWindowLongW(window, offset));
}
