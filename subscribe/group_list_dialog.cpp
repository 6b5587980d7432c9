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
    const wchar_t* text = job ? job->errorText.get() : nullptr;
    if (job && job->outOfMemory) text = LoadResString(IDS_NO_MEMORY);
    if (text && *text) MessageBoxW(nullptr, text, kProgramCaption, MB_OK | MB_ICONEXCLAMATION);
    PostMessageW(dialog, WM_COMMAND, IDOK, 0);
}

INT_PTR OnCommand(HWND dialog, int id, int) {
    if (id == static_cast<int>(kGroupListDone)) OnDone(dialog);
    if (id == IDOK || id == IDCANCEL) EndDialog(dialog, id);
    return TRUE;
}

}  // namespace

INT_PTR RunGroupListDownload(HINSTANCE instance, HWND parent, const GroupListRequest& request) {
    GroupListDialog state;
    state.request = &request;
    (void)RunDialog(instance, IDD_GROUP_LIST, parent,
                    DialogProcedure<GroupListDialog, OnInitDialog, OnCommand>, &state);
    if (state.job) ReleaseGroupListJob(state.job);
    return 0;
}
