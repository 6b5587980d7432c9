// The device's API, and what the two homes, device and desktop, do in different ways. Only this folder knows
// which of them the program is built for.
#pragma once

#include <winsock2.h>

#include <windows.h>

#include <commctrl.h>
#include <prsht.h>

#include "platform/menubar.h"

// Records that the two homes lay out differently. Members that both have are named alike.
#ifdef PELNOR_DEVICE
#include "platform/device/records.h"
#else
using FoundFile = WIN32_FIND_DATAW;
using SheetPage = PROPSHEETPAGEW;
using SheetHeader = PROPSHEETHEADERW;
#endif

// The calls that take them. The Windows headers declare these for the desktop's records.
inline HANDLE FindFirst(const wchar_t* pattern, FoundFile& found) {
    return FindFirstFileW(pattern, reinterpret_cast<WIN32_FIND_DATAW*>(&found));
}
inline bool FindNext(HANDLE find, FoundFile& found) {
    return FindNextFileW(find, reinterpret_cast<WIN32_FIND_DATAW*>(&found)) != 0;
}
inline INT_PTR RunSheet(const SheetHeader& header) {
    return PropertySheetW(reinterpret_cast<const PROPSHEETHEADERW*>(&header));
}

// Keeps a pointer in a window's extra bytes at `offset`, or in its user data at kUserData. The window does
// not own it.
constexpr int kUserData = -21;
void SetWindowPointer(HWND window, int offset, void* pointer);
void* GetWindowPointer(HWND window, int offset);

// The extra bytes that one such pointer takes.
constexpr int kPointerExtra = static_cast<int>(sizeof(LONG_PTR));

// A child window's id as CreateWindowExW takes it: in place of a menu.
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

// Fills `roots` with the folders that hold all others, each with its backslash, and an empty one behind the
// last: "\", and where there are drives these too.
constexpr int kRootsSize = 26 * 4 + 3;
void ListRoots(wchar_t (&roots)[kRootsSize]);

// Has `path` name the same place wherever the program starts: with its drive, where there are drives. False
// when it would be too long.
constexpr int kPathSize = 260;  // UTF-16 units, the terminator included
[[nodiscard]] bool CompletePath(wchar_t (&path)[kPathSize]);

// Puts a copy of `size` bytes on the open clipboard. Error 8 when memory runs out.
[[nodiscard]] bool PutOnClipboard(UINT format, const void* bytes, SIZE_T size);

// Runs the dialog `id` of `instance` modally with `parameter` for WM_INITDIALOG. Returns the value passed to
// EndDialog, -1 when the template is missing or the dialog cannot be made.
INT_PTR RunDialog(HINSTANCE instance, int id, HWND owner, DLGPROC procedure, void* parameter);

// The procedure of a dialog that handles its start and commands only. OnInit gets RunDialog's parameter and
// returns whether the system sets the focus; OnCommand gets a control's id and notification.
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

// Starts a dialog as RunDialog does, without waiting. Null when the template is missing or the dialog cannot
// be made.
HWND CreateModelessDialog(HINSTANCE instance, int id, HWND owner, DLGPROC procedure, void* parameter);

// Sets the result of a notification, for which the dialog procedure then returns TRUE.
void SetDialogResult(HWND dialog, int result);

// The code page of stored text: Shift_JIS (932) where it is installed, else the system's.
UINT TextCodePage();
