#include "shell/view_switch.h"

#include "resources/resource.h"
#include "store/log.h"
#include "text/messages.h"

namespace {

void Check(HMENU menu, UINT command, bool checked) {
    CheckMenuItem(menu, command, MF_BYCOMMAND | static_cast<UINT>(checked ? MF_CHECKED : MF_UNCHECKED));
}

// Exactly one bar is visible.
void ShowMenuBar(const AppFrame& frame, HWND shown) {
    const HWND bars[] = {frame.groupBar, frame.subjectBar, frame.articleBar};
    for (const HWND bar : bars) {
        if (bar != shown) ShowWindow(bar, SW_HIDE);
    }
    ShowWindow(shown, SW_SHOW);
}

void HideOtherPanes(const AppFrame& frame, ViewKind shown) {
    if (shown != ViewKind::kArticle) ShowArticleView(*frame.articleView, SW_HIDE);
    if (shown != ViewKind::kSubject) ShowSubjectView(*frame.subjectView, SW_HIDE);
    if (shown != ViewKind::kGroup) ShowGroupView(*frame.groupView, SW_HIDE);
    if (shown != ViewKind::kDrafts) ShowDraftTree(*frame.draftTree, SW_HIDE);
}

// Shows in the group's row what was read.
void LeaveOpenGroup(AppFrame& frame) {
    if (!frame.subjectView->list.open) return;
    CloseSubjectGroup(*frame.subjectView);
    SetGroupUnread(*frame.groupView, frame.currentGroupRow, frame.subjectView->list.store.header.unreadCount);
}

void ShowSubjects(AppFrame& frame) {
    ShowMenuBar(frame, frame.subjectBar);
    HideOtherPanes(frame, ViewKind::kSubject);
    frame.currentView = ViewKind::kSubject;
    ShowSubjectView(*frame.subjectView, SW_SHOW);
    FocusCurrentView(frame);
}

// A view without a font draws no text, so it gets the system's where the settings name none.
HFONT FontOf(const FontOwner& font) {
    return font ? font.Get() : static_cast<HFONT>(GetStockObject(SYSTEM_FONT));
}

void UseSubjectSettings(AppFrame& frame) {
    SetSubjectAppearance(*frame.subjectView, FontOf(frame.settings.SubjectFont), frame.settings.KeyMode != 0);
}

void ShowArticle(AppFrame& frame) {
    const Settings& settings = frame.settings;
    SetArticleAppearance(*frame.articleView,
                         {FontOf(settings.ArticleFont), settings.HeaderColor, settings.ReferenceLine,
                          settings.KeyMode != 0, settings.AutoNextArticle != 0});
    if (frame.currentView == ViewKind::kArticle) return;
    ShowMenuBar(frame, frame.articleBar);
    HideOtherPanes(frame, ViewKind::kArticle);
    frame.currentView = ViewKind::kArticle;
    ShowArticleView(*frame.articleView, SW_SHOW);
    FocusCurrentView(frame);
}

WideText ReadCurrentArticle(AppFrame& frame) {
    SubjectView& subjects = *frame.subjectView;
    if (!MarkSubjectRead(subjects)) return nullptr;
    const IndexRecord* record = CurrentSubject(subjects);
    return ReadArticle(subjects.list.store, record->logOffset, record->logLength);
}

}  // namespace

void SwitchToGroupView(AppFrame& frame) {
    if (frame.currentView == ViewKind::kGroup) return;
    HideOtherPanes(frame, ViewKind::kGroup);
    LeaveOpenGroup(frame);
    NameInTitle(frame.mainWindow, nullptr);
    ShowMenuBar(frame, frame.groupBar);
    frame.currentView = ViewKind::kGroup;
    ShowGroupView(*frame.groupView, SW_SHOW);
    FocusCurrentView(frame);
}

void SwitchToSubjectView(AppFrame& frame, const wchar_t* group, uint32_t row) {
    if (frame.currentView == ViewKind::kSubject) return;
    UseSubjectSettings(frame);
    if (!OpenSubjectGroup(*frame.subjectView, frame.settings.DataPath, group)) {
        ShowLastError(IDS_INIT_INDEX_FAILED, kProgramCaption);
        return;
    }
    frame.currentGroupRow = row;
    NameInTitle(frame.mainWindow, group);
    ShowSubjects(frame);
}

void SwitchToSubjectView(AppFrame& frame) {
    if (frame.currentView == ViewKind::kSubject) return;
    UseSubjectSettings(frame);
    ShowSubjects(frame);
}

void OpenCurrentArticle(AppFrame& frame) {
    WideText article = ReadCurrentArticle(frame);
    if (!article) {
        ShowLastError(IDS_INIT_INDEX_FAILED, kProgramCaption);
        return;
    }
    TakeArticleText(*frame.articleView, std::move(article));
    ShowArticle(frame);
}

void OpenNextArticle(AppFrame& frame) {
    if (AdvanceSubject(*frame.subjectView)) OpenCurrentArticle(frame);
}

void SwitchToDrafts(AppFrame& frame) {
    if (frame.currentView == ViewKind::kDrafts) return;
    NameInTitle(frame.mainWindow, nullptr);
    ShowMenuBar(frame, frame.groupBar);
    HideOtherPanes(frame, ViewKind::kDrafts);
    frame.currentView = ViewKind::kDrafts;
    if (frame.settings.DraftPath) (void)FillDraftTree(*frame.draftTree, frame.settings.DraftPath.get());
    ShowDraftTree(*frame.draftTree, SW_SHOW);
    SetFocus(frame.draftTree->tree);
}

void FocusCurrentView(const AppFrame& frame) {
    if (frame.currentView == ViewKind::kGroup) SetFocus(frame.groupView->list);
    if (frame.currentView == ViewKind::kSubject) SetFocus(frame.subjectView->window);
    if (frame.currentView == ViewKind::kArticle) SetFocus(frame.articleView->window);
}

void ShowCheckMarks(const AppFrame& frame) {
    Check(frame.subjectPopup, IDC_VIEW_READ, frame.viewReadArticles);
    Check(frame.subjectPopup, IDC_LEVEL_HIGH, frame.priorityLevel == kPriorityHigh);
    Check(frame.subjectPopup, IDC_LEVEL_NORMAL, frame.priorityLevel == kPriorityNormal);
    Check(frame.subjectPopup, IDC_LEVEL_LOW, frame.priorityLevel == kPriorityLow);
    Check(frame.articlePopup, IDC_SHOW_HEADER, frame.showArticleHeader);
}
