// The desktop's spelling of what platform.h promises.
#include "platform/platform.h"

void SetWindowPointer(HWND window, int offset, void* pointer) {
    SetWindowLongPtrW(window, offset, reinterpret_cast<LONG_PTR>(pointer));
}

void* GetWindowPointer(HWND window, int offset) {
    return reinterpret_cast<void*>(GetWindowLongPtrW(window, offset));
}
