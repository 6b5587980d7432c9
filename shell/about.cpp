#include "shell/commands.h"

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

void ShowAbout(AppFrame& frame) {
    frame.busy = true;
    (void)RunDialog(frame.instance, IDD_ABOUT, frame.mainWindow, AboutProcedure, nullptr);
    frame.busy = false;
}
