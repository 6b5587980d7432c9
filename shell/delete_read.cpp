#include "shell/delete_read.h"

#include "resources/resource.h"
#include "shell/reload.h"
#include "store/delete_read.h"
#include "store/index.h"
#include "subscribe/group_file.h"
#include "text/messages.h"

namespace {

bool UserAgrees() {
    const int answer = MessageBoxW(nullptr, LoadResString(IDS_ASK_DELETE_READ), L"Delete read articles",
                                   MB_YESNO | MB_ICONQUESTION);
    return answer != IDNO;
}

void DeleteInGroup(const wchar_t* folder, const wchar_t* name) {
    GroupStore store;
    if (SetNames(store, folder, name) && DeleteRead(store)) return;
    ShowLastError(IDS_DELETE_READ_FAILED, name, MB_ICONEXCLAMATION);
}

}  // namespace

void DeleteReadArticles(AppFrame& frame) {
    const wchar_t* folder = frame.settings.DataPath;
    // A run whose progress was put away still writes at the places that it found when it began.
    if (frame.job || !UserAgrees()) return;
    {
        GroupFile groups;
        if (!OpenGroupFile(groups, folder)) {
            ShowLastError(IDS_DELETE_NO_GROUPS, kProgramCaption);
            return;
        }
        while (const wchar_t* name = NextGroupName(groups))
            DeleteInGroup(folder, name);
    }
    (void)ReloadData(frame);
}
