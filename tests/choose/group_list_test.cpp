// The server's list of groups, fetched by the real dialog and its worker.
#include "subscribe/group_list.h"

#include <gmock/gmock.h>

#include <utility>

#include "files/data_file.h"
#include "resources/resource.h"
#include "subscribe/group_list_dialog.h"
#include "tests/choose/dialog_user.h"
#include "tests/choose/live_jobs.h"
#include "tests/support/file_faults.h"
#include "tests/support/scripted_server.h"
#include "tests/support/secret_watch.h"
#include "tests/support/temp_folder.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// What stood in both files before the download.
const std::string kOld = "old";

// The counter's texts, in order. It must not end up short.
std::vector<std::string> shown;

LRESULT CALLBACK WatchCounter(int code, WPARAM wParam, LPARAM lParam) {
    const auto& sent = *reinterpret_cast<const CWPSTRUCT*>(lParam);
    if (sent.message == WM_SETTEXT && GetDlgCtrlID(sent.hwnd) == IDC_GROUP_LIST_COUNT)
        shown.push_back(Utf8(reinterpret_cast<const wchar_t*>(sent.lParam)));
    return CallNextHookEx(nullptr, code, wParam, lParam);
}

class GroupListTest : public testing::Test {
  protected:
    void SetUp() override {
        hook_ = SetWindowsHookExW(WH_CALLWNDPROC, WatchCounter, nullptr, GetCurrentThreadId());
        Renew();
    }
    void TearDown() override { UnhookWindowsHookEx(hook_); }

    void Renew() {
        folder_.Write(L"active.dat", kOld);
        folder_.Write(L"category.dat", kOld);
        shown.clear();
    }

    GroupListRequest Request(unsigned short port, const char* user = nullptr,
                             const char* password = nullptr) {
        return {active_.c_str(), category_.c_str(), L"127.0.0.1", port, user, password};
    }

    // Lets the dialog run by itself; answers its boxes.
    std::vector<std::string> Run(const GroupListRequest& request, std::vector<UserStep> steps = {}) {
        DialogUser user(std::move(steps));
        EXPECT_EQ(RunGroupListDownload(GetModuleHandleW(nullptr), nullptr, request), 0);
        return user.boxes;
    }

    void ExpectFiles(const std::string& active, const std::string& category) {
        EXPECT_EQ(folder_.Read(L"active.dat"), active);
        EXPECT_EQ(folder_.Read(L"category.dat"), category);
    }

    static void AwaitNoJobs() {
        const DWORD start = GetTickCount();
        while (liveJobs != 0 && GetTickCount() - start < 10000)
            Sleep(1);
        EXPECT_EQ(liveJobs, 0);
    }

    TempFolder folder_;
    const std::wstring active_ = folder_.FilePath(L"active.dat");
    const std::wstring category_ = folder_.FilePath(L"category.dat");

  private:
    HHOOK hook_ = nullptr;
};

const std::string kHello = "S: 200 hi\n";
const std::string kAsked = kHello + "C: LIST active\n";
const std::string kList = kAsked + "S: 215 list\n";
const std::string kUser = kHello + "C: authinfo user taro\nC:\n";
const std::string kPass = kUser + "S: 381 more\nC: authinfo pass hi mitsu\nC:\n";
const std::string kListed = "C: LIST active\nS: 215 list\nS: fj.test 9 1 y\nS: .\n";
constexpr char kTest[] = "fj.test\r\n";

struct ListCase {
    const char* sentence;
    std::string script;
    std::string text;  // of the one box; empty for none
    std::string active, category;
    const char* user = nullptr;
    const char* password = nullptr;
};

const std::string u4090(4090, 'u');

const ListCase kLists[] = {
    // Greeting.
    {"no greeting", "! hang up\n", "Recv fail: Can't connect to server", kOld, kOld},
    {"a refusal is shown with its line end", "S: 502 \x93\xFA\x96\x7B\n", "Connection refused : 502 日本\r\n",
     kOld, kOld},
    // Login.
    {"an empty line follows each login command", kPass + "S: 281 ok\n" + kListed, "", kTest, "fj\r\n", "taro",
     "hi mitsu"},
    {"a wrong password ends with the server's line", kPass + "S: 482 no\n", "482 no\r\n", kOld, kOld, "taro",
     "hi mitsu"},
    {"a user who needs no password is refused all the same", kUser + "S: 281 ok\n", "281 ok\r\n", kOld, kOld,
     "taro", "hi mitsu"},
    {"the server goes after the user", kUser + "! hang up\n", "Can't redv data", kOld, kOld, "taro",
     "hi mitsu"},
    {"a user that no command can hold", kHello, "Can't send data", kOld, kOld, u4090.c_str(), "p"},
    {"an empty user and password are given ones",
     kHello + "C: authinfo user \nC:\nS: 381 more\nC: authinfo pass \nC:\nS: 281 ok\n" + kListed, "", kTest,
     "fj\r\n", "", ""},
    {"a user without a password logs in nowhere", kHello + kListed, "", kTest, "fj\r\n", "taro", nullptr},
    // The command.
    {"a server that knows only the short command", kAsked + "S: 500 what\nC: LIST\nS: 215 ok\nS: a.b\nS: .\n",
     "", "a.b\r\n", "a\r\n"},
    {"a server that knows neither", kAsked + "S: 500 what\nC: LIST\nS: 502 \x93\xFA\n",
     "サーバが予期せぬ応答をしました。:502 日\r\n", "", ""},
    {"the server goes instead of answering", kAsked + "! hang up\n", "受信に失敗", "", ""},
    // The list.
    {"an empty list", kList + "S: .\n", "", "", ""},
    {"names without a blank and without a dot", kList + "S: alt.a.b\nS: junk\nS: to 1 1 y\nS: .\n", "",
     "alt.a.b\r\njunk\r\nto\r\n", "alt\r\njunk\r\nto\r\n"},
    {"categories stand once, in the order of their first group",
     kList + "S: z.1 1\nS: a.1 1\nS: z.2 1\nS: a 1\nS: z.1 1\nS: .\n", "",
     "z.1\r\na.1\r\nz.2\r\na\r\nz.1\r\n", "z\r\na\r\n"},
    {"an empty line and one of a blank are groups without a name", kList + "S:\nS:  1 2 y\nS: .\n", "",
     "\r\n\r\n", "\r\n"},
    {"any line with a dot in front ends the list", kList + "S: a.b\nS: .hidden\n", "", "a.b\r\n", "a\r\n"},
    {"the end amid a line", kList + "S: a.b\nS- c.d\n! hang up\n", "正常に受信できませんでした(38)",
     "a.b\r\n", "a\r\n"},
};

TEST_F(GroupListTest, EveryConversation) {
    const SecretWatch watch("hi mitsu");
    for (const ListCase& row : kLists) {
        SCOPED_TRACE(row.sentence);
        Renew();
        ScriptedServer server(Script(row.script));
        const auto boxes = Run(Request(server.Start(), row.user, row.password));
        const std::string expected = "!|PELNOR|" + row.text;
        EXPECT_EQ(boxes, row.text.empty() ? std::vector<std::string>() : std::vector<std::string>{expected});
        ExpectFiles(row.active, row.category);
        AwaitNoJobs();
        EXPECT_THAT(server.Finish(), IsEmpty());
    }
    Renew();
    ScriptedServer gone(Script(kHello));
    const unsigned short port = gone.Start();
    (void)gone.Finish();
    EXPECT_THAT(Run(Request(port)), ElementsAre("!|PELNOR|Can't connect to server"));
    ExpectFiles(kOld, kOld);
    AwaitNoJobs();
    EXPECT_EQ(watch.found, 0) << "a password was left in memory";
}

// A list of so many groups, with a category each or one for all.
std::string LongList(int count, bool ownCategories) {
    std::string list;
    for (int i = 0; i < count; ++i)
        list +=
            "S: " + (ownCategories ? std::to_string(i) + ".category" : "fj.group" + std::to_string(i)) + "\n";
    return list + "S: .\n";
}

TEST_F(GroupListTest, AListThatHasNoRoomIsTold) {
    ScriptedServer full(Script(kList + LongList(3000, false)));
    {
        const FileCalls calls(FileCall::kWrite, ERROR_DISK_FULL);
        EXPECT_THAT(Run(Request(full.Start())), ElementsAre("!|PELNOR|ファイル書き込みに失敗(112)"));
    }
    (void)full.Finish();  // it may not have got rid of the whole list
    ScriptedServer server(Script(kList + LongList(40000, true)));
    EXPECT_THAT(Run(Request(server.Start())), ElementsAre("!|PELNOR|ハッシュテーブル書き込みに失敗(8)"));
    (void)server.Finish();
}

// The worker tells of such a file twice; how many boxes that makes depends on who is faster.
TEST_F(GroupListTest, AFileThatSomeoneHoldsIsTold) {
    const struct {
        const std::wstring& path;
        const char *text, *active;
    } rows[] = {{active_, "!|PELNOR|Can't open active file(32)", kOld.c_str()},
                {category_, "!|PELNOR|Can't open category file(32)", ""}};
    for (const auto& row : rows) {
        Renew();
        DataFile held;
        ASSERT_TRUE(OpenDataFile(held, row.path.c_str(), FileMode::kReadAlone));
        ScriptedServer server(Script(kHello));
        const auto boxes = Run(Request(server.Start()));
        EXPECT_THAT(boxes, testing::AnyOf(ElementsAre(row.text), ElementsAre(row.text, row.text)));
        CloseDataFile(held);
        EXPECT_THAT(server.Finish(), IsEmpty()) << "the connection is closed, nothing is asked";
        ExpectFiles(row.active, kOld);
        AwaitNoJobs();
    }
}

// Esc once `ready` says so.
UserStep Escape(std::function<bool()> ready) {
    return {IDC_GROUP_LIST_COUNT, [ready = std::move(ready)](HWND dialog) {
                return ready() && PostMessageW(dialog, WM_KEYDOWN, VK_ESCAPE, 0);
            }};
}

TEST_F(GroupListTest, TheCounterEndsRight) {
    for (const char* end : {"", "S: x\n! wait 200\n! reset\n"}) {
        shown.clear();
        const std::string list = LongList(5000, false);
        ScriptedServer fast(Script(kList + (*end ? list.substr(0, list.size() - 5) + end : list)));
        (void)Run(Request(fast.Start()));
        ASSERT_FALSE(shown.empty());
        EXPECT_EQ(shown.back(), *end ? "5001 group(s)." : "5000 group(s).");
        EXPECT_LT(shown.size(), 1000u) << "the worker waits for the screen at each group";
    }
}

// The server stops for a while amid the sixth group.
TEST_F(GroupListTest, AStalledListIsCountedAndLeftAtOnce) {
    const std::string five = "a.b\r\nc.d\r\ne.f\r\ng.h\r\ni.j\r\n";
    std::vector<Step> script = Script(kList);
    script.back() = Say("215 list\r\n" + five + "k.", {10 + five.size()});
    for (const Step& step : Script("! wait 300\nS: l\n! wait 300\nS: m.n\nS: o.p\n! hang up\n"))
        script.push_back(step);
    ScriptedServer server(script);
    const auto counted = [] { return testing::Matches(testing::Contains("5 group(s)."))(shown); };
    EXPECT_THAT(Run(Request(server.Start()), {Escape(counted)}), IsEmpty());
    for (const std::wstring& path : {active_, category_}) {
        DataFile file;
        EXPECT_TRUE(OpenDataFile(file, path.c_str(), FileMode::kReadWrite)) << "still held";
    }
    const std::string stored = folder_.Read(L"active.dat");
    EXPECT_THAT(stored, testing::StartsWith(five));
    AwaitNoJobs();
    EXPECT_EQ(folder_.Read(L"active.dat"), stored);
}

TEST_F(GroupListTest, ADialogClosedEarlyLeavesAllToTheNext) {
    int escapes = 0;
    for (int round = 0; round < 20; ++round) {
        SCOPED_TRACE(round);
        Renew();
        const std::string wait = "! wait " + std::to_string(round % 8 * 3) + "\n";
        ScriptedServer first(Script(kHello + wait + "C: LIST active\nS: 215 list\nS: a.b\n" + wait +
                                    "S: c.d\n" + wait + LongList(500, true)));
        const bool atOnce = round % 2 == 0;
        {
            DialogUser user({Escape([=, &escapes] { return (atOnce || !shown.empty()) && ++escapes; })});
            user.mayComeTooLate = true;
            EXPECT_EQ(RunGroupListDownload(GetModuleHandleW(nullptr), nullptr, Request(first.Start())), 0);
            EXPECT_THAT(user.boxes, IsEmpty());
        }
        ScriptedServer next(Script(kHello + kListed));
        EXPECT_THAT(Run(Request(next.Start())), IsEmpty());
        AwaitNoJobs();
        EXPECT_THAT(next.Finish(), IsEmpty());
        ExpectFiles(kTest, "fj\r\n");
    }
    EXPECT_GT(escapes, 0);
}

GroupListJob* released = nullptr;
void (*beforeReceive)(void*) = nullptr;  // the worker's own
int receivesLeft = 0;

void ReleaseBeforeReceive(void* job) {
    if (--receivesLeft == 0) ReleaseGroupListJob(released);
    beforeReceive(job);
}

// The dialog goes before the N-th receive.
TEST_F(GroupListTest, AWorkerThatNobodyWaitsForEndsAndWritesNothingMore) {
    for (int receives = 1; receives <= 5; ++receives) {
        SCOPED_TRACE(receives);
        Renew();
        const std::string script =
            kPass + "S: 281 ok\nC: LIST active\nS: 215 list\nS: a.b\n! wait 50\nS: c.d\nS: .\n";
        ScriptedServer server(Script(script));
        released = MakeGroupListJob(Request(server.Start(), "taro", "hi mitsu"), nullptr);
        ASSERT_TRUE(released);
        ++released->owners;
        beforeReceive = std::exchange(released->connection.beforeReceive, ReleaseBeforeReceive);
        receivesLeft = receives;
        FetchGroupList(*released);
        EXPECT_EQ(receivesLeft, 0) << "the worker goes on";
        ReleaseGroupListJob(released);
        const bool opened = receives >= 4, stored = receives == 5;
        ExpectFiles(stored ? "a.b\r\n" : opened ? "" : kOld, stored ? "a\r\n" : opened ? "" : kOld);
        (void)server.Finish();
    }
}

TEST_F(GroupListTest, WithoutMemoryForAJobTheDialogClosesAtOnce) {
    noJobs = true;
    EXPECT_THAT(Run(Request(1)), ElementsAre("!|PELNOR|メモリが足りません"));
    noJobs = false;
    ExpectFiles(kOld, kOld);
}

}  // namespace
