// The list of groups from a server that means harm, fetched without its dialog.
#include <gmock/gmock.h>

#include <sstream>

#include "resources/resource.h"
#include "subscribe/group_list.h"
#include "tests/hostile/hostile_run.h"
#include "tests/hostile/receive_limit.h"
#include "text/messages.h"

namespace {

using namespace std::string_literals;

constexpr char kList[] = "LIST active";
constexpr wchar_t kNoStatus[] = L"受信に失敗";
constexpr wchar_t kNoGreeting[] = L"Recv fail: Can't connect to server";

std::wstring Unfinished(int error) {
    return L"正常に受信できませんでした(" + std::to_wstring(error) + L")";
}

struct ListRun {
    TempFolder folder;
    std::wstring text;  // empty: success
    std::set<std::wstring> outside = NamesOutside();

    void Run(const Conversation& conversation) {
        AnsweringServer server(conversation);
        const std::wstring active = folder.FilePath(L"active.dat");
        const std::wstring category = folder.FilePath(L"category.dat");
        GroupListRequest request = {active.c_str(), category.c_str(), kHost, server.Port()};
        GroupListJob* job = MakeGroupListJob(request, nullptr);
        const wchar_t* shared[] = {FormatText(LoadResString(IDS_NO_MEMORY), L""),
                                   LoadResString(IDS_NO_ANSWER)};
        FetchGroupList(*job);
        EXPECT_STREQ(shared[0], L"メモリが足りません") << "the worker wrote over a text of the other thread";
        EXPECT_STREQ(shared[1], L"サーバからの応答がありません");
        text = job->errorText ? job->errorText.get() : L"";
        ReleaseGroupListJob(job);
    }
    void Check(const std::wstring& expectedText, const std::string& active, const std::string& category) {
        EXPECT_EQ(text, expectedText);
        EXPECT_EQ(folder.Read(L"active.dat"), active);
        EXPECT_EQ(folder.Read(L"category.dat"), category);
        EXPECT_EQ(NamesOutside(), outside);
    }
};

TEST(HostileList, AZeroByteAnywhere) {
    for (const std::string& command : {""s, std::string(kList)}) {
        const std::string reply = HonestReply(command);
        const size_t listStart = reply.find("\r\n") + 2;
        for (size_t at = 0; at < reply.size(); ++at) {
            SCOPED_TRACE(command + " at " + std::to_string(at));
            ListRun run;
            run.Run(Except({{command, {reply.substr(0, at) + '\0' + reply.substr(at)}}}));
            const bool stored = !command.empty() && at >= reply.size() - 3;
            const std::wstring expected = command.empty()  ? kNoGreeting
                                          : at < listStart ? kNoStatus
                                                           : Unfinished(13);
            run.Check(expected, stored ? "fj.test\r\n" : "", stored ? "fj\r\n" : "");
        }
    }
}

TEST(HostileList, LinesAtTheLongest) {
    const std::string reply = HonestReply(kList);
    for (const size_t start : {size_t{0}, reply.find("\r\n") + 2}) {
        for (const size_t length : {1023, 1024, 1025}) {
            SCOPED_TRACE(std::to_string(start) + " " + std::to_string(length));
            const size_t end = reply.find("\r\n", start);
            const std::string padding(length - 2 - (end - start), ' ');
            ListRun run;
            run.Run(Except({{kList, {reply.substr(0, end) + padding + reply.substr(end)}}}));
            const bool fits = length <= 1024;
            run.Check(fits         ? L""
                      : start == 0 ? kNoStatus
                                   : Unfinished(234),
                      fits ? "fj.test\r\n" : "", fits ? "fj\r\n" : "");
        }
    }
}

// The names go into the list as they are, and make no file.
TEST(HostileList, NamesStayInTheList) {
    std::string list, active, category;
    std::istringstream names(
        "x\\..\\..\\evil\ndraft\\evil\ndraft/evil\nc:evil\n\\\\?\\c:\\evil\ncon\nnul\naux\n"
        "a\x01\n\x7F\n*\nfj.a.log:b\n\x95\x5C\x95\n#a\n" +
        std::string(1000, 'x') + "\n");
    for (std::string name; std::getline(names, name);) {
        list += name + " 1 1 y\r\n";
        active += name + "\r\n";
        category += name.substr(0, name.find('.')) + "\r\n";
    }
    ListRun run;
    run.Run(Except({{kList, {"215 list\r\n" + list + "..\\evil 1 1 y\r\n"}}}));
    run.Check(L"", active, category);
}

TEST(HostileList, ASilentServerIsGivenUp) {
    const LimitSilence limit(kShortLimit);
    const struct {
        const char* sentence;
        const char* command;
        const char* bytes;
        std::wstring text;
        const char *active, *category;
    } rows[] = {
        {"no greeting", "", "", kNoGreeting, "", ""},
        {"no answer to the command", kList, "", kNoStatus, "", ""},
        {"a list without its end", kList, "215 list\r\nfj.a 1 1 y\r\nfj", Unfinished(13), "fj.a\r\n",
         "fj\r\n"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sentence);
        ListRun run;
        const DWORD start = GetTickCount();
        run.Run(Except({{row.command, {row.bytes}}}));
        EXPECT_LT(GetTickCount() - start, static_cast<DWORD>(kShortLimit) * 8);
        run.Check(row.text, row.active, row.category);
    }
}

}  // namespace
