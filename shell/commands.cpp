#include "shell/commands.h"

#include "resources/resource.h"
#include "settings/view_options.h"
#include "sheet/settings_sheet.h"
#include "shell/run.h"
#include "shell/view_switch.h"
#include "text/messages.h"

namespace {

void Exit(AppFrame& frame) {
    SendMessageW(frame.mainWindow, WM_CLOSE, 0, 0);
}

// The option stays as the user chose it even if the view refuses it or it cannot be stored.
void StoreOption(bool shown, bool (*write)(bool), bool value) {
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
    const bool shown = SetShowAllHeaders(*frame.articleView, frame.showArticleHeader);
    StoreOption(shown, WriteShowArticleHeader, frame.showArticleHeader);
}

template <uint32_t kLevel>
void OnPriorityLevel(AppFrame& frame) {
    frame.priorityLevel = kLevel;
    ShowCheckMarks(frame);
    (void)WritePriorityViewLevel(kLevel);
    (void)SetSubjectOptions(*frame.subjectView, frame.viewReadArticles, kLevel);
}

void OnToggleRead(AppFrame& frame) {
    (void)ToggleSubjectRead(*frame.subjectView);
}

void OnCopy(AppFrame& frame) {
    (void)CopyArticle(*frame.articleView, frame.mainWindow);
}

void BackToSubjects(AppFrame& frame) {
    SwitchToSubjectView(frame);
}

void OnArticleNotice(AppFrame& frame, UINT notice) {
    if (notice == kArticleBack) SwitchToSubjectView(frame);
    if (notice == kArticleNext) OpenNextArticle(frame);
}

void OnSubjectNotice(AppFrame& frame, UINT notice) {
    if (notice == kSubjectBack) SwitchToGroupView(frame);
    if (notice == kSubjectOpen) OpenCurrentArticle(frame);
}

// For RunAlone: it refills the rows that a run walks. The busy flag stays set, as it always has.
void OnProperties(AppFrame& frame) {
    Settings edited;
    frame.busy = true;
    InitSettings(edited);
    if (RunSettingsSheet(edited, frame.instance, frame.mainWindow) == IDOK) UseNewSettings(frame);
    frame.busy = true;
}

enum class Reach : uint8_t {
    kAnywhere,
    kArticle,  // an accelerator counts in the article view only
    kAlone,    // an accelerator counts in the group view only; changes its rows or their files
};

struct Command {
    UINT id;
    Reach reach;
    void (*act)(AppFrame& frame);
};

constexpr Command kCommands[] = {
    {IDC_EXIT, Reach::kAnywhere, Exit},
    {IDC_ABOUT, Reach::kAnywhere, ShowAbout},
    {IDC_PROPERTIES, Reach::kAlone, OnProperties},
    {IDC_GET_ARTICLES, Reach::kAlone, GetArticles},
    {IDC_DELETE_READ, Reach::kAlone, DeleteReadArticles},
    {IDC_SUBSCRIBE, Reach::kAlone, Subscribe},
    {IDC_CATCH_UP, Reach::kAlone, CatchUp},
    {IDC_TOGGLE_READ, Reach::kAnywhere, OnToggleRead},
    {IDC_VIEW_READ, Reach::kAnywhere, OnViewRead},
    {IDC_KEYWORDS, Reach::kAnywhere, EditKeywords},
    {IDC_LEVEL_HIGH, Reach::kAnywhere, OnPriorityLevel<kPriorityHigh>},
    {IDC_LEVEL_NORMAL, Reach::kAnywhere, OnPriorityLevel<kPriorityNormal>},
    {IDC_LEVEL_LOW, Reach::kAnywhere, OnPriorityLevel<kPriorityLow>},
    {IDC_COPY, Reach::kArticle, OnCopy},
    {IDC_SHOW_HEADER, Reach::kAnywhere, OnShowHeader},
    {IDC_BACK_TO_GROUPS, Reach::kAnywhere, SwitchToGroupView},
    {IDC_BACK_TO_SUBJECTS, Reach::kAnywhere, BackToSubjects},
    {IDC_DRAFTS, Reach::kAnywhere, SwitchToDrafts},
    {IDC_LEAVE_DRAFTS, Reach::kAnywhere, SwitchToGroupView},
    {IDC_COMPOSE, Reach::kAnywhere, Compose},
    {IDC_CHOOSE_EXE, Reach::kAnywhere, ChooseExe},
};

const Command* FindCommand(UINT id) {
    for (const Command& command : kCommands) {
        if (command.id == id) return &command;
    }
    return nullptr;
}

bool AcceleratorCounts(const AppFrame& frame, Reach reach) {
    if (reach == Reach::kAnywhere) return true;
    return frame.currentView == (reach == Reach::kArticle ? ViewKind::kArticle : ViewKind::kGroup);
}

}  // namespace

void OnCommand(AppFrame& frame, UINT id, UINT origin) {
    if (id == IDW_ARTICLE_VIEW) OnArticleNotice(frame, origin);
    if (id == IDW_SUBJECT_VIEW) OnSubjectNotice(frame, origin);
    const Command* command = FindCommand(id);
    if (!command || (origin != 0 && !AcceleratorCounts(frame, command->reach))) return;
    if (command->reach == Reach::kAlone) {
        RunAlone(frame, command->act);
    } else {
        command->act(frame);
    }
}
