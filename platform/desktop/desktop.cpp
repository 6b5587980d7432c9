// The desktop's spelling of what platform.h promises.
#include <cstring>

#include "platform/memory.h"
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

HANDLE MakeClipboardBlock(const void* bytes, SIZE_T size) {
    const HGLOBAL block = MemoryAllowed() ? GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, size) : nullptr;
    void* memory = block ? GlobalLock(block) : nullptr;
    if (!memory) return nullptr;
    std::memcpy(memory, bytes, size);
    GlobalUnlock(block);
    return block;
}
