#include "shell/frame_window.h"

#include "dialup/dialup.h"
#include "resources/resource.h"
#include "sheet/settings_sheet.h"
#include "settings/view_options.h"
#include "shell/app_frame.h"
#include "shell/commands.h"
#include "shell/reload.h"
#include "shell/run.h"
#include "shell/view_switch.h"
#include "text/messages.h"

namespace {

struct BarDescription {
    UINT resource;
    int bitmap;
    int images;
};

constexpr BarDescription kGroupBar = {IDM_GROUP, IDB_GROUP_BAR, 1};
constexpr BarDescription kSubjectBar = {IDM_SUBJECT, IDB_SUBJECT_BAR, 6};
constexpr BarDescription kArticleBar = {IDM_ARTICLE, IDB_ARTICLE_BAR, 2};

HWND MakeMenuBar(const AppFrame& frame, const BarDescription& bar) {
    SHMENUBARINFO info = {};
    info.cbSize = sizeof(info);
    info.hwndParent = frame.mainWindow;
    info.nToolBarId = bar.resource;
    info.hInstRes = frame.instance;
    info.nBmpId = bar.bitmap;
    info.cBmpImages = bar.images;
    if (!SHCreateMenuBar(&info)) return nullptr;
    ShowWindow(info.hwndMB, SW_HIDE);
    return info.hwndMB;
}

HMENU PopupOf(HWND bar, int button) {
    return reinterpret_cast<HMENU>(SendMessageW(bar, SHCMBM_GETSUBMENU, 0, button));
}

bool MakeMenuBars(AppFrame& frame) {
    frame.groupBar = MakeMenuBar(frame, kGroupBar);
    frame.subjectBar = MakeMenuBar(frame, kSubjectBar);
    frame.articleBar = MakeMenuBar(frame, kArticleBar);
    if (!frame.groupBar || !frame.subjectBar || !frame.articleBar) return false;
    frame.subjectPopup = PopupOf(frame.subjectBar, IDC_DROP_SUBJECT);
    frame.articlePopup = PopupOf(frame.articleBar, IDC_DROP_ARTICLE);
    ShowWindow(frame.groupBar, SW_SHOW);
    return true;
}

RECT PaneRectangle(const AppFrame& frame) {
    RECT bar = {};
    RECT client = {};
    GetWindowRect(frame.groupBar, &bar);
    GetClientRect(frame.mainWindow, &client);
    client.bottom -= bar.bottom - bar.top;
    return client;
}

// What is missing is asked for. False when the user will not say.
bool LoadFrameSettings(AppFrame& frame) {
    bool complete = false;
    if (LoadSettings(frame.settings, complete) && complete) return true;
    return RunSettingsSheet(frame.settings, frame.instance, frame.mainWindow) == 1;
}

// A pane that cannot be made leaves its place empty; the others still work.
void CreatePanes(AppFrame& frame, const RECT& pane) {
    (void)CreateGroupView(*frame.groupView, frame.mainWindow, L"Group", pane, IDW_GROUP_VIEW, frame.instance);
    frame.showArticleHeader = ReadShowArticleHeader();
    frame.priorityLevel = ReadPriorityViewLevel();
    frame.articleView->showAllHeaders = frame.showArticleHeader != 0;
    (void)CreateArticleView(*frame.articleView, frame.instance, frame.mainWindow, IDW_ARTICLE_VIEW, pane);
    frame.viewReadArticles = ReadViewReadArticle();
    (void)CreateSubjectView(*frame.subjectView, frame.instance, frame.mainWindow, IDW_SUBJECT_VIEW, pane,
                            frame.viewReadArticles, frame.priorityLevel);
    if (CreateDraftTree(*frame.draftTree, frame.mainWindow, pane, IDW_DRAFT_TREE, frame.instance)) {
        ShowDraftTree(*frame.draftTree, SW_HIDE);
    }
    ShowCheckMarks(frame);
}

void SetFrameIcon(const AppFrame& frame) {
    constexpr int kSize = 16;
    HANDLE icon = LoadImageW(frame.instance, MAKEINTRESOURCEW(IDI_PELNOR), IMAGE_ICON, kSize, kSize, 0);
    if (icon) SendMessageW(frame.mainWindow, WM_SETICON, ICON_SMALL, reinterpret_cast<LPARAM>(icon));
}

LRESULT OnCreate(AppFrame& frame) {
    frame.turn.Reset();
    SetUpDesktopFrame(frame.mainWindow, IDI_PELNOR, kProgramKey, kWakeMessage);
    if (!MakeMenuBars(frame)) {
        MessageBoxW(nullptr, L"FAILED", L"DEBUG", MB_OK | MB_ICONERROR);
        PostQuitMessage(0);
        return 0;
    }
    if (!LoadFrameSettings(frame)) {
        SendMessageW(frame.mainWindow, WM_COMMAND, IDC_EXIT, 0);
        return 0;
    }
    CreatePanes(frame, PaneRectangle(frame));
    SetFrameIcon(frame);
    (void)ReloadData(frame);
    SwitchToGroupView(frame);
    frame.alone = false;
    return 0;
}

LRESULT OnDestroy(AppFrame& frame) {
    if (frame.currentView != ViewKind::kGroup) CloseSubjectGroup(*frame.subjectView);
    if (frame.groupView && frame.groupView->list) (void)SaveGroupViewWidths(*frame.groupView);
    frame.ended = true;
    PostQuitMessage(0);
    return 0;
}

// A double tap or Enter on a row of the group list. No group is opened under a command that changes its
// files.
LRESULT OnNotify(AppFrame& frame, const NMHDR& header) {
    const bool opens =
        header.code == static_cast<UINT>(NM_DBLCLK) || header.code == static_cast<UINT>(NM_RETURN);
    if (header.idFrom != IDW_GROUP_VIEW || !opens || frame.alone) return 0;
    wchar_t name[kTextCapacity];
    uint32_t row = 0;
    if (SelectedGroup(*frame.groupView, name, kTextCapacity, &row)) SwitchToSubjectView(frame, name, row);
    return 0;
}

LRESULT OnStartRun(AppFrame& frame) {
    frame.dialled = true;
    EnableWindow(frame.mainWindow, TRUE);
    RunAlone(frame, StartRun);
    return 0;
}

// A handle is used once: the system may give its number to another program's call.
LRESULT OnHangUp(AppFrame& frame) {
    const HRASCONN connection = frame.connection;
    frame.connection = nullptr;
    EnableWindow(frame.mainWindow, TRUE);
    if (connection) (void)EndRasCall(connection);
    return 0;
}

AppFrame* FrameOf(HWND window, UINT message, LPARAM lParam) {
    if (message != WM_CREATE) return static_cast<AppFrame*>(GetWindowPointer(window, 0));
    auto frame = static_cast<AppFrame*>(reinterpret_cast<CREATESTRUCTW*>(lParam)->lpCreateParams);
    SetWindowPointer(window, 0, frame);
    frame->mainWindow = window;
    return frame;
}

LRESULT Dispatch(AppFrame& frame, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_CREATE:
            return OnCreate(frame);
        case WM_DESTROY:
            return OnDestroy(frame);
        case WM_SETFOCUS:
            FocusCurrentView(frame);
            return 0;
        case WM_NOTIFY:
            return OnNotify(frame, *reinterpret_cast<const NMHDR*>(lParam));
        case WM_COMMAND:
            OnCommand(frame, LOWORD(wParam), HIWORD(wParam));
            return 0;
        case kStartRunMessage:
            return OnStartRun(frame);
        case kHangUpMessage:
            return OnHangUp(frame);
        case kRunFinishedMessage:
            FinishRun(frame, reinterpret_cast<const DownloadJob*>(lParam));
            return 0;
        case kWakeMessage:
            return 0;
        default:
            return DefWindowProcW(frame.mainWindow, message, wParam, lParam);
    }
}

LRESULT CALLBACK FrameProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    AppFrame* frame = FrameOf(window, message, lParam);
    if (!frame) return DefWindowProcW(window, message, wParam, lParam);
    return Dispatch(*frame, message, wParam, lParam);
}

}  // namespace

bool RegisterFrameClass(HINSTANCE instance) {
    WNDCLASSW description = {};
    description.lpfnWndProc = FrameProcedure;
    description.cbWndExtra = kPointerExtra;
    description.hInstance = instance;
    description.hbrBackground = static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH));
    description.lpszClassName = kFrameClass;
    return RegisterClassW(&description) != 0;
}
