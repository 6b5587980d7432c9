#include "nntp/progress_dialog.h"

#include "resources/resource.h"

namespace {

// The owner is enabled first, so that it gets the activation that the dialog gives up.
void PutAway(ProgressDialog& progress) {
    const HWND dialog = progress.dialog.Get();
    if (!progress.shown) return;
    progress.shown = false;
    EnableWindow(GetWindow(dialog, GW_OWNER), TRUE);
    ShowWindow(dialog, SW_HIDE);
}

INT_PTR OnInitDialog(HWND dialog, ProgressDialog* progress) {
    SetWindowPointer(dialog, kUserData, progress);
    return FALSE;  // no focus yet: it is not shown
}

INT_PTR OnCommand(HWND dialog, int id, int) {
    auto progress = static_cast<ProgressDialog*>(GetWindowPointer(dialog, kUserData));
    if (!progress) {
        MessageBoxW(nullptr, L"Not Initialized!", L"ERROR", MB_OK | MB_ICONERROR);
    } else if (id == IDOK || id == IDCANCEL) {
        PutAway(*progress);
    }
    return TRUE;
}

void SendTo(const ProgressDialog& progress, int control, UINT message, WPARAM wParam, LPARAM lParam) {
    if (progress.dialog) SendDlgItemMessageW(progress.dialog.Get(), control, message, wParam, lParam);
}

}  // namespace

void MakeProgressDialog(ProgressDialog& progress, HINSTANCE instance, HWND owner) {
    const DLGPROC procedure = DialogProcedure<ProgressDialog, OnInitDialog, OnCommand>;
    progress.dialog.Reset(CreateModelessDialog(instance, IDD_PROGRESS, owner, procedure, &progress));
}

bool TakeProgressKey(const ProgressDialog& progress, MSG& message) {
    return progress.dialog && IsDialogMessageW(progress.dialog.Get(), &message);
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
    SendTo(progress, IDC_PROGRESS_GROUP, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(group));
    const uint32_t most = count < limit ? count : limit;
    SendTo(progress, IDC_PROGRESS_BAR, PBM_SETRANGE, 0, MAKELPARAM(0, static_cast<WORD>(most)));
    SendTo(progress, IDC_PROGRESS_BAR, PBM_SETPOS, 0, 0);
}

void StepProgress(ProgressDialog& progress) {
    ++progress.stepCount;
    SendTo(progress, IDC_PROGRESS_BAR, PBM_DELTAPOS, 1, 0);
}

void CloseProgress(const ProgressDialog& progress) {
    if (progress.dialog) SendMessageW(progress.dialog.Get(), WM_COMMAND, IDOK, 0);
}
