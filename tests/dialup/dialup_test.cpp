// Dialling before a run and hanging up after it, in the program's own frame.
#include "dialup/dialup.h"

#include <gmock/gmock.h>

#include <raserror.h>

#include "resources/resource.h"
#include "tests/dialup/fake_ras.h"
#include "tests/drafts/frame_run.h"
#include "tests/support/scripted_server.h"
#include "tests/support/temp_folder.h"

namespace {

constexpr wchar_t kDialing[] = L"本社に接続中...";
constexpr wchar_t kHangingUp[] = L"切断中...";
constexpr wchar_t kHungUp[] = L"切断しました";
constexpr wchar_t kRunDone[] = L"ダウンロードが終了しました。";
constexpr wchar_t kFailureCaption[] = L"ﾀﾞｲｱﾙｱｯﾌﾟ接続ｴﾗｰ";

class DialUpTest : public testing::Test {
  protected:
    void SetUp() override {
        if (ras) *ras = FakeRas();
    }

    void Store(unsigned short port, uint32_t wait) {
        Settings settings;
        wcscpy(settings.Server, L"127.0.0.1");
        wcscpy(settings.DataPath, folder.Path().c_str());
        wcscpy(settings.EntryName, L"本社");
        settings.Port = port;
        settings.Dialup = 1;
        settings.DisconnectWaitTime = wait;
        ASSERT_TRUE(SaveSettings(settings));
    }

    // The connect dialog, once the line is being dialled.
    HWND Dial(const FrameRun& run) const {
        const int dials = ras->dials;
        run.Command(IDC_GET_ARTICLES);
        const HWND dialog = run.thread.Window(kDialing);
        EXPECT_TRUE(Await([&] { return ras->dials == dials + 1; }));
        EXPECT_EQ(ras->notified, dialog);
        EXPECT_FALSE(IsWindowEnabled(run.frame.mainWindow));
        return dialog;
    }
    void Report(WPARAM state, LPARAM error = 0) const {
        PostMessageW(ras->notified, WM_RASDIALEVENT, state, error);
    }
    static bool Says(HWND dialog, const std::wstring& status) {
        return Await([&] { return TextOf(GetDlgItem(dialog, IDC_DIAL_STATUS)) == status; });
    }
    // Back where it was before the dialling: no dialog, no run, and the frame answers.
    void ExpectIdle(const FrameRun& run, HWND dialog) const {
        const HWND frame = run.frame.mainWindow;
        EXPECT_TRUE(Await([&] { return !IsWindow(dialog) && IsWindowEnabled(frame); }));
        EXPECT_TRUE(Await([&] { return run.thread.Find({}) == frame; }));
        EXPECT_TRUE(Await([&] { return !run.frame.dialled && !run.frame.job; }));
    }

    RegistryGuard guard;
    TempFolder folder;
    FakeRas* const ras = GetFakeRas();
};

TEST_F(DialUpTest, DialsRunsWaitsAndHangsUp) {
    ScriptedServer server(Script("S: 200 ready\nC: QUIT\n"));
    Store(server.Start(), 3);
    const FrameRun run;
    ASSERT_TRUE(run.Window());
    const HWND dialog = Dial(run);
    EXPECT_STREQ(ras->entry, L"本社");
    EXPECT_STREQ(ras->user, L"caller") << "what the phone book keeps for the entry";
    EXPECT_STREQ(ras->phone, L"") << "the entry's own number";
    ASSERT_TRUE(dialog && Says(dialog, L"接続中..."));
    const struct {
        WPARAM state;
        const wchar_t* status;
    } rows[] = {
        {0, L"ﾎﾟｰﾄを開きます..."},
        {1, L"ﾎﾟｰﾄを開きました"},
        {2, L"ﾃﾞﾊﾞｲｽに接続します"},
        {3, L"ﾃﾞﾊﾞｲｽに接続しました"},
        {4, nullptr},
        {5, L"認証します"},
        {0x1000, nullptr},
        {14, L"認証しました"},
    };
    const UINT registered = RegisterWindowMessageA(RASDIALEVENT);  // newer systems send this one
    std::wstring status;
    for (const auto& row : rows) {
        if (row.status) status = row.status;
        SendMessageW(dialog, row.state % 2 ? registered : WM_RASDIALEVENT, row.state, 0);
        ASSERT_TRUE(Says(dialog, status)) << row.state;
    }
    run.Command(IDC_GET_ARTICLES);
    SendMessageW(dialog, WM_NULL, 0, 0);
    EXPECT_EQ(ras->dials, 1) << "a second command while the first dials";
    SendMessageW(dialog, WM_RASDIALEVENT, RASCS_Connected, 0);
    ASSERT_TRUE(Says(dialog, L"接続しました"));
    EXPECT_FALSE(IsOn(dialog, IDCANCEL));
    EXPECT_TRUE(Await([dialog] { return !IsWindow(dialog); }));

    const HWND closing = run.thread.Window(kHangingUp);
    ASSERT_TRUE(closing);
    EXPECT_EQ(TextOf(GetDlgItem(closing, IDC_DIAL_STATUS)), L"切断します");
    EXPECT_TRUE(IsOn(closing, IDCANCEL));
    EXPECT_EQ(ras->hangUps, 0);
    EXPECT_TRUE(Says(closing, kHungUp));
    EXPECT_FALSE(IsOn(closing, IDCANCEL));
    EXPECT_EQ(run.thread.CloseBox(L"Disconnect"), kRunDone);
    EXPECT_EQ(ras->hangUps, 1) << "though the wait's timer runs on";
    EXPECT_NE(ras->hungUp, nullptr);
    ExpectIdle(run, closing);
    SendMessageW(run.frame.mainWindow, kHangUpMessage, 0, 0);
    EXPECT_EQ(ras->hangUps, 1) << "a call that is over";
    EXPECT_THAT(server.Finish(), testing::IsEmpty());
}

TEST_F(DialUpTest, ACallThatFailsIsTold) {
    const struct {
        const char* why;
        DWORD dialError;
        WPARAM state;
        LPARAM error;
    } rows[] = {
        {"it cannot even start", ERROR_CANNOT_FIND_PHONEBOOK_ENTRY, 0, 0},
        {"the line goes", 0, RASCS_Disconnected, 0},
        {"a step of it fails", 0, RASCS_ConnectDevice, ERROR_NO_CARRIER},
    };
    Store(9, 0);
    const FrameRun run;
    ASSERT_TRUE(run.Window());
    for (const auto& row : rows) {
        *ras = FakeRas();
        ras->dialError = row.dialError;
        run.Command(IDC_GET_ARTICLES);
        if (!row.dialError) {
            EXPECT_TRUE(Await([&] { return ras->dials == 1; })) << row.why;
            Report(row.state, row.error);
        }
        ASSERT_TRUE(run.thread.Window(kFailureCaption)) << row.why;
        EXPECT_FALSE(IsWindowVisible(ras->notified)) << row.why;
        EXPECT_EQ(TextOf(GetDlgItem(ras->notified, IDC_DIAL_STATUS)), kHungUp) << row.why;
        EXPECT_EQ(run.thread.CloseBox(kFailureCaption), L"接続できませんでした") << row.why;
        ExpectIdle(run, ras->notified);
        EXPECT_EQ(ras->hangUps, 1) << row.why;
    }
}

TEST_F(DialUpTest, CancelEndsTheCall) {
    Store(9, 0);
    const FrameRun run;
    ASSERT_TRUE(run.Window());
    for (const bool reported : {false, true}) {
        *ras = FakeRas();
        const HWND dialog = Dial(run);
        if (reported) Report(RASCS_Authenticate);
        PostMessageW(GetDlgItem(dialog, IDCANCEL), BM_CLICK, 0, 0);
        ExpectIdle(run, dialog);
        EXPECT_EQ(ras->hangUps, 1);
        Report(RASCS_Connected);  // too late: the window is gone
        ExpectIdle(run, dialog);
    }
}

// A step that fails may be followed by the end of the call, or come too late for it: one box, one hang-up.
TEST_F(DialUpTest, ACallEndsOnce) {
    Store(9, 0);
    const FrameRun run;
    ASSERT_TRUE(run.Window());
    const HWND dialog = Dial(run);
    Report(RASCS_Authenticate, ERROR_AUTHENTICATION_FAILURE);
    ASSERT_TRUE(run.thread.Window(kFailureCaption));
    for (const WPARAM state : {RASCS_Disconnected, RASCS_Connected})
        SendNotifyMessageW(dialog, WM_RASDIALEVENT, state, 0);
    SendMessageW(dialog, WM_NULL, 0, 0);
    EXPECT_EQ(TextOf(GetDlgItem(dialog, IDC_DIAL_STATUS)), kHungUp);
    EXPECT_EQ(run.thread.CloseBox(kFailureCaption), L"接続できませんでした");
    ExpectIdle(run, dialog);
    EXPECT_EQ(ras->hangUps, 1);
}

// As Alt+F4 does, which reaches a dialog without a close button too.
TEST_F(DialUpTest, ClosingTheDialogEndsTheCall) {
    Store(9, 0);
    const FrameRun run;
    ASSERT_TRUE(run.Window());
    const HWND dialog = Dial(run);
    PostMessageW(dialog, WM_CLOSE, 0, 0);
    ExpectIdle(run, dialog);
    EXPECT_EQ(ras->hangUps, 1);
}

TEST_F(DialUpTest, CancelInTheWaitKeepsTheLine) {
    ScriptedServer server(Script("S: 200 ready\nC: QUIT\n! next connection\nS: 200 ready\nC: QUIT\n"));
    Store(server.Start(), 600);
    const FrameRun run;
    ASSERT_TRUE(run.Window());
    Dial(run);
    Report(RASCS_Connected);
    const HWND closing = run.thread.Window(kHangingUp);
    ASSERT_TRUE(closing);
    ras->connections = 1;
    PostMessageW(GetDlgItem(closing, IDCANCEL), BM_CLICK, 0, 0);
    EXPECT_EQ(run.thread.CloseBox(L"Disconnect"), kRunDone);
    ExpectIdle(run, closing);

    // Nor is a line hung up that was up before the run. More of them than there is room for are no less up.
    ras->connections = 2;
    run.Command(IDC_GET_ARTICLES);
    EXPECT_EQ(run.thread.CloseBox(L"Disconnect"), kRunDone);
    ExpectIdle(run, closing);
    EXPECT_EQ(ras->dials, 1);
    EXPECT_EQ(ras->hangUps, 0);
    EXPECT_THAT(server.Finish(), testing::IsEmpty());
}

TEST_F(DialUpTest, WithoutAWaitItHangsUpAtOnceEvenAfterAFailedRun) {
    ScriptedServer server(Script("S: 400 closed\n"));
    Store(server.Start(), 0);
    const FrameRun run;
    ASSERT_TRUE(run.Window());
    Dial(run);
    Report(RASCS_Connected);
    const HWND closing = run.thread.Window(kHangingUp);
    ASSERT_TRUE(closing);
    EXPECT_TRUE(Says(closing, kHungUp));
    EXPECT_FALSE(IsOn(closing, IDCANCEL));
    EXPECT_EQ(ras->hangUps, 1);
    EXPECT_EQ(run.thread.CloseBox(L"接続を拒否されました"), L"400 closed\r\n");
    ExpectIdle(run, closing);
    EXPECT_EQ(ras->hangUps, 1);
    (void)server.Finish();
}

class MissingLibraryDialTest : public DialUpTest {};

TEST_F(MissingLibraryDialTest, TheProgramStartsAndTheCallFails) {
    Store(9, 0);
    const FrameRun run;
    ASSERT_TRUE(run.Window());
    run.Command(IDC_GET_ARTICLES);
    EXPECT_EQ(run.thread.CloseBox(kFailureCaption), L"接続できませんでした");
    ExpectIdle(run, nullptr);
}

}  // namespace
