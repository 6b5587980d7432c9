#include "shell/about.h"

#include "resources/resource.h"

namespace {

INT_PTR CALLBACK AboutProcedure(HWND dialog, UINT message, WPARAM wParam, LPARAM) {
    if (message == WM_INITDIALOG) return TRUE;
    const int id = LOWORD(wParam);
    if (message != WM_COMMAND || (id != IDOK && id != IDCANCEL)) return FALSE;
    EndDialog(dialog, id);
    return TRUE;
}

}  // namespace

void RunAboutBox(HINSTANCE instance, HWND owner) {
    (void)RunDialog(instance, IDD_ABOUT, owner, AboutProcedure, nullptr);
}
