// Calls that the device exports under another name than the desktop's headers give them.
#include "platform/platform.h"

#undef ImageList_LoadImage

extern "C" {

BOOL EventModify(HANDLE event, DWORD change);
HIMAGELIST ImageList_LoadImage(HINSTANCE instance, LPCWSTR name, int width, int grow, COLORREF mask,
                               UINT type, UINT flags);

constexpr DWORD kSetEvent = 3;

BOOL WINAPI SetEvent(HANDLE event) {
    return EventModify(event, kSetEvent);
}

HIMAGELIST WINAPI ImageList_LoadImageW(HINSTANCE instance, LPCWSTR name, int width, int grow, COLORREF mask,
                                       UINT type, UINT flags) {
    return ImageList_LoadImage(instance, name, width, grow, mask, type, flags);
}

}  // extern "C"
