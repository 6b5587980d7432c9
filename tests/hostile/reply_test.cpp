// Replies that no honest server sends, each in the place of an honest one.
#include <gmock/gmock.h>

#include "store/index.h"
#include "tests/hostile/hostile_run.h"
#include "tests/hostile/receive_limit.h"
#include "text/convert.h"

namespace {

using namespace std::string_literals;
using Numbers = std::vector<uint32_t>;

const std::string kGroup = "GROUP fj.test";
constexpr DWORD kSlack = 8000;  // milliseconds that a busy machine may add

struct ReplyCase {
    const char* sentence;
    std::map<std::string, Answer> answers;
    std::wstring title, text;
    uint32_t severity;
    Numbers stored;
    uint32_t lastFetched;
};

Answer Range(const std::string& numbers) {
    return {"211 " + numbers + " fj.test\r\n"};
}
std::wstring Refused(const std::wstring& reply) {
    return L"グループへ移動できませんでした : " + reply;
}
const std::wstring kLimited = L"制限数の2件の記事を取得しました。サーバには未取得の記事が残っています。";
const std::string kFolds10000 = [] {
    std::string lines = "221 5\r\nSubject: s\r\n";
    for (int i = 0; i < 10000; ++i)
        lines += i % 2 ? "\tt\r\n" : " =?iso-2022-jp?B?\r\n";
    return lines + ".\r\n";
}();

const ReplyCase kReplies[] = {
    // The numbers of a group.
    {"the largest number there is",
     {{kGroup, Range("2 4294967294 4294967295")}},
     L"",
     Received(2),
     0,
     {4, 4294967294, 4294967295},
     4294967295},
    {"a number past 32 bits counts from 0 again",
     {{kGroup, Range("2 4294967295 4294967296")}},
     L"",
     kNothingNew,
     0,
     {4},
     0},
    {"a number of twenty digits",
     {{kGroup, Range("9 5 99999999999999999999")}},
     L"",
     kLimited,
     0,
     {4, 5, 6},
     6},
    {"the last before the first", {{kGroup, Range("2 9 5")}}, L"", kNothingNew, 0, {4}, 5},
    {"a count that fits nothing",
     {{kGroup, Range("99999999999999999999 5 6")}},
     L"",
     Received(2),
     0,
     {4, 5, 6},
     6},
    {"a negative number",
     {{kGroup, Range("2 -5 6")}},
     kName,
     L"予期せぬ文字列が返りました : 211 2 -5 6 fj.test",
     1,
     {4},
     4},
    {"no numbers at all", {{kGroup, {"211\r\n"}}}, L"", kNothingNew, 0, {4}, 0},
    // Replies that nobody asked for, and about something else.
    {"a second greeting",
     {{"", {"200 hi\r\n200 hi again\r\n"}}},
     kName,
     L"予期せぬ文字列が返りました : 200 hi again",
     1,
     {4},
     4},
    {"refusals before anything was asked",
     {{kGroup, {"211 2 5 6 x\r\n", "423 none\r\n", 5000}}},
     L"",
     Received(0),
     0,
     {4},
     6},
    {"an article before it was asked for",
     {{kGroup, {"211 2 5 6 x\r\n221 5\r\nSubject: s\r\n.\r\n222 5\r\ntext\r\n.\r\n"}}},
     L"",
     Received(2),
     0,
     {4, 5, 6},
     6},
    {"a flood behind QUIT", {{"QUIT", {"", "205 bye\r\n", 1000000}}}, L"", Received(2), 0, {4, 5, 6}, 6},
    {"a head and a body of another number",
     {{"HEAD 5", {"299 9 <x>\r\nSubject: s\r\n.\r\n"}}, {"BODY 5", {"200 4294967296\r\ntext\r\n.\r\n"}}},
     L"",
     Received(2),
     0,
     {4, 5, 6},
     6},
    {"a head that brings the store's own lines",
     {{"HEAD 5", {"221\r\nX-Local-Seq: 77\r\n================\r\nSubject: s\r\n\r\n.\r\n"}}},
     L"",
     Received(2),
     0,
     {4, 5, 6},
     6},
    {"a head of 10,000 folds", {{"HEAD 5", {kFolds10000}}}, L"", Received(2), 0, {4, 5, 6}, 6},
    {"a refusal as long as a line may be",
     {{kGroup, {"411 " + std::string(1018, 'x') + "\r\n"}}},
     kName,
     Refused(L"411 " + std::wstring(1000, L'x')).substr(0, 1021),
     1,
     {4},
     4},
};

TEST(HostileReplies, HarmNothing) {
    for (const ReplyCase& row : kReplies) {
        SCOPED_TRACE(row.sentence);
        HostileRun run;
        run.limit = 2;
        run.Run(Except(row.answers));
        EXPECT_EQ(run.result.title, row.title);
        EXPECT_EQ(run.result.text, row.text);
        EXPECT_EQ(run.result.severity, row.severity);
        run.CheckSound(row.stored);
        GroupStore store;
        ASSERT_TRUE(SetNames(store, run.folder.Path().c_str(), kName) && ReadHeader(store));
        EXPECT_EQ(store.header.lastFetched, row.lastFetched);
    }
}

// One reply of the run: a status line and, for an article, lines up to the dot.
struct Place {
    std::string command;
    size_t statusEnd;  // bytes of the status line
    size_t linesEnd;   // bytes before the dot line
};

// What must be told when the reply goes wrong at this byte with this error.
void ExpectFailure(const HostileRun& run, const Place& place, size_t at, int error) {
    const bool greeting = place.command.empty();
    const bool status = at < place.statusEnd;
    const bool group = place.command == kGroup;
    EXPECT_EQ(run.result.title, greeting ? kHost : group ? L"Socket ERROR"s : kName);
    EXPECT_EQ(run.result.text, greeting ? kNoAnswer : status ? NotReceived(error) : Incomplete(error));
    EXPECT_EQ(run.result.severity, kError);
    run.CheckSound({4});
}

std::vector<Place> Places() {
    std::vector<Place> places;
    for (const std::string& command : {""s, kGroup, "HEAD 6"s, "BODY 6"s}) {
        const std::string reply = HonestReply(command);
        const size_t statusEnd = reply.find("\r\n") + 2;
        places.push_back({command, statusEnd, statusEnd == reply.size() ? statusEnd : reply.size() - 3});
    }
    return places;
}

// A 0 byte ends a body for the store; the run goes on where the body's end can still be told.
TEST(HostileReplies, AZeroByteAnywhere) {
    const LimitSilence limit(2000);  // where the end can not be told
    for (const Place& place : Places()) {
        const std::string reply = HonestReply(place.command);
        for (size_t at = 0; at < reply.size(); ++at) {
            SCOPED_TRACE(place.command + " at " + std::to_string(at));
            HostileRun run;
            run.Run(Except({{place.command, {reply.substr(0, at) + '\0' + reply.substr(at)}}}));
            const bool inBody = place.command[0] == 'B' && at >= place.statusEnd;
            if (inBody && at < place.linesEnd - 1) {
                EXPECT_EQ(run.result.text, Received(2));
                run.CheckSound({4, 5, 6});
            } else {
                ExpectFailure(run, place, at, inBody ? 13 : 0);
            }
        }
    }
}

TEST(HostileReplies, LinesAtTheLongest) {
    for (const Place& place : Places()) {
        for (const bool status : {true, false}) {
            const std::string reply = HonestReply(place.command);
            const size_t start = status ? 0 : place.statusEnd;
            if (start == reply.size()) continue;
            const size_t end = reply.find("\r\n", start);
            for (const size_t length : {1023, 1024, 1025}) {
                SCOPED_TRACE(place.command + reply.substr(start, end - start) + std::to_string(length));
                const std::string padding = std::string(length - 2 - (end - start), ' ');
                HostileRun run;
                run.Run(Except({{place.command, {reply.substr(0, end) + padding + reply.substr(end)}}}));
                if (length > 1024) {
                    ExpectFailure(run, place, start, 234);
                } else {
                    EXPECT_EQ(run.result.text, Received(2));
                    run.CheckSound({4, 5, 6});
                }
            }
        }
    }
}

struct SilenceCase {
    const char* sentence;
    const char* command;
    std::string bytes;  // the last
    std::wstring title, text;
    const char* user = nullptr;
};

const SilenceCase kSilences[] = {
    {"no greeting", "", "", kHost, kNoAnswer},
    {"half a greeting", "", "200 ", kHost, kNoAnswer},
    {"no answer to the user", "authinfo user u", "", L"PELNOR", NotReceived(13), "u"},
    {"nor to the password", "authinfo pass p", "", L"Socket Error", NotReceived(13), "u"},
    {"nor to the group", "GROUP fj.test", "", L"Socket ERROR", NotReceived(13)},
    {"nor to HEAD", "HEAD 6", "", kName, NotReceived(13)},
    {"half a head", "HEAD 6", "221 6\r\nSubj", kName, Incomplete(13)},
    {"no answer to BODY", "BODY 6", "", kName, NotReceived(13)},
    {"a body without its end", "BODY 6", "222 6\r\ntext\r\n.\r", kName, Incomplete(13)},
};

// Where commands had left ahead, half a limit passes before.
TEST(SilentServer, IsGivenUp) {
    const LimitSilence limit(kShortLimit);
    for (const SilenceCase& row : kSilences) {
        SCOPED_TRACE(row.sentence);
        HostileRun run;
        run.user = row.user;
        run.password = row.user ? "p" : nullptr;
        const DWORD start = GetTickCount();
        run.Run(Except({{row.command, {row.bytes, "", 0, false, "", true}}}));
        const DWORD passed = GetTickCount() - start;
        EXPECT_GE(passed + 50, static_cast<DWORD>(kShortLimit));
        EXPECT_LT(passed, static_cast<DWORD>(kShortLimit) * 2 + kSlack);
        EXPECT_EQ(run.result.title, row.title);
        EXPECT_EQ(run.result.text, row.text);
        EXPECT_EQ(run.error, 13u);
        run.CheckSound({4});
    }
}

// Only silence counts, not slowness: 2400 milliseconds, but never more than 600 without a byte.
TEST(SilentServer, ASlowOneIsNot) {
    HostileRun run;
    std::vector<Step> steps = Script(
        "! wait 600\nS- 2\n! wait 600\nS: 00 hi\nC: GROUP fj.test\n"
        "! wait 600\nS- 211 0\n! wait 600\nS:  5 4 fj.test\nC: QUIT\n");
    ScriptedServer slow(std::move(steps));
    const LimitSilence limit(2000);
    run.SessionRun::Run(slow);
    EXPECT_EQ(run.result.text, kNothingNew);
    run.CheckSound({4});
}

// The whole run as two texts: what the server says and what it hears. A client is answered before it asks.
struct Talk {
    std::string said, heard;
};

// With so many bytes in front of the end of the first body.
Talk TalkWith(size_t padding) {
    Talk talk{"200 hi\r\n", ""};
    for (const char* command : {"GROUP fj.test", "HEAD 5", "BODY 5", "HEAD 6", "BODY 6", "QUIT"}) {
        std::string reply = *command == 'Q' ? "" : HonestReply(command);
        if (command == "BODY 5"s) {
            std::string lines;
            for (; padding > 800; padding -= 800)
                lines += std::string(798, 'x') + "\r\n";
            reply.insert(reply.find("text"), lines + std::string(padding, 'y'));
        }
        talk.said += reply;
        talk.heard += command + "\r\n"s;
    }
    return talk;
}

std::vector<Step> AllAtOnce(const Talk& talk, std::vector<size_t> pieces) {
    return {Say(talk.said, std::move(pieces)), Hear(talk.heard)};
}

void ExpectAll(const HostileRun& run, size_t padding) {
    EXPECT_EQ(run.result.text, Received(2));
    run.CheckSound({4, 5, 6});
    EXPECT_EQ(run.Log(kName).size(), StoredArticle(4, "old").size() + 2 * StoredArticle(5).size() + padding);
}

// A refill of the receive buffer falls on every byte of what lies between two articles.
TEST(Delivery, RepliesInOnePieceAcrossTheBuffersEnd) {
    const std::string between = "text\r\n.\r\n221 6\r\nSubject: s\r\n.\r\n222 6\r\n";
    const size_t before = TalkWith(0).said.find(between);
    ASSERT_NE(before, std::string::npos);
    for (const size_t buffer : {4096, 8192}) {
        for (size_t at = 0; at <= between.size(); ++at) {
            SCOPED_TRACE(std::to_string(buffer) + " at " + std::to_string(at));
            const size_t padding = buffer - before - at;
            HostileRun run;
            ScriptedServer server(AllAtOnce(TalkWith(padding), {}));
            run.SessionRun::Run(server);
            ExpectAll(run, padding);
        }
    }
}

TEST(Delivery, RepliesInPieces) {
    const size_t shortTalk = TalkWith(0).said.size();
    const struct {
        const char* sentence;
        size_t padding;
        std::vector<size_t> pieces;
    } rows[] = {
        {"a byte a packet", 0, std::vector<size_t>(shortTalk, 1)},
        {"two bytes a packet", 0, std::vector<size_t>(shortTalk / 2, 2)},
        {"one byte less than the buffer", 9000, {4095, 4095, 1}},
        {"the buffer's size", 9000, {4096, 4096, 1}},
        {"one byte more than the buffer", 9000, {4097, 4097, 1}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sentence);
        HostileRun run;
        ScriptedServer server(AllAtOnce(TalkWith(row.padding), row.pieces));
        run.SessionRun::Run(server);
        ExpectAll(run, row.padding);
    }
}

// The server has answered all that is still to come, up to the byte with which it ends.
TEST(Delivery, RepliesSentAheadEndAnywhere) {
    const Talk talk = TalkWith(0);
    for (size_t end = 0; end <= talk.said.size() && !HasFailure(); ++end) {
        SCOPED_TRACE("ended after " + std::to_string(end));
        HostileRun run;
        ScriptedServer server(AllAtOnce(talk, {}));
        server.HangUpAfter(end);
        run.SessionRun::Run(server);
        if (end == talk.said.size()) {
            ExpectAll(run, 0);
        } else {
            const std::wstring text = run.result.text;
            EXPECT_THAT(text, testing::AnyOf(kNoAnswer, kNotConnected, NotReceived(38), Incomplete(38)));
            if (end < 8) {
                EXPECT_EQ(text, kNoAnswer) << "the greeting's end";
            }
            run.CheckSound({4});
        }
        if (end == 0 || end % 3) continue;
        HostileRun whole;
        ScriptedServer cut(AllAtOnce(talk, {}));
        cut.CutAt(end);
        whole.SessionRun::Run(cut);
        ExpectAll(whole, 0);
    }
}

// Encoded words cut off after every byte, and every byte of them replaced.
TEST(BrokenWords, LeaveTheArticleWhole) {
    const std::string word = "=?iso-2022-jp?B?GyRCJUYlOSVIGyhC?=";
    std::vector<std::string> subjects;
    for (const char* end : {"", "?=", " x", "\xFF", "=?iso-2022-jp?B?", "\x1b$B", "\x1b", "\x95"}) {
        for (size_t at = 0; at <= word.size(); ++at) {
            subjects.push_back(word.substr(0, at) + end);
            if (at < word.size()) subjects.push_back(word.substr(0, at) + end + word.substr(at + 1));
        }
    }
    const uint32_t last = 4 + static_cast<uint32_t>(subjects.size());
    HostileRun run;
    run.limit = 9999;
    run.Run([&](const std::string& command) {
        if (command == kGroup) return Range("9 5 " + std::to_string(last));
        const bool head = command.rfind("HEAD ", 0) == 0;
        if (!head) return Answer{HonestReply(command)};
        const std::string& subject = subjects[std::stoul(command.substr(5)) - 5];
        return Answer{"221\r\nSubject: " + subject + "\r\nFrom: " + subject + "\r\n.\r\n"};
    });
    EXPECT_EQ(run.result.text, Received(static_cast<int>(subjects.size())));
    Numbers numbers;
    for (uint32_t number = 4; number <= last; ++number)
        numbers.push_back(number);
    run.CheckSound(numbers);
    run.CheckRebuild();
}

// A poster's word may hold the bytes of a line end, of the separator, or a 0 byte.
TEST(BrokenWords, BringNoLinesOfTheirOwn) {
    for (const char* word : {"DQoNCj09PT09PT09PT09PT09PT0NCg==", "DQpYLUxvY2FsLVNlcTogNzcNCg==", "Cg==",
                             "DQ==", "YQBi", "GyRCDQolRg=="}) {
        SCOPED_TRACE(word);
        HostileRun run;
        run.Run(Except({{"HEAD 5", {"221\r\nSubject: a =?iso-2022-jp?B?"s + word + "?= b\r\n.\r\n"}}}));
        EXPECT_EQ(run.result.text, Received(2));
        run.CheckSound({4, 5, 6});
        run.CheckRebuild();
    }
}

// Names as a server may list them. What is told ends with one of these errors.
struct NameCase {
    const char* sentence;
    std::string name;
    const wchar_t* error;  // empty: whatever the system says
};

const NameCase kNames[] = {
    {"the folder itself", ".", L"(87)"},
    {"the folder above", "..", L"(87)"},
    {"a file above", "..\\evil", L"(87)"},
    {"the same with slashes", "../../evil", L"(87)"},
    {"a folder below", "draft\\evil", L"(87)"},
    {"a folder below with a slash", "draft/evil", L"(87)"},
    {"the root", "\\evil", L"(87)"},
    {"a drive", "c:evil", L"(87)"},
    {"a drive's root", "c:\\evil", L"(87)"},
    {"a path without rules", "\\\\?\\c:\\evil", L"(87)"},
    {"a stream of a file", "fj.test.log:evil", L"(87)"},
    {"control bytes", "fj\x01test", L"(87)"},
    {"a tab", "fj\ttest", L"(87)"},
    {"the delete byte", "fj\x7Ftest", L"(87)"},
    {"wild cards", "*.log", L"(87)"},
    {"a name of 300 bytes", std::string(300, 'x'), L"(87)"},
    {"the console", "con", L"(87)"},
    {"the device that keeps nothing", "NUL.fj", L"(87)"},
    {"a line that waits for ever", "aux", L"(87)"},
    {"a port", "com1.fj", L"(87)"},
    {"what only begins like a device", "compact.disc", L""},
    {"half a character", "fj.\x95", L""},
};

TEST(GroupNames, StayInTheDataFolder) {
    for (const NameCase& row : kNames) {
        SCOPED_TRACE(row.sentence);
        HostileRun run;
        const WideText name = ToWide(row.name.c_str());
        run.groups = {name.get()};
        run.Run(Except({}));
        EXPECT_EQ(run.result.title, run.groups[0]);
        EXPECT_THAT(run.result.text, testing::StartsWith(L"インデックスの初期化に失敗しました("));
        EXPECT_THAT(run.result.text, testing::EndsWith(row.error));
        EXPECT_EQ(run.result.severity, kError);
        run.CheckSound({4});
    }
}

}  // namespace
