#include "shell/delete_read.h"

#include "resources/resource.h"
#include "shell/reload.h"
#include "shell/view_switch.h"
#include "store/delete_read.h"
#include "store/index.h"
#include "subscribe/group_file.h"
#include "text/messages.h"

namespace {

// A box that went with its window was not answered.
bool UserAgrees(const AppFrame& frame) {
    const int answer = MessageBoxW(frame.mainWindow, LoadResString(IDS_ASK_DELETE_READ),
                                   L"Delete read articles", MB_YESNO | MB_ICONQUESTION);
    return answer != IDNO && !frame.ended;
}

void DeleteInGroup(const wchar_t* folder, const wchar_t* name) {
    GroupStore store;
    if (SetNames(store, folder, name) && DeleteRead(store)) return;
    ShowLastError(IDS_DELETE_READ_FAILED, name, MB_ICONEXCLAMATION);
}

// Closing the program amid the failures that are told ends it before the next group.
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
    // A run whose progress was put away still writes at the places that it found when it began, as an open
    // group does. The failures' boxes have no owner, so the frame is kept from opening one meanwhile.
    if (frame.job || frame.subjectView->list.open || !UserAgrees(frame)) return;
    EnableWindow(frame.mainWindow, FALSE);
    const bool deleted = DeleteInGroups(frame);
    EnableWindow(frame.mainWindow, TRUE);
    FocusCurrentView(frame);
    if (deleted) (void)ReloadData(frame);
}
