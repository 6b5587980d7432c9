#include "shell/commands.h"

#include "resources/resource.h"
#include "settings/settings_sheet.h"
#include "settings/view_options.h"
#include "shell/about.h"
#include "shell/catch_up.h"
#include "shell/choose.h"
#include "shell/delete_read.h"
#include "shell/drafts.h"
#include "shell/reload.h"
#include "shell/run.h"
#include "shell/view_switch.h"
#include "text/messages.h"

namespace {

// An accelerator works only where its command's menu stands.
bool ReachesView(const AppFrame& frame, UINT origin, ViewKind view) {
    return origin == 0 || frame.currentView == view;
}

void OnAbout(AppFrame& frame) {
    frame.busy = true;
    RunAboutBox(frame.instance, frame.mainWindow);
    frame.busy = false;
}

// A refused change or a setting that cannot be stored is told; the option stays as the user chose it.
void StoreOption(bool shown, bool (*write)(uint32_t), uint32_t value) {
    if (!shown) {
        ShowLastError(IDS_SWITCH_VIEW_FAILED, kProgramCaption);
    } else if (!write(value)) {
        ShowLastError(IDS_SAVE_SETTINGS_FAILED, kProgramCaption);
    }
}

void OnViewRead(AppFrame& frame) {
    frame.viewReadArticles = !frame.viewReadArticles;
    ShowCheckMarks(frame);
    const bool shown = SetSubjectOptions(*frame.subjectView, frame.viewReadArticles, frame.priorityLevel);
    StoreOption(shown, WriteViewReadArticle, frame.viewReadArticles);
}

void OnShowHeader(AppFrame& frame) {
    frame.showArticleHeader = !frame.showArticleHeader;
    ShowCheckMarks(frame);
    const bool shown = SetShowAllHeaders(*frame.articleView, frame.showArticleHeader != 0);
    StoreOption(shown, WriteShowArticleHeader, frame.showArticleHeader);
}

void OnPriorityLevel(AppFrame& frame, uint32_t level) {
    frame.priorityLevel = level;
    ShowCheckMarks(frame);
    (void)WritePriorityViewLevel(level);
    (void)SetSubjectOptions(*frame.subjectView, frame.viewReadArticles, level);
}

void OnCopy(AppFrame& frame, UINT origin) {
    if (ReachesView(frame, origin, ViewKind::kArticle))
        (void)CopyArticle(*frame.articleView, frame.mainWindow);
}

void OnArticleNotice(AppFrame& frame, UINT notice) {
    if (notice == kArticleBack) SwitchToSubjectView(frame);
    if (notice == kArticleNext) OpenNextArticle(frame);
}

void OnSubjectNotice(AppFrame& frame, UINT notice) {
    if (notice == kSubjectBack) SwitchToGroupView(frame);
    if (notice == kSubjectOpen) OpenCurrentArticle(frame);
}

// For RunAlone: a run walks the rows that are filled anew. The busy flag stays: it always has.
void OnProperties(AppFrame& frame) {
    Settings edited;
    frame.busy = true;
    InitSettings(edited);
    if (RunSettingsSheet(edited, frame.instance, frame.mainWindow) == 1) UseNewSettings(frame);
    frame.busy = true;
}

// The panes' commands: true when `id` was one of them.
bool OnViewCommand(AppFrame& frame, UINT id, UINT origin) {
    switch (id) {
        case IDC_TOGGLE_READ:
            (void)ToggleSubjectRead(*frame.subjectView);
            return true;
        case IDC_COPY:
            OnCopy(frame, origin);
            return true;
        case IDC_VIEW_READ:
            OnViewRead(frame);
            return true;
        case IDC_KEYWORDS:
            EditKeywords(frame);
            return true;
        case IDC_SHOW_HEADER:
            OnShowHeader(frame);
            return true;
        case IDC_LEVEL_HIGH:
            OnPriorityLevel(frame, kPriorityHigh);
            return true;
        case IDC_LEVEL_NORMAL:
            OnPriorityLevel(frame, kPriorityNormal);
            return true;
        case IDC_LEVEL_LOW:
            OnPriorityLevel(frame, kPriorityLow);
            return true;
        case IDC_LEAVE_DRAFTS:
        case IDC_BACK_TO_GROUPS:
            SwitchToGroupView(frame);
            return true;
        case IDC_BACK_TO_SUBJECTS:
            SwitchToSubjectView(frame);
            return true;
        case IDW_ARTICLE_VIEW:
            OnArticleNotice(frame, origin);
            return true;
        case IDW_SUBJECT_VIEW:
            OnSubjectNotice(frame, origin);
            return true;
        default:
            return false;
    }
}

struct GroupCommand {
    UINT id;
    void (*act)(AppFrame& frame);
};

// The group view's commands, which change its rows or the files behind them.
constexpr GroupCommand kGroupCommands[] = {{IDC_PROPERTIES, OnProperties},
                                           {IDC_GET_ARTICLES, GetArticles},
                                           {IDC_DELETE_READ, DeleteReadArticles},
                                           {IDC_SUBSCRIBE, Subscribe},
                                           {IDC_CATCH_UP, CatchUp}};

// True when `id` was one of them.
bool OnGroupCommand(AppFrame& frame, UINT id, UINT origin) {
    for (const GroupCommand& command : kGroupCommands) {
        if (command.id != id) continue;
        if (ReachesView(frame, origin, ViewKind::kGroup)) RunAlone(frame, command.act);
        return true;
    }
    return false;
}

}  // namespace

void OnCommand(AppFrame& frame, UINT id, UINT origin) {
    if (OnViewCommand(frame, id, origin) || OnGroupCommand(frame, id, origin)) return;
    switch (id) {
        case IDC_EXIT:
            SendMessageW(frame.mainWindow, WM_CLOSE, 0, 0);
            break;
        case IDC_ABOUT:
            OnAbout(frame);
            break;
        default:
            OnDraftCommand(frame, id);
    }
}
