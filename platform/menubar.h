// The Pocket PC menu bar as the shell's aygshell.dll offers it. On the device the shell makes it; on the
// desktop platform/desktop/ does.
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

// wParam 0, lParam the id of a drop-down button: answers the HMENU that the button opens. The bar keeps it.
constexpr UINT SHCMBM_GETSUBMENU = WM_USER + 401;

extern "C" BOOL WINAPI SHCreateMenuBar(SHMENUBARINFO* info);
