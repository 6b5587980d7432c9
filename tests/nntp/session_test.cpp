// What a run says, stores and leaves as its outcome, reply by reply.
#include <gmock/gmock.h>

#include "tests/nntp/session_run.h"

#include "tests/hostile/receive_limit.h"
#include "tests/support/file_faults.h"

namespace {

using namespace std::string_literals;

const std::string kReady = "S: 200 ready\n";
const std::string kGroup = "C: GROUP fj.test\n";
constexpr wchar_t kName[] = L"fj.test";

std::string Enter(int first, int last) {
    const std::string range = std::to_string(first) + " " + std::to_string(last);
    return kReady + kGroup + "S: 211 9 " + range + " fj.test\n";
}
std::string Head(int n, const std::string& lines = "S: Subject: s\n") {
    return "C: HEAD " + std::to_string(n) + "\nS: 221 head\n" + lines + "S: .\n";
}
std::string Body(int n, const std::string& lines = "S: text\n") {
    return "C: BODY " + std::to_string(n) + "\nS: 222 body\n" + lines + "S: .\n";
}
std::string Article(int n) {
    return Head(n) + Body(n);
}
std::string NoHead(int n) {
    return "C: HEAD " + std::to_string(n) + "\nS: 423 none\n";
}
std::string NoBody(int n) {
    return Head(n) + "C: BODY " + std::to_string(n) + "\nS: 423 none\n";
}
std::string Stored(const std::string& head, int n, const std::string& body) {
    return head + "X-Local-Seq: " + std::to_string(n) + "\r\n\r\n" + body + "================\r\n";
}
std::string StoredArticle(int n) {
    return Stored("Subject: s\r\n", n, "text\r\n");
}

struct LoginCase {
    const char* sentence;
    const char* user;
    const char* password;
    std::string script;
    const wchar_t* title = L"";  // empty: the run succeeds
    const wchar_t* text = L"";
    DWORD error = 0;  // 0: of no interest
};

const std::string kUser = kReady + "C: authinfo user taro\n";
const std::string kPassword = kUser + "S: 381 more\nC: authinfo pass Secret 1\n";
const std::string kOverLong(4081, 'u');
const std::string kJustFits(4080, 'u');
constexpr wchar_t kHost[] = L"127.0.0.1";
constexpr wchar_t kWrongUser[] = L"ユーザ名が不正です";
constexpr wchar_t kWrongPassword[] = L"パスワードが不正です";
constexpr wchar_t kReceive38[] = L"受信に失敗しました(38).";
constexpr wchar_t kSend234[] = L"送信に失敗しました(234).";

const LoginCase kLogins[] = {
    {"posting may be forbidden", nullptr, nullptr, "S: 201 no posting\n"},
    {"the right login", "taro", "Secret 1", kPassword + "S: 281 ok\n"},
    {"a user without a password does not log in", "taro", nullptr, kReady},
    {"an empty password is one", "taro", "", kUser + "S: 381 more\nC: authinfo pass \nS: 281 ok\n"},
    {"the greeting refuses", nullptr, nullptr, "S: 502 go away\n", L"接続を拒否されました",
     L"502 go away\r\n"},
    {"a user accepted without a password counts as wrong", "taro", "p", kUser + "S: 281 hello\n", kWrongUser,
     L"281 hello\r\n"},
    {"a wrong user", "taro", "p", kUser + "S: 481 who?\n", kWrongUser, L"481 who?\r\n"},
    {"a wrong password", "taro", "Secret 1", kPassword + "S: 482 no\n", kWrongPassword, L"482 no\r\n"},
    {"more is asked after the password", "taro", "Secret 1", kPassword + "S: 381 again\n", kWrongPassword,
     L"381 again\r\n"},
    {"the server ends after the user", "taro", "p", kUser + "! hang up\n", L"PELNOR", kReceive38, 38},
    {"the server ends after the password", "taro", "Secret 1", kPassword + "! hang up\n", L"Socket Error",
     kReceive38, 38},
    {"the longest user", kJustFits.c_str(), "p", kReady + "C: authinfo user " + kJustFits + "\nS: 481 no\n",
     kWrongUser, L"481 no\r\n"},
    {"a user too long to send", kOverLong.c_str(), "p", kReady, L"PELNOR", kSend234, 234},
    {"a password too long to send", "taro", kOverLong.c_str(), kUser + "S: 381 more\n", L"Socket Error",
     kSend234, 234},
};

TEST(Session, GreetsAndLogsIn) {
    SessionRun run;
    for (const LoginCase& row : kLogins) {
        SCOPED_TRACE(row.sentence);
        run.user = row.user;
        run.password = row.password;
        run.Run(row.script);
        EXPECT_EQ(run.result.title, std::wstring(row.title));
        EXPECT_EQ(run.result.text, std::wstring(row.text));
        EXPECT_EQ(run.result.severity, *row.title ? kError : kInformation);
        if (row.error) {
            EXPECT_EQ(run.error, row.error);
        }
    }
}

TEST(Session, LooksForTheServer) {
    SessionRun run;
    ScriptedServer server(Script("S: 200 ready\nC: QUIT\n"));
    run.RunAt(L"localhost", server.Start());
    EXPECT_TRUE(run.done) << "a name is looked up";
    EXPECT_THAT(server.Finish(), testing::IsEmpty());
    Socket listener = ListenLocal(0);
    const unsigned short port = LocalPort(listener);
    listener.Close();
    const std::wstring unknown = std::wstring(64, L'x') + L".invalid";
    for (const std::wstring& host : {std::wstring(kHost), unknown}) {
        run.RunAt(host.c_str(), port);
        EXPECT_EQ(run.result.title, host);
        EXPECT_EQ(run.result.text, L"サーバに接続できませんでした"s);
        EXPECT_EQ(run.result.severity, kError);
        EXPECT_NE(run.error, 0u);
    }
}

struct GroupCase {
    const char* sentence;
    uint32_t lastFetched;
    uint32_t limit;
    std::string script;
    const wchar_t* text;
    // Of the header afterwards.
    uint32_t newLastFetched;
    uint32_t serverLast;
    uint32_t records;
    std::string log = "";  // empty: of no interest
};

const std::string kStart = Enter(5, 6);
constexpr wchar_t kFetched0[] = L"0件の記事を取得しました。";
constexpr wchar_t kFetched1[] = L"1件の記事を取得しました。";
constexpr wchar_t kFetched2[] = L"2件の記事を取得しました。";
constexpr wchar_t kNothingNew[] = L"新規記事はありませんでした";
constexpr wchar_t kLimit0[] = L"制限数の0件の記事を取得しました。サーバには未取得の記事が残っています。";
constexpr wchar_t kLimit1[] = L"制限数の1件の記事を取得しました。サーバには未取得の記事が残っています。";
constexpr wchar_t kLimit2[] = L"制限数の2件の記事を取得しました。サーバには未取得の記事が残っています。";

const GroupCase kGroups[] = {
    {"a new group starts at the server's first article", 0, 9, kStart + Article(5) + Article(6), kFetched2, 6,
     6, 2, StoredArticle(5) + StoredArticle(6)},
    {"only what is new is fetched", 5, 9, kStart + Article(6), kFetched1, 6, 6, 1, StoredArticle(6)},
    {"expired articles are passed over", 2, 9, kStart + Article(5) + Article(6), kFetched2, 6, 6, 2},
    {"nothing is new", 6, 9, kStart, kNothingNew, 6, 6, 0},
    {"a server that was set up anew counts lower", 900, 9, kStart, kNothingNew, 6, 6, 0},
    {"after catch-up only the position is recorded", 0xFFFFFFFF, 9, kStart, kNothingNew, 6, 6, 0},
    {"an empty group", 0, 9, Enter(0, 0), kNothingNew, 0, 0, 0},
    {"the limit leaves the rest for the next run", 0, 2, Enter(3, 7) + Article(3) + Article(4), kLimit2, 4, 7,
     2},
    {"a limit of 0 fetches nothing", 4, 0, kStart, kLimit0, 4, 6, 0},
    {"missing heads are passed over", 0, 9, Enter(5, 7) + NoHead(5) + Article(6) + NoHead(7), kFetched1, 7, 7,
     1, StoredArticle(6)},
    {"missing articles do not count for the limit", 0, 1, Enter(5, 8) + NoHead(5) + NoBody(6) + Article(7),
     kLimit1, 7, 8, 1},
    {"an article without a body gets no record", 0, 9, kStart + NoBody(5) + Article(6), kFetched1, 6, 6, 1},
    {"no article is there any more", 0, 9, kStart + NoHead(5) + NoHead(6), kFetched0, 6, 6, 0},
    {"the next reply is in step after a body broken by a 0 byte", 0, 9,
     kStart + Head(5) + Body(5, "S: a\nS: b\0.\nS: .c\nS: d\0\nS: ..\nS: e\n"s) + Article(6), kFetched2, 6, 6,
     2, Stored("Subject: s\r\n", 5, "a\r\n") + StoredArticle(6)},
};

TEST(Download, RecordsHowFarItGot) {
    for (const GroupCase& row : kGroups) {
        SCOPED_TRACE(row.sentence);
        SessionRun run;
        run.groups = {kName};
        run.limit = row.limit;
        run.PutIndex(kName, row.lastFetched, 3);
        run.Run(row.script);
        EXPECT_EQ(run.result.title, L""s);
        EXPECT_EQ(run.result.text, std::wstring(row.text));
        EXPECT_EQ(run.result.severity, kInformation);
        EXPECT_EQ(run.progress.stepCount, row.records);
        const std::string header = HeaderBytes({row.newLastFetched, row.serverLast, row.records, row.text});
        EXPECT_EQ(run.Index(kName).substr(0, 100), header);
        if (!row.log.empty()) {
            EXPECT_EQ(run.Log(kName), row.log);
        }
    }
}

struct AheadCase {
    const char* sentence;
    std::string script;
    std::string log = StoredArticle(5) + StoredArticle(6) + StoredArticle(7);
    uint32_t limit = 9;
};

// The first article's replies name it, so the commands for the rest leave ahead; not so before that.
std::string Named(int code, int n, const std::string& line) {
    return "S: " + std::to_string(code) + " " + std::to_string(n) + "\nS: " + line + "\nS: .\n";
}
const std::string kShown =
    "C: HEAD 5\n" + Named(221, 5, "Subject: s") + "C: BODY 5\n" + Named(222, 5, "text");
const std::string kFull = kReady + kGroup + "S: 211 3 5 7 fj.test\n";
const std::string kAllAsked = kFull + kShown + "C: HEAD 6\nC: BODY 6\nC: HEAD 7\nC: BODY 7\n";
const std::string kHead6 = Named(221, 6, "Subject: s");
const std::string kBody6 = Named(222, 6, "text");
const std::string kHead7 = Named(221, 7, "Subject: s");
const std::string kBody7 = Named(222, 7, "text");
const std::string kNamed67 =
    "C: HEAD 6\n" + kHead6 + "C: BODY 6\n" + kBody6 + "C: HEAD 7\n" + kHead7 + "C: BODY 7\n" + kBody7;
const std::string kAnew = "! next connection\n" + kFull;
const std::string kAnew67 = kAnew + Article(6) + Article(7);
const std::string kBroken6 = "Subject: s\r\nX-Local-Seq: 6\r\n\r\n";

// Every C line must come before the S lines behind it are said.
const AheadCase kAhead[] = {
    {"a full group's commands leave before the first reply", kAllAsked + kHead6 + kBody6 + kHead7 + kBody7},
    {"a body leaves before the head's lines come, the next head with it",
     Enter(5, 7) + kShown + "C: HEAD 6\nS: 221 6\nC: BODY 6\nC: HEAD 7\nS: Subject: s\nS: .\n" + kBody6 +
         kHead7 + "C: BODY 7\n" + kBody7},
    {"a number missing all the same", kAllAsked + "S: 423 none\nS: 423 none\n" + kHead7 + kBody7,
     StoredArticle(5) + StoredArticle(7)},
    {"a body for a head that was missing", kAllAsked + "S: 423 none\n" + kBody6 + kHead7 + kBody7,
     StoredArticle(5) + StoredArticle(7)},
    {"articles that are not there say nothing about the server",
     kReady + kGroup + "S: 211 9 3 6 fj.test\n" + NoHead(3) + NoHead(4) + kShown + "C: HEAD 6\n" + kHead6 +
         "C: BODY 6\n" + kBody6,
     StoredArticle(5) + StoredArticle(6)},
    {"a head of another number keeps to one by one", kFull + "C: HEAD 5\n" + Named(221, 50, "Subject: s") +
                                                         "C: BODY 5\n" + Named(222, 5, "text") + Article(6) +
                                                         Article(7)},
    {"a body without a number keeps to one by one",
     kFull + "C: HEAD 5\n" + Named(221, 5, "Subject: s") + Body(5) + kNamed67},
    // Doubt: each goes on behind the last stored article.
    {"a reply about another article", kAllAsked + kHead7 + kAnew67},
    {"a reply to a later command", kAllAsked + kBody6 + kAnew67},
    {"a number modulo 2^32", kAllAsked + Named(221, 6, "x").replace(7, 1, "4294967302") + kAnew67},
    {"no number", kAllAsked + "S: 221 head\n" + kAnew67},
    {"a command that is no command", kAllAsked + "S: 503 what?\n" + kAnew67},
    {"silence", kAllAsked + kAnew67},
    {"the end of the stream", kAllAsked + "! hang up\n" + kAnew67},
    {"an end inside a body", kAllAsked + kHead6 + "S: 222 6\nS: te\n! hang up\n" + kAnew67,
     StoredArticle(5) + kBroken6 + "te\r\n" + StoredArticle(6) + StoredArticle(7)},
    {"refusals that may belong to other commands",
     kAllAsked + "S: 423 none\nS: 423 none\n" + kBody7 + kAnew67},
    {"numbers that were refused before a stored article are not asked again",
     kReady + kGroup + "S: 211 4 5 8 fj.test\n" + kShown +
         "C: HEAD 6\nC: BODY 6\nC: HEAD 7\nC: BODY 7\nC: HEAD 8\nC: BODY 8\nS: 423 none\nS: 423 none\n" +
         kHead7 + kBody7 + "! hang up\n" + kAnew + Article(8),
     StoredArticle(5) + StoredArticle(7) + StoredArticle(8)},
    {"the limit counts what was stored",
     kFull + kShown + "C: HEAD 6\nC: BODY 6\n" + kHead6 + "S: 222 6\n! hang up\n" + kAnew + Article(6),
     StoredArticle(5) + kBroken6 + StoredArticle(6), 2},
};

TEST(Download, AsksAheadOfTheReplies) {
    const LimitSilence limit(1600);  // half of it is more than a busy machine holds an answer up
    for (const AheadCase& row : kAhead) {
        SCOPED_TRACE(row.sentence);
        SessionRun run;
        run.groups = {kName};
        run.limit = row.limit;
        run.PutIndex(kName, 2, 3);
        run.Run(row.script);
        EXPECT_EQ(run.result.severity, kInformation);
        EXPECT_EQ(run.Log(kName), row.log);
        EXPECT_GE(run.Index(kName)[4], 6) << "last fetched";
    }
}

struct FailureCase {
    const char* sentence;
    std::string script;
    const wchar_t* title;
    const wchar_t* text;
    uint32_t severity;
};

const std::string kDoubt = kAllAsked + "! hang up\n! next connection\n";

const FailureCase kFailures[] = {
    {"an unknown group", kReady + kGroup + "S: 411 no such group\n", kName,
     L"グループへ移動できませんでした : 411 no such group", 1},
    {"a group reply that cannot be read", kReady + kGroup + "S: 211 2 %s 6 fj.test\n", kName,
     L"予期せぬ文字列が返りました : 211 2 %s 6 fj.test", 1},
    {"the second greeting refuses", kDoubt + "S: 502 no more\n", L"接続を拒否されました", L"502 no more\r\n",
     2},
    {"the group is gone", kDoubt + kReady + kGroup + "S: 411 gone\n", kName,
     L"グループへ移動できませんでした : 411 gone", 1},
    {"the second connection breaks, too", kDoubt + kFull + "C: HEAD 6\n! hang up\n", kName, kReceive38, 2},
    {"the connection breaks at GROUP", kReady + kGroup + "! hang up\n", L"Socket ERROR", kReceive38, 2},
    {"the connection breaks inside a head", kStart + "C: HEAD 5\nS: 221\n! hang up\n", kName,
     L"受信が正常に終了しませんでした(38).", 2},
    {"the server ends in the second article", kStart + Article(5) + "C: HEAD 6\n! hang up\n", kName,
     kReceive38, 2},
};

// The next run must fetch the same articles again.
TEST(Download, LeavesTheHeaderAsItWasWhenItFails) {
    for (const FailureCase& row : kFailures) {
        SCOPED_TRACE(row.sentence);
        SessionRun run;
        run.groups = {kName};
        run.PutIndex(kName, 4, 3);
        run.Run(row.script);
        EXPECT_EQ(run.result.title, std::wstring(row.title));
        EXPECT_EQ(run.result.text, std::wstring(row.text));
        EXPECT_EQ(run.result.severity, row.severity);
        const std::wstring status = row.severity == kWarning ? row.text : L"";
        EXPECT_EQ(run.Index(kName).substr(0, 100), HeaderBytes({4, 3, 0, status}));
    }
}

struct ContentCase {
    const char* sentence;
    std::string head;  // as the server sends it
    std::string body;
    std::string storedHead;
    std::string storedBody;
};

const ContentCase kContents[] = {
    {"only six kinds of header lines are kept, in their order",
     "Path: p\r\nReferences: <r>\r\nMessage-ID: <m>\r\nLines: 1\r\nDate: d\r\nNewsgroups: n\r\nFrom: f\r\n"
     "Subject: s\r\nXref: x\r\n",
     "", "References: <r>\r\nMessage-ID: <m>\r\nDate: d\r\nNewsgroups: n\r\nFrom: f\r\nSubject: s\r\n", ""},
    {"names count only as they are spelled", "subject: s\r\nSUBJECT: s\r\nMessage-Id: <m>\r\nX-From: f\r\n",
     "", "", ""},
    {"a folded line is joined", "References: <a>\r\n <b>\r\n\t \t<c>\r\nFrom: f\r\n", "",
     "References: <a><b><c>\r\nFrom: f\r\n", ""},
    {"the continuation of a dropped line is dropped", "From: f\r\nPath: p\r\n\tq\r\nSubject: s\r\n", "",
     "From: f\r\nSubject: s\r\n", ""},
    {"a continuation before any line is dropped", " lost\r\nFrom: f\r\n", "", "From: f\r\n", ""},
    {"encoded words are decoded, on continuations too",
     "Subject: =?iso-2022-jp?B?GyRCJUYlOSVIGyhC?= a\r\n =?ISO-2022-JP?B?GyRCRnxLXBsoQg==?=\r\n", "",
     "Subject: \x83\x65\x83\x58\x83\x67 a\x93\xfa\x96\x7b\r\n", ""},
    {"a raw ISO-2022-JP header is converted", "Subject: \x1b$B%F%9%H\x1b(B\r\n", "",
     "Subject: \x83\x65\x83\x58\x83\x67\r\n", ""},
    {"a broken encoded word keeps the line's end", "Subject: a =?iso-2022-jp?B?GyRCJUYl\r\nFrom: f\r\n", "",
     "Subject: a \x83\x65%\r\nFrom: f\r\n", ""},
    {"a body is converted, not decoded", "", "\x1b$BF|K\\\x1b(B =?iso-2022-jp?B?GyRCJUYlOSVIGyhC?=\r\n", "",
     "\x93\xfa\x96\x7b =?iso-2022-jp?B?GyRCJUYlOSVIGyhC?=\r\n"},
    {"an escape that is not closed ends with its line", "", "\x1b$BF|K\\\r\nF|K\\\r\n", "",
     "\x93\xfa\x96\x7b\r\nF|K\\\r\n"},
    {"dots are unstuffed", "", "..\r\n..x\r\n.x\r\n...\r\n. \r\na.\r\n", "",
     ".\r\n.x\r\nx\r\n..\r\n \r\na.\r\n"},
    {"a lone LF and a CR inside a line stay", "", "a\n.\nb\r\nc\rd\ne\r\n", "", "a\n.\nb\r\nc\rd\ne\r\n"},
    {"a head ends at a dot, and the rest of its reply answers nothing",
     "From: f\r\n..x: y\r\n222 5\r\nSubject: forged\r\n", "", "From: f\r\n", ""},
    {"nor does what follows a dot that only a lone LF put there", "From: a\rb\n.\r\n222 5\r\nforged\r\n",
     "c\rd\n.\r\n211 1 900000 900000\r\n", "From: a b\r\n", "c\rd\n"},
    {"the only CR of a header line becomes a blank: the line still ends", "Subject: a\rb\nFrom: f\r\n", "",
     "Subject: a b\r\nFrom: f\r\n", ""},
    {"the only CR of a body line becomes a kana: the line still ends", "", "\x1b(Ia\rb\nc\r\n", "",
     "\xe1\x8d\xe2\r\nc\r\n"},
};

TEST(Download, StoresWhatTheServerSends) {
    for (const ContentCase& row : kContents) {
        SCOPED_TRACE(row.sentence);
        SessionRun run;
        run.groups = {kName};
        run.PutIndex(kName, 0);
        std::vector<Step> steps = Script(Enter(5, 5) + "C: HEAD 5\n");
        steps.push_back(Say("221\r\n" + row.head + ".\r\n"));
        steps.push_back(Hear("BODY 5\r\n"));
        steps.push_back(Say("222\r\n" + row.body + ".\r\n"));
        steps.push_back(Hear("QUIT\r\n"));
        ScriptedServer server(std::move(steps));
        run.Run(server);
        EXPECT_EQ(run.result.text, std::wstring(kFetched1));
        EXPECT_EQ(run.Log(kName), Stored(row.storedHead, 5, row.storedBody));
    }
}

struct WalkCase {
    const char* sentence;
    std::vector<std::wstring> groups;
    std::string script;
    const wchar_t* title;
    const wchar_t* text;
    uint32_t severity;
};

const std::string kOneRefused = kReady + "C: GROUP fj.one\nS: 411 none\n";
const std::string kTwoIsOld = "C: GROUP fj.two\nS: 211 1 4 4 fj.two\n";

const WalkCase kWalks[] = {
    {"the rows' order counts",
     {L"fj.two", L"fj.one"},
     kReady + kTwoIsOld + "C: GROUP fj.one\nS: 411 none\n",
     L"fj.one",
     L"グループへ移動できませんでした : 411 none",
     1},
    {"a refused group does not keep the next from its turn",
     {L"fj.one", L"fj.two"},
     kOneRefused + kTwoIsOld,
     L"",
     L"新規記事はありませんでした",
     0},
    {"an error stops before the next group",
     {L"fj.two", L"fj.one"},
     kReady + "C: GROUP fj.two\n! hang up\n",
     L"Socket ERROR",
     kReceive38,
     2},
    {"a row without a name ends the walk",
     {L"fj.one", L"", L"fj.two"},
     kOneRefused,
     L"fj.one",
     L"グループへ移動できませんでした : 411 none",
     1},
    {"a group without an index is not asked for",
     {L"fj.none", L"fj.two"},
     kReady,
     L"fj.none",
     L"インデックスの初期化に失敗しました(2)",
     2},
    {"an index of another version",
     {L"fj.old"},
     kReady,
     L"fj.old",
     L"インデックスの初期化に失敗しました(13)",
     2},
    {"a name that can be no file",
     {L"fj/two"},
     kReady,
     L"fj/two",
     L"インデックスの初期化に失敗しました(87)",
     2},
};

TEST(Session, WalksTheGroups) {
    for (const WalkCase& row : kWalks) {
        SCOPED_TRACE(row.sentence);
        SessionRun run;
        run.groups = row.groups;
        for (const wchar_t* group : {L"fj.one", L"fj.two"})
            run.PutIndex(group, 4);
        run.folder.Write(L"fj.old.idx", std::string(100, '\4'));
        run.Run(row.script);
        EXPECT_EQ(run.result.title, std::wstring(row.title));
        EXPECT_EQ(run.result.text, std::wstring(row.text));
        EXPECT_EQ(run.result.severity, row.severity);
    }
}

TEST(Download, TellsWhichFileFailed) {
    const struct {
        FileCall call;
        int at;
        const wchar_t* text;
    } rows[] = {
        {FileCall::kOpen, 1, L"インデックスの初期化に失敗しました(112)"},
        {FileCall::kOpen, 2, L"ファイルが開けませんでした(112)"},  // the keyword filter
        {FileCall::kOpen, 3, L"インデックスファイルのオープンに失敗しました(112)."},
        {FileCall::kOpen, 4, L"インデックスの書き込みに失敗しました(112)."},
        {FileCall::kWrite, 1, L"ログファイルへの出力に失敗しました(112)."},
        {FileCall::kWrite, 2, L"インデックスの書き込みに失敗しました(112)."},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.at);
        SessionRun run;
        run.groups = {kName};
        run.PutIndex(kName, 0);
        ScriptedServer server(Script(kStart + Article(5) + Article(6)));
        const FileCalls calls(row.call, ERROR_DISK_FULL, row.at);
        run.RunAt(L"127.0.0.1", server.Start());
        (void)server.Finish();  // the script goes on past the fault
        EXPECT_EQ(run.result.title, std::wstring(kName));
        EXPECT_EQ(run.result.text, std::wstring(row.text));
    }
}

}  // namespace
