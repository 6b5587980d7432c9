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

// A drive without a disk is an empty folder, without a box that asks for one.
void ListRoots(wchar_t (&roots)[kRootsSize]) {
    SetErrorMode(SEM_FAILCRITICALERRORS);
    std::memcpy(roots, L"\\\0", 3 * sizeof(wchar_t));
    GetLogicalDriveStringsW(kRootsSize - 2, roots + 2);
}

bool CompletePath(wchar_t (&path)[kPathSize]) {
    wchar_t whole[kPathSize];
    const DWORD length = GetFullPathNameW(path, kPathSize, whole, nullptr);
    if (length == 0 || length >= kPathSize) return false;
    std::memcpy(path, whole, sizeof whole);
    return true;
}

// Offset 0 is DWL_MSGRESULT.
void SetDialogResult(HWND dialog, int result) {
    SetWindowLongPtrW(dialog, 0, result);
}

void* GetWindowPointer(HWND window, int offset) {
    return reinterpret_cast<void*>(GetWindowLongPtrW(window, offset));
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
