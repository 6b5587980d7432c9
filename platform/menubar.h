// The Pocket PC menu bar as the shell's aygshell.dll offers it. On the desktop platform/desktop/ makes it.
#pragma once

#include <windows.h>

// `cbSize` is the record's size.
struct SHMENUBARINFO {
    DWORD cbSize;
    HWND hwndParent;     // receives the commands
    DWORD dwFlags;       // 0
    UINT nToolBarId;     // RCDATA resource with the buttons
    HINSTANCE hInstRes;  // module that holds the resources
    int nBmpId;          // bitmap strip, each image 16 x 16
    int cBmpImages;
    HWND hwndMB;  // out: the menu bar
};

// wParam 0, lParam the id of a drop-down button: returns the HMENU that the button opens. The bar keeps it.
constexpr UINT SHCMBM_GETSUBMENU = WM_USER + 401;

// Makes a bar along the bottom of `hwndParent` and shows it; it ends with the parent. The resource is a WORD
// with the menu's id, a WORD with the number of buttons, and seven WORDs a button (platform/desktop/bar.cpp).
// A button sends its command as WM_COMMAND from a menu; a drop-down opens a popup of the menu instead. FALSE
// with the last error, and nothing is left behind.
//
// On the desktop the bar and the parent's other children follow the parent's size; of several bars in one
// parent one should show.
extern "C" BOOL WINAPI SHCreateMenuBar(SHMENUBARINFO* info);
