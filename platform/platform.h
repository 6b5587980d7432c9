// The device's API, and the few calls that the two homes spell differently. This folder is the only one that
// knows which home the program runs in.
#pragma once

#include <winsock2.h>

#include <windows.h>

#include <commctrl.h>
#include <prsht.h>

#include "platform/menubar.h"

// Records that the two homes lay out differently; the members that both have bear the same names.
#ifdef PELNOR_DEVICE
#include "platform/device/records.h"
#else
using FoundFile = WIN32_FIND_DATAW;
using SheetPage = PROPSHEETPAGEW;
using SheetHeader = PROPSHEETHEADERW;
#endif

// The calls that take them. The headers declare these for the desktop's records.
inline HANDLE FindFirst(const wchar_t* pattern, FoundFile& found) {
    return FindFirstFileW(pattern, reinterpret_cast<WIN32_FIND_DATAW*>(&found));
}
inline bool FindNext(HANDLE find, FoundFile& found) {
    return FindNextFileW(find, reinterpret_cast<WIN32_FIND_DATAW*>(&found)) != 0;
}
inline INT_PTR RunSheet(const SheetHeader& header) {
    return PropertySheetW(reinterpret_cast<const PROPSHEETHEADERW*>(&header));
}

// Keeps a pointer in a window's extra bytes (`offset` counted from 0) or, at kUserData, in its user data. The
// window does not own it.
constexpr int kUserData = -21;
void SetWindowPointer(HWND window, int offset, void* pointer);
void* GetWindowPointer(HWND window, int offset);

// Extra bytes that a window class must ask for to keep one such pointer.
constexpr int kPointerExtra = static_cast<int>(sizeof(LONG_PTR));

// A child window's id in the place where CreateWindowExW wants a menu.
inline HMENU ChildId(int id) {
    return reinterpret_cast<HMENU>(static_cast<INT_PTR>(id));
}

// Sets up what a frame has on the desktop only; does nothing on the device, whose shell gives it the whole
// screen. To be called once, while the window is being made and before its menu bars. It gets a border to
// drag, a system menu, `icon` of its module as its large icon, the place where it was left last, the mouse
// wheel, and dialogs that open over it. The place is kept in the value WindowPlace of `key` below
// HKEY_CURRENT_USER; `wakeMessage` brings the window forward before the window itself handles it. `key` is
// borrowed for the window's life. One frame at a time.
void SetUpDesktopFrame(HWND window, int icon, const wchar_t* key, UINT wakeMessage);

// Gives the open clipboard a copy of `size` bytes. Error 8 when memory runs out.
[[nodiscard]] bool PutOnClipboard(UINT format, const void* bytes, SIZE_T size);

// Runs the dialog `id` of `instance` modally with `parameter` for WM_INITDIALOG. Returns what EndDialog was
// given, -1 when the template is missing or the dialog cannot be made.
INT_PTR RunDialog(HINSTANCE instance, int id, HWND owner, DLGPROC procedure, void* parameter);

// The procedure of a dialog that only starts and takes commands: OnInit gets the state that RunDialog was
// given, and answers whether the dialog shall set the focus; OnCommand gets a control's id and notification.
template <class State, INT_PTR (*OnInit)(HWND, State*), INT_PTR (*OnCommand)(HWND, int, int)>
INT_PTR CALLBACK DialogProcedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_INITDIALOG:
            return OnInit(dialog, reinterpret_cast<State*>(lParam));
        case WM_COMMAND:
            return OnCommand(dialog, LOWORD(wParam), HIWORD(wParam));
        default:
            return FALSE;
    }
}

// RunDialog without waiting: null when the template is missing or the dialog cannot be made.
HWND CreateModelessDialog(HINSTANCE instance, int id, HWND owner, DLGPROC procedure, void* parameter);

// What a dialog procedure answers to a notification, besides TRUE for having handled it.
void SetDialogResult(HWND dialog, int result);

// The code page of stored text: Shift_JIS (932) where it is installed, else the system's.
UINT TextCodePage();
