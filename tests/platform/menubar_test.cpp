// The desktop's menu bar, driven as a user drives it: keys and clicks go in one after the other, each when
// the one before has been dealt with, be it by the message loop or by an open popup's own.
#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "platform/platform.h"
#include "resources/resource.h"

namespace {

using testing::ElementsAreArray;

struct Action {
    enum Kind { kKey, kMenuKey, kDown, kUp, kMove, kClose } kind;
    int value;  // a virtual key; for the mouse the place, counted from the bar's left end
};

Action Key(int key) {
    return {Action::kKey, key};
}
Action MenuKey(int key) {
    return {Action::kMenuKey, key};
}
Action Down(int x) {
    return {Action::kDown, x};
}
Action Up(int x) {
    return {Action::kUp, x};
}
Action Move(int x) {
    return {Action::kMove, x};
}

// Places on the article bar.
constexpr int kBack = 12;
constexpr int kArticle = 45;
constexpr int kTools = 110;
constexpr int kBesideAll = 230;

struct Bars {
    HWND group = nullptr;
    HWND subject = nullptr;
    HWND article = nullptr;
};

// What the frame saw, and what is still to be done to it.
struct Record {
    std::vector<int> commands;
    std::vector<HMENU> popups;
    std::vector<Action> actions;
    HWND bar = nullptr;
};

Record* record = nullptr;

void PostMouse(UINT message, int x) {
    RECT area{};
    GetWindowRect(record->bar, &area);
    const int y = (area.bottom - area.top) / 2;
    SetCursorPos(area.left + x, area.top + y);
    PostMessageW(record->bar, message, message == WM_LBUTTONUP ? 0 : MK_LBUTTON, MAKELPARAM(x, y));
}

void Perform(const Action& action) {
    constexpr LPARAM kAltDown = 1 << 29;
    switch (action.kind) {
        case Action::kKey:
            PostMessageW(GetFocus(), WM_KEYDOWN, action.value, 1);
            break;
        case Action::kMenuKey:
            PostMessageW(GetFocus(), WM_SYSKEYDOWN, action.value, action.value == VK_MENU ? kAltDown : 0);
            PostMessageW(GetFocus(), action.value == VK_MENU ? WM_SYSKEYUP : WM_KEYUP, action.value, 0);
            break;
        case Action::kDown:
            PostMouse(WM_LBUTTONDOWN, action.value);
            break;
        case Action::kUp:
            PostMouse(WM_LBUTTONUP, action.value);
            break;
        case Action::kMove:
            PostMouse(WM_MOUSEMOVE, action.value);
            break;
        case Action::kClose:
            PostMessageW(GetParent(record->bar), WM_CLOSE, 0, 0);
            break;
    }
}

// False when nothing was left to do.
bool PerformNext() {
    if (record->actions.empty()) return false;
    const Action action = record->actions.front();
    record->actions.erase(record->actions.begin());
    Perform(action);
    return true;
}

LRESULT CALLBACK FrameProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_COMMAND:
            record->commands.push_back(static_cast<int>(wParam));
            return 0;
        case WM_INITMENUPOPUP:
            record->popups.push_back(reinterpret_cast<HMENU>(wParam));
            return 0;
        case WM_ENTERIDLE:
            if (!PerformNext()) EndMenu();
            return 0;
        default:
            return DefWindowProcW(window, message, wParam, lParam);
    }
}

HWND MakeBar(HWND frame, UINT id, int bitmap, int images) {
    SHMENUBARINFO info{};
    info.cbSize = sizeof(info);
    info.hwndParent = frame;
    info.nToolBarId = id;
    info.hInstRes = GetModuleHandleW(nullptr);
    info.nBmpId = bitmap;
    info.cBmpImages = images;
    EXPECT_TRUE(SHCreateMenuBar(&info)) << "bar " << id << ", error " << GetLastError();
    return info.hwndMB;
}

class MenuBarTest : public testing::Test {
  protected:
    void SetUp() override {
        record = &record_;
        const HINSTANCE module = GetModuleHandleW(nullptr);
        WNDCLASSW frameClass{};
        frameClass.lpfnWndProc = FrameProcedure;
        frameClass.hInstance = module;
        frameClass.lpszClassName = L"MenuBarTestFrame";
        RegisterClassW(&frameClass);
        frame_ = CreateWindowExW(0, L"MenuBarTestFrame", L"", WS_VISIBLE, 10, 10, 260, 300, nullptr, nullptr,
                                 module, nullptr);
        ASSERT_TRUE(frame_);
        bars_.group = MakeBar(frame_, IDM_GROUP, IDB_GROUP_BAR, 1);
        bars_.subject = MakeBar(frame_, IDM_SUBJECT, IDB_SUBJECT_BAR, 6);
        bars_.article = MakeBar(frame_, IDM_ARTICLE, IDB_ARTICLE_BAR, 2);
        Show(bars_.article);
        pane_ = CreateWindowExW(0, L"STATIC", L"", WS_CHILD | WS_VISIBLE, 0, 0, 200, 100, frame_, nullptr,
                                module, nullptr);
        SetFocus(pane_);
        ASSERT_EQ(GetFocus(), pane_);
    }

    void TearDown() override {
        DestroyWindow(frame_);
        record = nullptr;
    }

    void Show(HWND bar) {
        for (HWND each : {bars_.group, bars_.subject, bars_.article})
            ShowWindow(each, each == bar ? SW_SHOW : SW_HIDE);
        record_.bar = bar;
    }

    void Do(std::vector<Action> actions) {
        record_.commands.clear();
        record_.popups.clear();
        record_.actions = std::move(actions);
        const DWORD start = GetTickCount();
        MSG message;
        while (GetTickCount() - start < 10000) {
            if (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
                TranslateMessage(&message);  // the characters of the keys are part of what a user sends
                DispatchMessageW(&message);
            } else if (!PerformNext()) {
                return;
            }
        }
        ADD_FAILURE() << "the message queue never emptied";
    }

    Record record_;
    Bars bars_;
    HWND frame_ = nullptr;
    HWND pane_ = nullptr;
};

TEST_F(MenuBarTest, CommandsReachTheFrame) {
    struct Row {
        const char* sentence;
        std::vector<Action> actions;
        std::vector<int> commands;
    };
    const Action alt = MenuKey(VK_MENU);
    const Action left = Key(VK_LEFT), right = Key(VK_RIGHT), down = Key(VK_DOWN), enter = Key(VK_RETURN);
    const Action escape = Key(VK_ESCAPE);
    const Row rows[] = {
        {"A click presses the image button.", {Down(kBack), Up(kBack)}, {IDC_BACK_TO_SUBJECTS}},
        {"A release that began elsewhere presses nothing.", {Up(kBack)}, {}},
        {"The bar's empty end is no button.", {Down(kBesideAll), Up(kBesideAll)}, {}},
        {"Alt and Enter press the first button.", {alt, enter}, {IDC_BACK_TO_SUBJECTS}},
        {"A popup opened by a key starts on its first item.", {alt, right, down, enter}, {IDC_COPY}},
        {"Alt again leaves the bar.", {alt, alt, enter}, {}},
        {"Left of the first button is the last.", {alt, left, enter, enter}, {IDC_ABOUT}},
        {"Right leads from an open popup to the next.", {alt, right, enter, right, enter}, {IDC_ABOUT}},
        {"Escape closes the popup alone: the bar goes on.",
         {alt, right, enter, escape, right, enter, enter},
         {IDC_ABOUT}},
        {"A click opens the popup, without an item selected.", {Down(kArticle), Up(kArticle), enter}, {}},
        {"The mouse over another drop-down opens that one.",
         {Down(kArticle), Up(kArticle), Move(kTools), down, enter},
         {IDC_ABOUT}},
        {"A mouse that rests on a drop-down does not undo the keys.",
         {Down(kTools), Up(kTools), left, Move(kTools), enter},
         {IDC_COPY}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.sentence);
        Do(row.actions);
        EXPECT_THAT(record_.commands, ElementsAreArray(row.commands));
        EXPECT_EQ(GetFocus(), pane_);
    }
}

TEST_F(MenuBarTest, ASecondClickClosesThePopup) {
    Do({Down(kArticle), Up(kArticle), Down(kArticle), Up(kArticle)});
    EXPECT_EQ(record_.popups.size(), 1u) << "the click that closed the popup opened it again";
    EXPECT_TRUE(record_.actions.empty());
}

TEST_F(MenuBarTest, AltGoesToTheBarThatShows) {
    Show(bars_.subject);
    Do({MenuKey(VK_MENU), Key(VK_RETURN)});
    EXPECT_THAT(record_.commands, testing::ElementsAre(IDC_BACK_TO_GROUPS));
    Show(nullptr);
    Do({MenuKey(VK_MENU), Key(VK_RETURN)});
    EXPECT_THAT(record_.commands, testing::IsEmpty());
    EXPECT_EQ(GetFocus(), pane_) << "a hidden bar took the focus";
}

TEST_F(MenuBarTest, NothingOutlivesTheBars) {
    const auto popup =
        reinterpret_cast<HMENU>(SendMessageW(bars_.subject, SHCMBM_GETSUBMENU, 0, IDC_DROP_SUBJECT));
    ASSERT_TRUE(IsMenu(popup));
    for (const HWND bar : {bars_.subject, bars_.group, bars_.article})
        DestroyWindow(bar);
    EXPECT_FALSE(IsMenu(popup));
    Do({MenuKey(VK_MENU), Key(VK_RETURN)});
    EXPECT_EQ(GetFocus(), pane_);
}

TEST_F(MenuBarTest, AFrameMayCloseUnderAnOpenPopup) {
    Do({MenuKey(VK_MENU), Key(VK_RIGHT), Key(VK_RETURN), {Action::kClose, 0}});
    EXPECT_FALSE(IsWindow(frame_));
    EXPECT_THAT(record_.actions, testing::IsEmpty());
}

}  // namespace
