// Servers that never stop: how much memory that takes, that the window answers meanwhile, and what ends it.
#include <gmock/gmock.h>

#include "nntp/download_job.h"
#include "resources/resource.h"
#include "subscribe/group_list.h"
#include "tests/hostile/hostile_run.h"
#include "tests/support/ui_thread.h"

namespace {

using namespace std::string_literals;
using Numbers = std::vector<uint32_t>;

constexpr size_t kMegabyte = 1 << 20;
constexpr size_t kMostGrowth = 4 * kMegabyte;        // of the whole process, this test's server included
constexpr size_t kMostSteadyGrowth = kMegabyte / 4;  // while nothing but the flood goes on
constexpr size_t kEndless = 1 << 30;

const size_t kFloods = IsWholeRun() ? 8192 : 832;  // pieces of 64 KB
constexpr size_t kFewFloods = 128;                 // far more than what must be enough
const size_t kHeads = IsWholeRun() ? 1000000 : 8000;

// About 64 KB.
std::string Lines(const std::string& line) {
    std::string lines;
    while (lines.size() < 65536)
        lines += line;
    return lines;
}

struct FloodCase {
    const char* sentence;
    const char* command;
    std::string bytes, flood;
    std::wstring title, text;
    size_t floods = kFewFloods;
};

const std::string kHead = "221 6\r\n";
const std::string kBody = "222 6\r\n";

const FloodCase kFloodCases[] = {
    {"a greeting without a line end", "", "200 ", Lines("x"), kHost, kNoAnswer},
    {"a refusal without a line end", "GROUP fj.test", "411 ", Lines("x\n"), L"Socket ERROR",
     NotReceived(234)},
    {"a head of lines that nobody keeps", "HEAD 6", kHead, Lines("Path: a!b!c\r\n"), kName, Incomplete(38),
     kFloods},
    {"folds of such a line", "HEAD 6", kHead + "Path: a\r\n", Lines(" b\r\n"), kName, Incomplete(38)},
    {"a head of lines that are kept", "HEAD 6", kHead, Lines("References: <1@x>\r\n"), kName, Incomplete(8)},
    {"folds of a kept line", "HEAD 6", kHead + "Subject: a\r\n", Lines(" b\r\n"), kName, Incomplete(8)},
    {"a head of one line", "HEAD 6", kHead, Lines("Subject: "), kName, Incomplete(234)},
    {"a head of 0 bytes", "HEAD 6", kHead, std::string(65536, '\0'), kName, Incomplete(0)},
    {"a body of short lines", "BODY 6", kBody, Lines("text\r\n"), kName, Incomplete(38), kFloods},
    {"a body of escapes", "BODY 6", kBody, Lines("\x1b$B%F\x1b(B\r\n"), kName, Incomplete(38)},
    {"a body of one line", "BODY 6", kBody, Lines("\n"), kName, Incomplete(234)},
    {"a body of 0 bytes", "BODY 6", kBody, std::string(65536, '\0'), kName, Incomplete(38)},
    {"a body that a 0 byte broke", "BODY 6", kBody + '\0', Lines("text\r\n"), kName, Incomplete(38)},
};

// Whatever a process loads for its first session does not count as growth.
class Flood : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        HostileRun run;
        AnsweringServer server([](const std::string& command) -> Answer { return {HonestReply(command)}; });
        run.Run(server);
    }
};

TEST_F(Flood, TakesNoMemoryAndHarmsNothing) {
    for (const FloodCase& row : kFloodCases) {
        SCOPED_TRACE(row.sentence);
        HostileRun run;
        AnsweringServer server(Except({{row.command, {row.bytes, row.flood, row.floods, true}}}));
        run.Run(server);
        EXPECT_LT(server.Growth(), kMostGrowth) << "after " << server.Sent() << " bytes";
        EXPECT_EQ(run.result.title, row.title);
        EXPECT_EQ(run.result.text, row.text);
        run.CheckSound({4});
    }
}

TEST_F(Flood, ABodyThatEndsAtLastIsStored) {
    const std::string lines = Lines("12345678901234567890123456789012345678\r\n");
    HostileRun run;
    AnsweringServer server([&](const std::string& command) -> Answer {
        if (command == "GROUP fj.test") return {"211 1 5 5 fj.test\r\n"};
        if (command == "BODY 5") return {"222 5\r\n", lines, kFloods, false, ".\r\n"};
        return {HonestReply(command)};
    });
    run.Run(server);
    EXPECT_EQ(run.result.text, Received(1));
    EXPECT_LT(server.Growth(), kMostGrowth);
    const size_t size = run.Log(kName).size();
    EXPECT_EQ(size,
              StoredArticle(4, "old").size() + StoredArticle(5, "s", "").size() + kFloods * lines.size());
    run.CheckSound({4, 5});
}

std::string Categories() {
    std::string list;
    for (int i = 0; list.size() < 65536; ++i)
        list += "c" + std::to_string(i) + ".x 1 1 y\r\n";
    return list;
}

TEST_F(Flood, OfGroups) {
    const struct {
        const char* sentence;
        std::string bytes, flood;
        std::wstring text;
    } rows[] = {
        {"groups of one category", "215 list\r\n", Lines("fj.test 1 1 y\r\n"),
         L"正常に受信できませんでした(38)"},
        {"groups of some thousand categories", "215 list\r\n", Categories(),
         L"正常に受信できませんでした(38)"},
        {"a group without a line end", "215 list\r\n", Lines("x"), L"正常に受信できませんでした(234)"},
        {"a status without a line end", "215 ", Lines("x"), L"受信に失敗"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sentence);
        const TempFolder folder;
        const std::wstring active = folder.FilePath(L"active.dat");
        const std::wstring category = folder.FilePath(L"category.dat");
        AnsweringServer server(Except({{"LIST active", {row.bytes, row.flood, kFewFloods, true}}}));
        GroupListJob* job =
            MakeGroupListJob({active.c_str(), category.c_str(), kHost, server.Port()}, nullptr);
        FetchGroupList(*job);
        EXPECT_EQ(job->errorText ? job->errorText.get() : L"", row.text);
        ReleaseGroupListJob(job);
        EXPECT_LT(server.Growth(), kMostGrowth) << "after " << server.Sent() << " bytes";
    }
}

// A run with its dialog, on a thread of its own; the window below takes the run-finished message.
class WindowedRun {
  public:
    WindowedRun(const HostileRun& run, unsigned short port)
        : folder_(run.folder.Path()), port_(port), ui_([this] { return RunOnThread(); }) {}

    HWND Dialog() const { return ui_.Window(L"Articles"); }
    bool Ended() const { return ui_.Ended(); }
    // Waits for it.
    std::wstring Text() const { return ui_.Result() == 1 ? text_ : L"not ended"; }

  private:
    static inline std::atomic<bool> finished{false};

    static LRESULT CALLBACK TakeMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message == kRunFinishedMessage) finished = true;
        return message == kRunFinishedMessage ? 0 : DefWindowProcW(window, message, wParam, lParam);
    }

    static HWND MakeWindow() {
        WNDCLASSW windowClass = {};
        windowClass.lpfnWndProc = TakeMessage;
        windowClass.hInstance = GetModuleHandleW(nullptr);
        windowClass.lpszClassName = L"PelnorFloodTest";
        RegisterClassW(&windowClass);
        return CreateWindowExW(0, L"PelnorFloodTest", L"", WS_POPUP | WS_VISIBLE, 0, 0, 240, 240, nullptr,
                               nullptr, windowClass.hInstance, nullptr);
    }

    INT_PTR RunOnThread() {
        const HiddenList list({kName});
        const HWND window = MakeWindow();
        finished = false;
        Settings settings;
        InitSettings(settings);
        CopyCut(settings.Server, kServerSize, kHost);
        CopyCut(settings.DataPath, kDataPathSize, folder_.c_str());
        settings.Port = port_;
        settings.Limit = 0xFFFFFFFF;
        std::unique_ptr<DownloadJob> job = MakeDownloadJob(settings, list.Window(), window, nullptr);
        if (!job) return 0;
        MakeProgressDialog(job->progress, GetModuleHandleW(nullptr), window);
        if (!StartDownloadWorker(*job)) return 0;
        ShowProgress(job->progress);
        MSG message;
        while (!finished) {
            MsgWaitForMultipleObjects(0, nullptr, FALSE, 20, QS_ALLINPUT);
            while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
                if (!TakeProgressKey(job->progress, message)) DispatchMessageW(&message);
            }
        }
        text_ = job->result->text;
        DestroyWindow(window);
        return 1;
    }

    std::wstring folder_;
    unsigned short port_;
    std::wstring text_;
    UiThread ui_;
};

// The longest that the window took to answer, in milliseconds.
DWORD SlowestAnswer(HWND dialog) {
    DWORD slowest = 0;
    for (int i = 0; i < 50; ++i) {
        const DWORD start = GetTickCount();
        DWORD_PTR answer = 0;
        EXPECT_TRUE(SendMessageTimeoutW(dialog, WM_NULL, 0, 0, SMTO_ABORTIFHUNG, 2000, &answer));
        slowest = std::max(slowest, GetTickCount() - start);
        Sleep(2);
    }
    return slowest;
}

// Polls about as long as the server has patience.
bool AwaitLong(const std::function<bool()>& condition) {
    for (int i = 0; i < (IsWholeRun() ? 600 : 5); ++i) {
        if (Await(condition)) return true;
    }
    return false;
}

Conversation Endless(const std::string& flooded, const Answer& flood) {
    return [=](const std::string& command) -> Answer {
        if (command.rfind("GROUP", 0) == 0) return {"211 4294967295 1 4294967295 fj.test\r\n"};
        if (command.rfind(flooded, 0) == 0) return flood;
        return {HonestReply(command)};
    };
}

struct EndlessCase {
    const char* sentence;
    const char* command;
    Answer answer;
    std::wstring text;
};

const EndlessCase kEndlessCases[] = {
    {"four billion numbers, and no article", "HEAD", {"423 none\r\n"}, NotReceived(38)},
    {"a head without end", "HEAD", {kHead, Lines("Path: a\r\n"), kEndless}, Incomplete(38)},
    {"a body without end", "BODY", {kBody, Lines("text\r\n"), kEndless}, Incomplete(38)},
};

// Esc closes the dialog at once and leaves the run alone; what ends it is the server's end.
TEST_F(Flood, TheWindowAnswersAndCanBeClosed) {
    for (const EndlessCase& row : kEndlessCases) {
        SCOPED_TRACE(row.sentence);
        const HostileRun files;
        AnsweringServer server(Endless(row.command, row.answer));
        WindowedRun run(files, server.Port());
        const HWND dialog = run.Dialog();
        const auto progressed = [&](size_t commands) {
            const size_t goal = server.Commands() + commands, bytes = server.Sent() + 16 * kMegabyte;
            return AwaitLong([&] { return server.Commands() >= goal || server.Sent() >= bytes; });
        };
        EXPECT_TRUE(progressed(kHeads / 4));
        server.RestartGrowth();
        EXPECT_LT(SlowestAnswer(dialog), 500u);
        const DWORD start = GetTickCount();
        PostMessageW(dialog, WM_KEYDOWN, VK_ESCAPE, 0);
        EXPECT_TRUE(Await([=] { return !IsWindowVisible(dialog); }));
        EXPECT_LT(GetTickCount() - start, 1000u);
        EXPECT_TRUE(progressed(kHeads));
        EXPECT_FALSE(run.Ended());
        server.HangUp();
        EXPECT_EQ(run.Text(), row.text);
        EXPECT_LT(server.Growth(), kMostSteadyGrowth) << "after " << server.Commands() << " commands";
        files.CheckSound({4});
    }
}

}  // namespace
