#include "shell/commands.h"

#include "resources/resource.h"
#include "shell/about.h"
#include "shell/catch_up.h"
#include "shell/not_yet.h"
#include "shell/run.h"
#include "shell/view_switch.h"

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

// Commands whose views and dialogs are still to be written.
const wchar_t* MissingPart(UINT id) {
    switch (id) {
        case IDC_PROPERTIES:
            return L"プロパティ";
        case IDC_DELETE_READ:
            return L"既読削除";
        case IDC_TOGGLE_READ:
            return L"未既読切替";
        case IDC_SUBSCRIBE:
            return L"購読";
        case IDC_VIEW_READ:
            return L"既読も表示";
        case IDC_KEYWORDS:
            return L"フィルタ";
        case IDC_SHOW_HEADER:
            return L"ヘッダ";
        case IDC_LEVEL_HIGH:
        case IDC_LEVEL_NORMAL:
        case IDC_LEVEL_LOW:
            return L"優先度";
        case IDC_DRAFTS:
        case IDC_COMPOSE:
        case IDC_CHOOSE_EXE:
            return L"草稿";
        default:
            return nullptr;
    }
}

void OnMissingCommand(UINT id) {
    const wchar_t* what = MissingPart(id);
    if (what) ShowNotYet(what);
}

}  // namespace

void OnCommand(AppFrame& frame, UINT id, UINT origin) {
    switch (id) {
        case IDC_EXIT:
            SendMessageW(frame.mainWindow, WM_CLOSE, 0, 0);
            break;
        case IDC_GET_ARTICLES:
            if (ReachesView(frame, origin, ViewKind::kGroup)) GetArticles(frame);
            break;
        case IDC_ABOUT:
            OnAbout(frame);
            break;
        case IDC_CATCH_UP:
            CatchUp(frame);
            break;
        case IDC_COPY:
            if (ReachesView(frame, origin, ViewKind::kArticle)) ShowNotYet(L"コピー");
            break;
        case IDC_LEAVE_DRAFTS:
        case IDC_BACK_TO_GROUPS:
            SwitchToGroupView(frame);
            break;
        default:
            OnMissingCommand(id);
    }
}
