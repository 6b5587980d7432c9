// A whole run, with the server's stream cut, and ended, after every byte.
#include <gmock/gmock.h>

#include <cstring>

#include "tests/nntp/session_run.h"

namespace {

using testing::IsEmpty;

struct Exchange {
    std::string command;
    std::string reply;
};

constexpr char kGreeting[] = "201 news\r\n";
const std::vector<std::wstring> kNames = {L"fj.a", L"fj.b"};

const std::vector<std::vector<Exchange>> kGroups = {
    {
        {"GROUP fj.a\r\n", "211 2 5 6 fj.a\r\n"},
        {"HEAD 5\r\n",
         "221 5 <5@x>\r\nFrom: =?iso-2022-jp?B?GyRCOzNFRBsoQg==?= <y@x>\r\n"
         "Path: x\r\n\tdropped\r\n"
         "Subject: =?ISO-2022-JP?B?GyRCJUYlOSVIGyhC?=\r\n\tfolded\r\n"
         "Date: Mon, 5 Mar 2001 10:00:00 +0900\r\n.\r\n"},
        {"BODY 5\r\n", "222 5\r\n\x1b$BF|K\\\x1b(B\r\n\r\n..x\r\n.\r\n"},
        {"HEAD 6\r\n", "221\r\nSubject: two\r\nFrom: z@x (Z)\r\n.\r\n"},
        {"BODY 6\r\n", "222\r\nb\r\n.\r\n"},
    },
    {
        {"GROUP fj.b\r\n", "211 2 1 2 fj.b\r\n"},
        {"HEAD 1\r\n", "221\r\nSubject: s\r\n.\r\n"},
        {"BODY 1\r\n", "222\r\n.\r\n"},
        {"HEAD 2\r\n", "221\r\n.\r\n"},
        {"BODY 2\r\n", "222\r\n\x1b$B%F\r\n.\r\n"},
    },
};

// What the logs hold of it, an article a string.
const std::vector<std::vector<std::string>> kArticles = {
    {"From: \x8e\x52\x93\x63 <y@x>\r\nSubject: \x83\x65\x83\x58\x83\x67"
     "folded\r\n"
     "Date: Mon, 5 Mar 2001 10:00:00 +0900\r\nX-Local-Seq: 5\r\n\r\n"
     "\x93\xfa\x96\x7b\r\n\r\n.x\r\n================\r\n",
     "Subject: two\r\nFrom: z@x (Z)\r\nX-Local-Seq: 6\r\n\r\nb\r\n================\r\n"},
    {"Subject: s\r\nX-Local-Seq: 1\r\n\r\n================\r\n",
     "X-Local-Seq: 2\r\n\r\n\x83\x65\r\n================\r\n"},
};

std::string ExpectedIndex(size_t group) {
    const auto first = static_cast<uint32_t>(kArticles[group][0].size());
    const auto second = static_cast<uint32_t>(kArticles[group][1].size());
    const std::wstring status = L"2件の記事を取得しました。";
    if (group == 0) {
        return HeaderBytes({6, 6, 2, status}) +
               RecordBytes({5, 0, first, L"テストfolded", "0305", L"山田", 27, 12}) +
               RecordBytes({6, first, second, L"two", "0000", L"Z", first + 9, 3});
    }
    return HeaderBytes({2, 2, 2, status}) + RecordBytes({1, 0, first, L"s", "0000", L"(Unknown)", 9, 1}) +
           RecordBytes({2, first, second, L"(none)", "0000", L"(Unknown)", first, 0});
}

// The run, in which groups that are already fetched are only entered.
std::vector<Step> StepsOfRun(size_t groupsFetched) {
    std::vector<Step> steps = {Say(kGreeting)};
    for (size_t group = 0; group < kGroups.size(); ++group) {
        const size_t exchanges = group < groupsFetched ? 1 : kGroups[group].size();
        for (size_t i = 0; i < exchanges; ++i) {
            steps.push_back(Hear(kGroups[group][i].command));
            steps.push_back(Say(kGroups[group][i].reply));
        }
    }
    steps.push_back(Hear("QUIT\r\n"));
    return steps;
}

void MakeFresh(SessionRun& run) {
    run.groups = kNames;
    for (const std::wstring& name : kNames) {
        run.PutIndex(name, 0);
        run.folder.Write(name + L".log", "");
    }
}

TEST(StreamFaults, TheSameIsStoredWhereverTheStreamIsCut) {
    SessionRun run;
    const std::vector<Step> steps = StepsOfRun(0);
    for (size_t cut = 0; cut <= SpokenBytes(steps) && !HasFailure(); ++cut) {
        SCOPED_TRACE("cut after " + std::to_string(cut));
        MakeFresh(run);
        ScriptedServer server(steps);
        if (cut > 0) server.CutAt(cut);
        run.Run(server);
        EXPECT_EQ(run.result.severity, kInformation);
        for (size_t group = 0; group < kNames.size(); ++group) {
            EXPECT_EQ(run.Log(kNames[group]), kArticles[group][0] + kArticles[group][1]);
            EXPECT_EQ(run.Index(kNames[group]), ExpectedIndex(group));
        }
    }
}

// What the run must tell when the stream ends after `position` bytes.
struct Outcome {
    std::wstring title;
    std::wstring text;
    size_t groupsFetched = 0;
};

Outcome OutcomeAt(size_t position) {
    size_t end = sizeof kGreeting - 1;
    if (position < end) return {L"127.0.0.1", L"サーバからの応答がありません", 0};
    for (size_t group = 0; group < kGroups.size(); ++group) {
        for (const Exchange& exchange : kGroups[group]) {
            const size_t start = end;
            end += exchange.reply.size();
            if (position >= end) continue;
            const size_t status = exchange.reply.find("\r\n") + 2;
            const bool entering = exchange.command.front() == 'G';
            if (position >= start + status)
                return {kNames[group], L"受信が正常に終了しませんでした(38).", group};
            return {entering ? L"Socket ERROR" : kNames[group], L"受信に失敗しました(38).", group};
        }
    }
    return {L"", L"2件の記事を取得しました。", kGroups.size()};
}

uint32_t WordAt(const std::string& bytes, size_t offset) {
    uint32_t value = 0;
    std::memcpy(&value, bytes.data() + offset, sizeof value);
    return value;
}

// The log may hold what the broken run left; the records name whole articles all the same.
void CheckRepaired(SessionRun& run, size_t groupsFetched) {
    ScriptedServer server(StepsOfRun(groupsFetched));
    run.Run(server);
    for (size_t group = 0; group < kNames.size(); ++group) {
        const std::string index = run.Index(kNames[group]);
        const std::string log = run.Log(kNames[group]);
        ASSERT_EQ(index.size(), 100u + 2 * 92);
        EXPECT_EQ(WordAt(index, 4), group == 0 ? 6u : 2u) << "last fetched";
        EXPECT_EQ(WordAt(index, 16), 2u) << "records";
        EXPECT_EQ(WordAt(index, 88), 2u) << "unread";
        for (size_t record = 0; record < 2; ++record) {
            const size_t at = 100 + 92 * record;
            ASSERT_LE(WordAt(index, at + 8), log.size());
            EXPECT_EQ(log.substr(WordAt(index, at + 8), WordAt(index, at + 12)), kArticles[group][record]);
        }
    }
}

TEST(StreamFaults, ARunThatTheServerEndsChangesNoHeaderAndCanBeRepeated) {
    SessionRun run;
    const std::vector<Step> steps = StepsOfRun(0);
    for (size_t position = 0; position <= SpokenBytes(steps) && !HasFailure(); ++position) {
        SCOPED_TRACE("ended after " + std::to_string(position));
        const Outcome expected = OutcomeAt(position);
        MakeFresh(run);
        ScriptedServer server(steps);
        server.HangUpAfter(position);
        run.Run(server);
        EXPECT_EQ(run.result.title, expected.title);
        EXPECT_EQ(run.result.text, expected.text);
        EXPECT_EQ(run.done, expected.title.empty());
        EXPECT_THAT(server.Received(), testing::EndsWith("QUIT\r\n"));
        for (size_t group = 0; group < kNames.size(); ++group) {
            const std::string index = run.Index(kNames[group]);
            if (group < expected.groupsFetched) {
                EXPECT_EQ(index, ExpectedIndex(group));
            } else {
                EXPECT_EQ(index.substr(0, 100), HeaderBytes({}));
            }
        }
        if (position % 11 == 0) CheckRepaired(run, expected.groupsFetched);
    }
}

}  // namespace
