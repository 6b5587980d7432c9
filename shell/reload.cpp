#include "shell/reload.h"

#include "resources/resource.h"
#include "store/cut_off_deletion.h"
#include "store/data_folder.h"
#include "store/upgrade.h"
#include "subscribe/group_file.h"
#include "text/last_error.h"
#include "text/messages.h"

namespace {

bool CheckGroup(const wchar_t* folder, const wchar_t* name, bool cutOffDeletion) {
    GroupStore store;
    if (!SetNames(store, folder, name) || (cutOffDeletion && !FinishDeletion(store))) return false;
    const IndexState state = BringUpToDate(store);
    if (state == IndexState::kUnknownVersion) {
        const ErrorKeeper keeper;
        MessageBoxW(nullptr, LoadResString(IDS_INVALID_INDEX), kProgramCaption, MB_OK | MB_ICONEXCLAMATION);
    }
    return state == IndexState::kReady;
}

bool CheckGroups(const wchar_t* folder) {
    const bool cutOffDeletion = MayHoldCutOffDeletion(folder);
    GroupFile groups;
    if (!OpenGroupFile(groups, folder)) return false;
    while (const wchar_t* name = NextGroupName(groups)) {
        if (!CheckGroup(folder, name, cutOffDeletion)) return false;
    }
    return GetError() == kErrorEndOfFile;
}

// A draft folder that cannot be made leaves the wait cursor up: nothing else of the program will work either.
bool StartDataFolder(const wchar_t* folder) {
    const HCURSOR before = SetCursor(LoadCursorW(nullptr, IDC_WAIT));
    if (!MakeDraftFolder(folder)) return false;
    DeleteDraftBackups(folder);
    const bool started = MakeListFiles(folder) && CheckGroups(folder);
    const ErrorKeeper keeper;
    SetCursor(before);
    return started;
}

}  // namespace

bool ReloadData(AppFrame& frame) {
    if (!StartDataFolder(frame.settings.DataPath)) {
        ShowLastError(IDS_INIT_DATA_FAILED, kProgramCaption);
        return false;
    }
    return ReloadGroupView(*frame.groupView, frame.settings.DataPath);
}

void UseNewSettings(AppFrame& frame) {
    bool complete = false;
    // The old fonts go with the load; a new one may bear an old one's handle.
    SetSubjectAppearance(*frame.subjectView, nullptr, false);
    SetArticleAppearance(*frame.articleView, {});
    (void)LoadSettings(frame.settings, complete);
    (void)ReloadData(frame);
}
