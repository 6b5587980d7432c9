// The device's spelling of what platform.h promises: a pointer fits a window's 32-bit words there.
#include <cstring>

#include "platform/platform.h"

static_assert(sizeof(SHMENUBARINFO) == 32);
static_assert(kPointerExtra == 4);
static_assert(sizeof(fd_set) == 260 && sizeof(timeval) == 8);

void SetWindowPointer(HWND window, int offset, void* pointer) {
    SetWindowLongW(window, offset, reinterpret_cast<LONG>(pointer));
}

// The shell gives the frame the whole screen.
void SetUpDesktopFrame(HWND, int, const wchar_t*, UINT) {}

void ListRoots(wchar_t (&roots)[kRootsSize]) {
    std::memcpy(roots, L"\\\0", 3 * sizeof(wchar_t));
}

bool CompletePath(wchar_t (&)[kPathSize]) {
    return true;
}

// Offset 0 is DWL_MSGRESULT.
void SetDialogResult(HWND dialog, int result) {
    SetWindowLongW(dialog, 0, result);
}

void* GetWindowPointer(HWND window, int offset) {
    return reinterpret_cast<void*>(GetWindowLongW(window, offset));
}

// A local block is fixed here: its handle is its address.
bool PutOnClipboard(UINT format, const void* bytes, SIZE_T size) {
    const HLOCAL block = LocalAlloc(LMEM_FIXED | LMEM_ZEROINIT, size);
    if (block) std::memcpy(block, bytes, size);
    if (block && SetClipboardData(format, block)) return true;  // the clipboard's from here on
    const DWORD error = block ? GetLastError() : ERROR_NOT_ENOUGH_MEMORY;
    if (block) LocalFree(block);
    SetLastError(error);
    return false;
}
