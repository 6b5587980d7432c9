#include "shell/actions.h"

#include "keywords/keyword_dialog.h"
#include "resources/resource.h"
#include "shell/reload.h"
#include "files/data_file.h"
#include "subscribe/subscribe_dialog.h"
#include "text/messages.h"

namespace {

bool RunSubscribe(const AppFrame& frame) {
    const Settings& settings = frame.settings;
    const WideText active = JoinPath(settings.DataPath, L"active.dat");
    const WideText category = JoinPath(settings.DataPath, L"category.dat");
    const WideText group = JoinPath(settings.DataPath, L"group.dat");
    const std::unique_ptr<SubscribeState> state(new (std::nothrow) SubscribeState);
    if (!active || !category || !group || !state) {
        MessageBoxW(nullptr, LoadResString(IDS_NO_MEMORY), kProgramCaption, MB_OK | MB_ICONERROR);
        return false;
    }
    state->activePath = active.get();
    state->categoryPath = category.get();
    state->groupPath = group.get();
    state->server = settings.Server;
    state->port = settings.Port;
    state->user = settings.UserID.get();
    state->password = settings.Password.get();
    return RunSubscribeDialog(*state, frame.instance, frame.mainWindow) == 1;
}

}  // namespace

void Subscribe(AppFrame& frame) {
    frame.busy = true;
    if (RunSubscribe(frame)) (void)ReloadData(frame);
    frame.busy = false;
}

void EditKeywords(AppFrame& frame) {
    SubjectView& subjects = *frame.subjectView;
    const GroupStore& store = subjects.list.store;
    if (!subjects.list.open || !store.filterPath) return;
    const WideText proposed = ReadSelectedSubject(subjects.list);
    KeywordDialogState state;
    const INT_PTR result =
        RunKeywordDialog(state, frame.instance, frame.mainWindow, store.filterPath.get(), proposed.get());
    if (result == 1 && !RefilterSubjects(subjects)) ShowLastError(IDS_INIT_INDEX_FAILED, kProgramCaption);
}
