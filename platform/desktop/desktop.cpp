// The desktop's side of platform.h.
#include <cstring>

#include "platform/owners.h"

namespace {

struct GlobalTraits {
    using Handle = HGLOBAL;
    static Handle None() { return nullptr; }
    static void Free(Handle handle) { GlobalFree(handle); }
};

}  // namespace

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

int EndKey(WPARAM key) {
    if (key == VK_HOME) return -1;
    return key == VK_END ? 1 : 0;
}

bool OpensRow(const NMHDR& notice) {
    if (notice.code == static_cast<UINT>(NM_DBLCLK)) return true;
    return notice.code == static_cast<UINT>(LVN_KEYDOWN) &&
           reinterpret_cast<const NMLVKEYDOWN&>(notice).wVKey == VK_SPACE;
}

bool PutOnClipboard(UINT format, const void* bytes, SIZE_T size) {
    Owner<GlobalTraits> block(GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, size));
    void* memory = block ? GlobalLock(block.Get()) : nullptr;
    if (!memory) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return false;
    }
    std::memcpy(memory, bytes, size);
    GlobalUnlock(block.Get());
    if (!SetClipboardData(format, block.Get())) return false;
    block.Release();  // the clipboard owns it now
    return true;
}
