#include "nntp/progress_dialog.h"

#include "resources/resource.h"

namespace {

// Enabled first, the owner takes the activation that the dialog gives up.
void PutAway(ProgressDialog& progress) {
    const HWND dialog = progress.dialog.Get();
    if (!progress.shown) return;
    progress.shown = false;
    EnableWindow(GetWindow(dialog, GW_OWNER), TRUE);
    ShowWindow(dialog, SW_HIDE);
}

INT_PTR OnCommand(HWND dialog, WPARAM id) {
    auto progress = static_cast<ProgressDialog*>(GetWindowPointer(dialog, kUserData));
    if (!progress) {
        MessageBoxW(nullptr, L"Not Initialized!", L"ERROR", MB_OK | MB_ICONERROR);
    } else if (id == IDOK || id == IDCANCEL) {
        PutAway(*progress);
    }
    return TRUE;
}

// No control takes the focus, and no loop of a modal dialog looks at the keys.
INT_PTR OnKey(HWND dialog, WPARAM key) {
    if (key == VK_ESCAPE) return OnCommand(dialog, IDCANCEL);
    return key == VK_RETURN ? OnCommand(dialog, IDOK) : FALSE;
}

INT_PTR CALLBACK ProgressProcedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_INITDIALOG:
            SetWindowPointer(dialog, kUserData, reinterpret_cast<void*>(lParam));
            return FALSE;  // it is not shown yet
        case WM_COMMAND:
            return OnCommand(dialog, LOWORD(wParam));
        case WM_KEYDOWN:
            return OnKey(dialog, wParam);
        default:
            return FALSE;
    }
}

void Tell(const ProgressDialog& progress, int control, UINT message, WPARAM wParam, LPARAM lParam) {
    if (progress.dialog) SendDlgItemMessageW(progress.dialog.Get(), control, message, wParam, lParam);
}

}  // namespace

void MakeProgressDialog(ProgressDialog& progress, HINSTANCE instance, HWND owner) {
    progress.dialog.Reset(CreateModelessDialog(instance, IDD_PROGRESS, owner, ProgressProcedure, &progress));
}

void ShowProgress(ProgressDialog& progress) {
    const HWND dialog = progress.dialog.Get();
    if (!dialog) return;
    progress.shown = true;
    EnableWindow(GetWindow(dialog, GW_OWNER), FALSE);
    ShowWindow(dialog, SW_SHOW);
    SetFocus(dialog);
}

void EndProgress(ProgressDialog& progress) {
    PutAway(progress);
    progress.dialog.Reset();
}

void StartGroup(ProgressDialog& progress, const wchar_t* group, uint32_t count, uint32_t limit) {
    progress.rangeCount = count;
    progress.stepCount = 0;
    Tell(progress, IDC_PROGRESS_GROUP, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(group));
    const uint32_t most = count < limit ? count : limit;
    Tell(progress, IDC_PROGRESS_BAR, PBM_SETRANGE, 0, MAKELPARAM(0, static_cast<WORD>(most)));
    Tell(progress, IDC_PROGRESS_BAR, PBM_SETPOS, 0, 0);
}

void StepProgress(ProgressDialog& progress) {
    ++progress.stepCount;
    Tell(progress, IDC_PROGRESS_BAR, PBM_DELTAPOS, 1, 0);
}

void CloseProgress(const ProgressDialog& progress) {
    if (progress.dialog) SendMessageW(progress.dialog.Get(), WM_COMMAND, IDOK, 0);
}
