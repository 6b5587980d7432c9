#include "subscribe/group_list_dialog.h"

#include "resources/resource.h"
#include "text/messages.h"

namespace {

struct GroupListDialog {
    const GroupListRequest* request = nullptr;  // not owned
    GroupListJob* job = nullptr;                // one of its two owners
};

void CloseWithoutMemory(HWND dialog) {
    MessageBoxW(nullptr, LoadResString(IDS_NO_MEMORY), kProgramCaption, MB_OK | MB_ICONEXCLAMATION);
    EndDialog(dialog, IDCANCEL);
}

INT_PTR OnInitDialog(HWND dialog, GroupListDialog* state) {
    SetWindowPointer(dialog, kUserData, state);
    state->job = MakeGroupListJob(*state->request, dialog);
    if (!state->job || !StartGroupListWorker(state->job)) CloseWithoutMemory(dialog);
    return TRUE;
}

void OnDone(HWND dialog) {
    auto state = static_cast<GroupListDialog*>(GetWindowPointer(dialog, kUserData));
    const GroupListJob* job = state ? state->job : nullptr;
    if (job && job->errorText && job->errorText[0] != L'\0') {
        MessageBoxW(nullptr, job->errorText.get(), kProgramCaption, MB_OK | MB_ICONEXCLAMATION);
    }
    PostMessageW(dialog, WM_COMMAND, IDOK, 0);
}

INT_PTR OnCommand(HWND dialog, UINT id) {
    if (id == kGroupListDone) OnDone(dialog);
    if (id == IDOK || id == IDCANCEL) EndDialog(dialog, static_cast<INT_PTR>(id));
    return TRUE;
}

INT_PTR CALLBACK GroupListProcedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_INITDIALOG:
            return OnInitDialog(dialog, reinterpret_cast<GroupListDialog*>(lParam));
        case WM_COMMAND:
            return OnCommand(dialog, LOWORD(wParam));
        default:
            return FALSE;
    }
}

}  // namespace

INT_PTR RunGroupListDownload(HINSTANCE instance, HWND parent, const GroupListRequest& request) {
    GroupListDialog state;
    state.request = &request;
    (void)RunDialog(instance, IDD_GROUP_LIST, parent, GroupListProcedure, &state);
    if (state.job) ReleaseGroupListJob(state.job);
    return 0;
}
