#include "nntp/progress_dialog.h"

#include "resources/resource.h"

namespace {

// Stands in the dialog's user data once it is closing: its owner may be gone then.
ProgressDialog closedDialog;

INT_PTR OnInitDialog(HWND dialog, ProgressDialog* progress) {
    SetWindowPointer(dialog, kUserData, progress);
    progress->dialog = dialog;
    if (progress->shown) SetEvent(progress->shown);
    return TRUE;
}

void Close(HWND dialog, ProgressDialog& progress, int result) {
    progress.dialog = nullptr;
    SetWindowPointer(dialog, kUserData, &closedDialog);
    EndDialog(dialog, result);
}

INT_PTR OnCommand(HWND dialog, int id, int) {
    auto progress = static_cast<ProgressDialog*>(GetWindowPointer(dialog, kUserData));
    if (!progress) {
        MessageBoxW(nullptr, L"Not Initialized!", L"ERROR", MB_OK | MB_ICONERROR);
        return TRUE;
    }
    if (id == IDOK || id == IDCANCEL) Close(dialog, *progress, id);
    return TRUE;
}

void TellBar(const ProgressDialog& progress, UINT message, WPARAM wParam, LPARAM lParam) {
    if (progress.dialog) SendDlgItemMessageW(progress.dialog, IDC_PROGRESS_BAR, message, wParam, lParam);
}

}  // namespace

void RunProgressDialog(ProgressDialog& progress, HINSTANCE instance, HWND owner) {
    const HANDLE shown = progress.shown;
    const INT_PTR result = RunDialog(instance, IDD_PROGRESS, owner,
                                     DialogProcedure<ProgressDialog, OnInitDialog, OnCommand>, &progress);
    if (result == -1 && shown) SetEvent(shown);
}

void StartGroup(ProgressDialog& progress, const wchar_t* group, uint32_t count, uint32_t limit) {
    progress.rangeCount = count;
    progress.stepCount = 0;
    if (progress.dialog) SetDlgItemTextW(progress.dialog, IDC_PROGRESS_GROUP, group);
    const uint32_t most = count < limit ? count : limit;
    TellBar(progress, PBM_SETRANGE, 0, MAKELPARAM(0, static_cast<WORD>(most)));
    TellBar(progress, PBM_SETPOS, 0, 0);
}

void StepProgress(ProgressDialog& progress) {
    ++progress.stepCount;
    TellBar(progress, PBM_DELTAPOS, 1, 0);
}

void CloseProgress(const ProgressDialog& progress) {
    if (progress.dialog) SendMessageW(progress.dialog, WM_COMMAND, IDOK, 0);
}
