#include "shell/view_switch.h"

#include "resources/resource.h"
#include "store/record.h"

namespace {

void Check(HMENU menu, UINT command, bool checked) {
    CheckMenuItem(menu, command, MF_BYCOMMAND | static_cast<UINT>(checked ? MF_CHECKED : MF_UNCHECKED));
}

}  // namespace

void SwitchToGroupView(AppFrame& frame) {
    if (frame.currentView == ViewKind::kGroup) return;
    ShowWindow(frame.subjectBar, SW_HIDE);
    ShowWindow(frame.articleBar, SW_HIDE);
    ShowWindow(frame.groupBar, SW_SHOW);
    ShowGroupView(*frame.groupView, SW_SHOW);
    frame.currentView = ViewKind::kGroup;
    FocusCurrentView(frame);
}

void FocusCurrentView(const AppFrame& frame) {
    if (frame.currentView == ViewKind::kGroup) SetFocus(frame.groupView->list);
}

void ShowCheckMarks(const AppFrame& frame) {
    Check(frame.subjectPopup, IDC_VIEW_READ, frame.viewReadArticles != 0);
    Check(frame.subjectPopup, IDC_LEVEL_HIGH, frame.priorityLevel == kPriorityHigh);
    Check(frame.subjectPopup, IDC_LEVEL_NORMAL, frame.priorityLevel == kPriorityNormal);
    Check(frame.subjectPopup, IDC_LEVEL_LOW, frame.priorityLevel == kPriorityLow);
    Check(frame.articlePopup, IDC_SHOW_HEADER, frame.showArticleHeader != 0);
}
