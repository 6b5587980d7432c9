// The desktop's spelling of what platform.h promises.
#include <cstring>

#include "platform/platform.h"

void SetWindowPointer(HWND window, int offset, void* pointer) {
    SetWindowLongPtrW(window, offset, reinterpret_cast<LONG_PTR>(pointer));
}

// Offset 0 is DWL_MSGRESULT.
void SetDialogResult(HWND dialog, int result) {
    SetWindowLongPtrW(dialog, 0, result);
}

void* GetWindowPointer(HWND window, int offset) {
    return reinterpret_cast<void*>(GetWindowLongPtrW(window, offset));
}

bool PutOnClipboard(UINT format, const void* bytes, SIZE_T size) {
    const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, size);
    void* memory = block ? GlobalLock(block) : nullptr;
    if (memory) std::memcpy(memory, bytes, size);
    if (memory) GlobalUnlock(block);
    if (memory && SetClipboardData(format, block)) return true;  // the clipboard's from here on
    const DWORD error = memory ? GetLastError() : ERROR_NOT_ENOUGH_MEMORY;
    if (block) GlobalFree(block);
    SetLastError(error);
    return false;
}
