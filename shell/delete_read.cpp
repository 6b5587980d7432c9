#include "shell/actions.h"

#include "resources/resource.h"
#include "shell/reload.h"
#include "shell/view_switch.h"
#include "store/delete_read.h"
#include "subscribe/group_file.h"
#include "text/messages.h"

namespace {

bool UserAgrees() {
    const int answer = MessageBoxW(nullptr, LoadResString(IDS_ASK_DELETE_READ), L"Delete read articles",
                                   MB_YESNO | MB_ICONQUESTION);
    return answer == IDYES;
}

void DeleteInGroup(const wchar_t* folder, const wchar_t* name) {
    GroupStore store;
    if (SetNames(store, folder, name) && DeleteRead(store)) return;
    ShowLastError(IDS_DELETE_READ_FAILED, name, MB_ICONEXCLAMATION);
}

// Closing the program while a box stands ends it before the next group.
bool DeleteInGroups(const AppFrame& frame) {
    const wchar_t* folder = frame.settings.DataPath;
    GroupFile groups;
    if (!OpenGroupFile(groups, folder)) {
        ShowLastError(IDS_DELETE_NO_GROUPS, kProgramCaption);
        return false;
    }
    while (const wchar_t* name = frame.ended ? nullptr : NextGroupName(groups))
        DeleteInGroup(folder, name);
    return !frame.ended;
}

}  // namespace

void DeleteReadArticles(AppFrame& frame) {
    // A group that is open writes at the places that it found when it was opened.
    if (frame.subjectView->list.open) return;
    EnableWindow(frame.mainWindow, FALSE);  // the boxes have no owner that would be
    const bool deleted = UserAgrees() && DeleteInGroups(frame);
    EnableWindow(frame.mainWindow, TRUE);
    SetForegroundWindow(frame.mainWindow);
    FocusCurrentView(frame);
    if (deleted) (void)ReloadData(frame);
}
