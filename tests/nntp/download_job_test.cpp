// The run on its worker thread: the job, the progress dialog and the password prompt, on real windows.
#include "nntp/download_job.h"

#include <gmock/gmock.h>

#include "nntp/password_prompt.h"
#include "resources/resource.h"
#include "tests/nntp/session_run.h"
#include "tests/support/ui_thread.h"
#include "text/convert.h"

namespace {

using namespace std::string_literals;
using testing::IsEmpty;

constexpr DWORD kPatience = 10000;  // milliseconds

// A window that takes the run-finished message as the frame does.
class MainWindow {
  public:
    MainWindow() {
        WNDCLASSW windowClass = {};
        windowClass.lpfnWndProc = Procedure;
        windowClass.hInstance = GetModuleHandleW(nullptr);
        windowClass.lpszClassName = L"PelnorJobTest";
        RegisterClassW(&windowClass);
        window_ = CreateWindowExW(0, L"PelnorJobTest", L"", WS_POPUP | WS_VISIBLE, 0, 0, 240, 240, nullptr,
                                  nullptr, windowClass.hInstance, nullptr);
        EXPECT_NE(window_, nullptr);
        finished = nullptr;
        count = 0;
    }
    ~MainWindow() { DestroyWindow(window_); }

    HWND Window() const { return window_; }

    // Dispatches messages until the worker's last act.
    void AwaitFinish() const {
        const DWORD start = GetTickCount();
        MSG message;
        while (!finished && GetTickCount() - start < kPatience) {
            MsgWaitForMultipleObjects(0, nullptr, FALSE, 50, QS_ALLINPUT);
            while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
                DispatchMessageW(&message);
        }
        EXPECT_EQ(count, 1) << "run-finished messages";
    }

    static inline DownloadJob* finished = nullptr;
    static inline int count = 0;

  private:
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message != kRunFinishedMessage) return DefWindowProcW(window, message, wParam, lParam);
        finished = reinterpret_cast<DownloadJob*>(lParam);
        ++count;
        return 0;
    }

    HWND window_;
};

// What the worker makes the progress dialog show, an entry a line, written down before it gets there.
std::string shown;
HWND progressDialog = nullptr;
bool escapeAtStart = false;  // the user closes the dialog as the first group begins

std::string DescribeProgress(const CWPSTRUCT& sent) {
    const int id = GetDlgCtrlID(sent.hwnd);
    if (id == IDC_PROGRESS_GROUP && sent.message == WM_SETTEXT) {
        return "group " + Sjis(reinterpret_cast<const wchar_t*>(sent.lParam)) + "\n";
    }
    if (id != IDC_PROGRESS_BAR) return "";
    if (sent.message == PBM_SETRANGE) {
        return "range " + std::to_string(LOWORD(sent.lParam)) + ".." + std::to_string(HIWORD(sent.lParam)) +
               "\n";
    }
    if (sent.message == PBM_SETPOS) return "position " + std::to_string(sent.wParam) + "\n";
    return sent.message == PBM_DELTAPOS ? "step " + std::to_string(sent.wParam) + "\n" : "";
}

LRESULT CALLBACK WatchProgress(int code, WPARAM wParam, LPARAM lParam) {
    const auto& sent = *reinterpret_cast<const CWPSTRUCT*>(lParam);
    const std::string what = DescribeProgress(sent);
    if (!what.empty()) {
        shown += what;
        progressDialog = GetParent(sent.hwnd);
    }
    if (escapeAtStart && sent.message == PBM_SETRANGE) {
        escapeAtStart = false;
        SendMessageW(progressDialog, WM_COMMAND, IDCANCEL, 0);
        EXPECT_FALSE(IsWindowVisible(progressDialog));
        EXPECT_TRUE(IsWindowEnabled(GetWindow(progressDialog, GW_OWNER)));
    }
    return CallNextHookEx(nullptr, code, wParam, lParam);
}

struct RunFiles {
    TempFolder folder;
    HiddenList list{{L"fj.test"}};
    Settings settings;

    explicit RunFiles(unsigned short port) {
        InitSettings(settings);
        CopyCut(settings.Server, kServerSize, L"127.0.0.1");
        CopyCut(settings.DataPath, kDataPathSize, folder.Path().c_str());
        settings.Port = port;
        settings.Limit = 3;
        folder.Write(L"fj.test.idx", HeaderBytes({4, 0, 0, L""}));
    }
};

constexpr char kLogin[] =
    "S: 200 ready\n"
    "C: authinfo user taro\n"
    "S: 381 more\n"
    "C: authinfo pass secret\n"
    "S: 281 ok\n"
    "C: GROUP fj.test\n";

std::string ArticleScript(int number) {
    const std::string n = std::to_string(number);
    return "C: HEAD " + n + "\nS: 221\nS: Subject: s\nS: .\nC: BODY " + n + "\nS: 222\nS: text\nS: .\n";
}

struct JobCase {
    const char* sentence;
    std::string script;  // after the login
    const wchar_t* text;
    uint32_t severity;
    const char* shown;
    bool escape = false;
    bool noDialog = false;
    bool stored = false;  // the password
};

const std::string kTwo = "S: 211 9 5 6 fj.test\n" + ArticleScript(5) + ArticleScript(6);
const std::string kMany = "S: 211 9 3 10 fj.test\n" + ArticleScript(5) + ArticleScript(6) + ArticleScript(7);
constexpr wchar_t kFetched[] = L"2件の記事を取得しました。";
constexpr wchar_t kLimited[] = L"制限数の3件の記事を取得しました。サーバには未取得の記事が残っています。";

const JobCase kJobs[] = {
    {"the bar ends one short of the range", kTwo, kFetched, 0,
     "group fj.test\nrange 0..1\nposition 0\nstep 1\nstep 1\n"},
    {"the bar ends at the limit, and a stored password goes before a typed one", kMany, kLimited, 0,
     "group fj.test\nrange 0..3\nposition 0\nstep 1\nstep 1\nstep 1\n", false, false, true},
    {"an error ends the dialog too", "! hang up\n", L"受信に失敗しました(38).", 2, ""},
    {"the run and what shows it go on behind Esc", kTwo, kFetched, 0,
     "group fj.test\nrange 0..1\nposition 0\nstep 1\nstep 1\n", true},
    {"the run does without a dialog that cannot be made", kTwo, kFetched, 0, "", false, true},
};

// Put away, the dialog comes back as the run left it.
void ExpectSeenAgain(DownloadJob& job, bool begun) {
    const HWND owner = job.mainWindow, dialog = job.progress.dialog.Get();
    EXPECT_TRUE(IsWindowEnabled(owner));
    EXPECT_FALSE(IsWindowVisible(dialog));
    ShowProgress(job.progress);
    EXPECT_EQ(IsWindowVisible(dialog), dialog != nullptr);
    if (dialog && begun) {
        EXPECT_EQ(TextOf(GetDlgItem(dialog, IDC_PROGRESS_GROUP)), L"fj.test");
        const LRESULT end = Ask(dialog, IDC_PROGRESS_BAR, PBM_GETRANGE, FALSE);
        EXPECT_EQ(Ask(dialog, IDC_PROGRESS_BAR, PBM_GETPOS), end);
        EXPECT_GT(end, 0);
    }
    EndProgress(job.progress);
    EXPECT_FALSE(IsWindow(dialog));
    EXPECT_TRUE(IsWindowEnabled(owner));
}

TEST(DownloadJob, RunsOnItsThreadWhileTheDialogStands) {
    const HHOOK hook = SetWindowsHookExW(WH_CALLWNDPROC, WatchProgress, nullptr, GetCurrentThreadId());
    for (const JobCase& row : kJobs) {
        SCOPED_TRACE(row.sentence);
        const MainWindow frame;
        shown.clear();
        progressDialog = nullptr;
        escapeAtStart = row.escape;
        ScriptedServer server(Script(kLogin + row.script + "C: QUIT\n"));
        RunFiles files(server.Start());
        files.settings.UserID = CopyText("taro");
        if (row.stored) files.settings.Password = CopyText("secret");
        std::unique_ptr<DownloadJob> job = MakeDownloadJob(
            files.settings, files.list.Window(), frame.Window(), CopyText(row.stored ? "typed" : "secret"));
        ASSERT_TRUE(job);
        files.settings = Settings();  // what the user changes now is not this run's
        const wchar_t* module = row.noDialog ? L"ws2_32.dll" : nullptr;
        MakeProgressDialog(job->progress, GetModuleHandleW(module), frame.Window());
        ASSERT_TRUE(StartDownloadWorker(*job));
        ShowProgress(job->progress);
        EXPECT_EQ(IsWindowEnabled(frame.Window()), row.noDialog);
        frame.AwaitFinish();
        EXPECT_EQ(frame.finished, job.get());
        ExpectSeenAgain(*job, *row.shown != '\0');
        EXPECT_EQ(job->result->text, std::wstring(row.text));
        EXPECT_EQ(job->result->severity, row.severity);
        EXPECT_EQ(shown, row.shown);
        EXPECT_THAT(server.Finish(), IsEmpty());
        if (!frame.finished) (void)job.release();  // a worker that hangs may still use it
    }
    UnhookWindowsHookEx(hook);
}

TEST(PasswordPrompt, AsksForThePassword) {
    const struct {
        const char* sentence;
        const char* user;
        const wchar_t* shownUser;
        std::wstring typed;
        std::string password;
    } rows[] = {
        {"Japanese comes and goes as Shift_JIS", "\x8e\x52\x93\x63", L"山田", L"テスト",
         "\x83\x65\x83\x58\x83\x67"},
        {"a password is cut to the field's size", "taro", L"taro", std::wstring(400, L'p'),
         std::string(259, 'p')},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sentence);
        Secret password;
        const UiThread thread(
            [&] { return RunPasswordPrompt(GetModuleHandleW(nullptr), nullptr, row.user, password); });
        const HWND dialog = thread.Window(L"ﾊﾟｽﾜｰﾄﾞの入力"), edit = GetDlgItem(dialog, IDC_PASSWORD_EDIT);
        EXPECT_EQ(TextOf(GetDlgItem(dialog, IDC_PASSWORD_USER)), row.shownUser);
        EXPECT_TRUE(Await([&] { return thread.Focus() == edit; })) << "the password has the focus";
        EXPECT_TRUE(GetWindowLongW(edit, GWL_STYLE) & ES_PASSWORD);
        Type(dialog, IDC_PASSWORD_EDIT, row.typed);
        PostMessageW(dialog, WM_COMMAND, IDOK, 0);
        ASSERT_EQ(thread.Result(), IDOK);
        EXPECT_EQ(password.get(), row.password);
    }
}

}  // namespace
