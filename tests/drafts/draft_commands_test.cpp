// The commands of the drafts, in the program's frame.
#include <gmock/gmock.h>

#include "resources/resource.h"
#include "tests/drafts/frame_run.h"
#include "tests/drafts/tree_walk.h"
#include "tests/support/temp_folder.h"
#include "text/convert.h"

namespace {

class DraftCommandsTest : public testing::Test {
  protected:
    void Store() {
        Settings settings;
        wcscpy(settings.Server, L"127.0.0.1");
        wcscpy(settings.DataPath, folder.Path().c_str());
        ASSERT_TRUE(SaveSettings(settings));
    }

    RegistryGuard guard;
    TempFolder folder;
};

TEST_F(DraftCommandsTest, OnePaneAndOneBarAreShown) {
    Store();
    const FrameRun run;
    const AppFrame& frame = run.frame;
    ASSERT_TRUE(run.Window());
    folder.Write(L"draft\\out.txt", "Subject: a\r\n\r\n");
    const HWND groups = frame.groupView->list, subjects = frame.subjectView->window;
    const HWND article = frame.articleView->window, drafts = frame.draftTree->tree;
    const struct {
        UINT command;
        HWND pane, bar, focus;
    } rows[] = {
        {IDC_DRAFTS, drafts, frame.groupBar, drafts},
        {IDC_LEAVE_DRAFTS, groups, frame.groupBar, groups},
        {IDC_BACK_TO_SUBJECTS, subjects, frame.subjectBar, subjects},
        {IDC_DRAFTS, drafts, frame.groupBar, drafts},
        {IDC_BACK_TO_SUBJECTS, subjects, frame.subjectBar, subjects},
        {IDC_BACK_TO_GROUPS, groups, frame.groupBar, groups},
    };
    for (const auto& row : rows) {
        SendMessageW(frame.mainWindow, WM_COMMAND, row.command, 0);
        for (const HWND pane : {groups, subjects, article, drafts})
            EXPECT_EQ(IsWindowVisible(pane) != 0, pane == row.pane) << row.command;
        for (const HWND bar : {frame.groupBar, frame.subjectBar, frame.articleBar})
            EXPECT_EQ(IsWindowVisible(bar) != 0, bar == row.bar) << row.command;
        EXPECT_EQ(run.thread.Focus(), row.focus) << row.command;
    }
    EXPECT_THAT(Children(drafts, frame.draftTree->roots[kWaitingDrafts]), testing::ElementsAre(L"(none)"));
}

TEST_F(DraftCommandsTest, ComposingNeedsAnIdentity) {
    Store();
    FrameRun run;
    ASSERT_TRUE(run.Window());
    const struct {
        const char *user, *address;
        const wchar_t *caption, *text;
    } rows[] = {
        {nullptr, "t@a.jp", L"プロパティ未設定", L"プロパティでユーザ名を設定してください."},
        {"Taro", nullptr, L"プロパティ未設定", L"プロパティでメールアドレスを設定してください."},
        {"Taro", "t@a.jp", L"COMPOSE", L"Compoe!"},
    };
    for (const auto& row : rows) {
        run.frame.settings.UserName = row.user ? CopyText(row.user) : nullptr;
        run.frame.settings.MailAddress = row.address ? CopyText(row.address) : nullptr;
        run.Command(IDC_COMPOSE);
        EXPECT_EQ(run.thread.CloseBox(row.caption), row.text);
    }
}

// Nothing is stored yet, so the sheet comes before the panes.
TEST_F(DraftCommandsTest, AFirstStartKnowsItsDraftFolder) {
    const FrameRun run;
    const HWND sheet = run.thread.Window(L"プロパティ");
    const auto page = reinterpret_cast<HWND>(SendMessageW(sheet, PSM_GETCURRENTPAGEHWND, 0, 0));
    Type(page, IDC_SERVER, L"127.0.0.1");
    Type(page, IDC_DATA_FOLDER, folder.Path());
    PostMessageW(sheet, PSM_PRESSBUTTON, PSBTN_OK, 0);
    ASSERT_TRUE(Await([&] { return run.frame.currentView == ViewKind::kGroup; }));
    folder.Write(L"draft\\sent.txt", "Subject: a\r\n\r\n");
    SendMessageW(run.frame.mainWindow, WM_COMMAND, IDC_DRAFTS, 0);
    EXPECT_THAT(Children(run.frame.draftTree->tree, run.frame.draftTree->roots[kSentDrafts]),
                testing::ElementsAre(L"(none)"));
}

}  // namespace
