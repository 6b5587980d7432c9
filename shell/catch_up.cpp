#include "shell/actions.h"

#include "resources/resource.h"
#include "shell/reload.h"
#include "store/group_changes.h"
#include "store/index.h"
#include "text/messages.h"

namespace {

// What the user chose; both 0 unless the dialog was closed with OK.
struct CatchUpDialog {
    HWND dialog = nullptr;
    uint32_t local = 0;
    uint32_t server = 0;
};

INT_PTR OnInitDialog(HWND dialog, CatchUpDialog* choice) {
    SetWindowPointer(dialog, kUserData, choice);
    choice->dialog = dialog;
    return TRUE;
}

uint32_t IsChecked(HWND dialog, int id) {
    return SendDlgItemMessageW(dialog, id, BM_GETCHECK, 0, 0) == BST_CHECKED ? 1 : 0;
}

INT_PTR OnDialogCommand(HWND dialog, int id, int) {
    auto choice = static_cast<CatchUpDialog*>(GetWindowPointer(dialog, kUserData));
    if (id == IDOK && choice) {
        choice->local = IsChecked(dialog, IDC_CATCH_UP_LOCAL);
        choice->server = IsChecked(dialog, IDC_CATCH_UP_SERVER);
    }
    if (id == IDOK || id == IDCANCEL) EndDialog(dialog, id);
    return TRUE;
}

void CatchUpLocal(const AppFrame& frame, GroupStore& store, uint32_t row) {
    if (MarkAllRead(store)) {
        SetGroupUnread(*frame.groupView, row, 0);
    } else {
        ShowLastError(IDS_MARK_READ_FAILED, L"Catch up local");
    }
}

bool ForgetServerPosition(GroupStore& store) {
    if (!ReadHeader(store)) return false;
    store.header.lastFetched = kNoneFetched;
    return WriteHeader(store);
}

void CatchUpServer(AppFrame& frame, GroupStore& store) {
    if (ForgetServerPosition(store)) {
        (void)ReloadData(frame);
    } else {
        ShowLastError(IDS_CATCH_UP_SERVER_FAILED, L"Catch up server");
    }
}

void CatchUpGroup(AppFrame& frame, const wchar_t* name, uint32_t row) {
    GroupStore store;
    if (!SetNames(store, frame.settings.DataPath, name) || !ReadHeader(store)) {
        ShowLastError(IDS_INIT_INDEX_FAILED, kProgramCaption);
        return;
    }
    CatchUpDialog choice;
    (void)RunDialog(frame.instance, IDD_CATCH_UP, frame.mainWindow,
                    DialogProcedure<CatchUpDialog, OnInitDialog, OnDialogCommand>, &choice);
    if (choice.local) CatchUpLocal(frame, store, row);
    if (choice.server) CatchUpServer(frame, store);
}

}  // namespace

void CatchUp(AppFrame& frame) {
    wchar_t name[kTextCapacity];
    uint32_t row = 0;
    frame.busy = true;
    if (SelectedGroup(*frame.groupView, name, kTextCapacity, &row)) CatchUpGroup(frame, name, row);
    frame.busy = false;
}
