// The parts of a download that need no server: which command comes next, which may leave early, and what a
// status line says.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "nntp/pipeline.h"
#include "nntp/reply.h"

namespace {

struct PlanCase {
    const char* sentence;
    uint32_t first, last, limit;
    // A letter a command: h, b when the server has the article, H, B when it has not.
    const char* answers;
    const char* commands;  // with the number, in the order in which they must come
    uint32_t fetched;
    bool limited;
    uint32_t lastProcessed;
};

const PlanCase kPlans[] = {
    {"a head is followed by its body", 7, 8, 9, "hbhb", "H7 B7 H8 B8", 2, false, 8},
    {"without a head no body is asked for", 7, 9, 9, "HHhb", "H7 H8 H9 B9", 1, false, 9},
    {"a missing body does not count", 7, 8, 1, "hBhb", "H7 B7 H8 B8", 1, false, 8},
    {"the limit stops before the next head", 7, 11, 2, "hbhb", "H7 B7 H8 B8", 2, true, 8},
    {"a limit reached with the last article leaves nothing", 7, 8, 2, "hbhb", "H7 B7 H8 B8", 2, false, 8},
    {"a limit of 0 asks for nothing", 7, 8, 0, "", "", 0, true, 6},
    {"an empty range asks for nothing", 8, 7, 5, "", "", 0, false, 7},
    {"the largest number there is is not counted past", 4294967294u, 4294967295u, 9, "HhB",
     "H4294967294 H4294967295 B4294967295", 0, false, 4294967295u},
};

TEST(ArticlePlan, AsksForHeadsAndBodiesUpToTheLimit) {
    for (const PlanCase& row : kPlans) {
        SCOPED_TRACE(row.sentence);
        ArticlePlan plan = PlanArticles(row.first, row.last, row.limit);
        std::string commands;
        const char* answer = row.answers;
        for (int turn = 0; turn < 20; ++turn) {
            const ArticleCommand command = NextCommand(plan);
            if (command.kind == CommandKind::kNone) break;
            const bool isHead = command.kind == CommandKind::kHead;
            commands += (commands.empty() ? "" : " ") + std::string(isHead ? "H" : "B") +
                        std::to_string(command.number);
            const bool hasArticle = *answer == 'h' || *answer == 'b';
            if (*answer) ++answer;
            isHead ? NoteHead(plan, hasArticle) : NoteBody(plan, hasArticle);
        }
        EXPECT_EQ(commands, row.commands);
        EXPECT_EQ(*answer, '\0') << "answers left over";
        EXPECT_EQ(plan.fetched, row.fetched);
        EXPECT_EQ(IsLimited(plan), row.limited);
        EXPECT_EQ(LastProcessed(plan), row.lastProcessed);
    }
}

// What a server does with commands that reach it behind another in one packet.
enum class EarlyCommands { kAnswers, kThrowsAway, kRefuses, kAnswersTooLate, kAnswersEveryOther };

struct Group {
    uint32_t first, last, limit;
    std::vector<uint32_t> missing;  // at HEAD
    std::vector<uint32_t> withoutBody;
    bool noneMissing;  // what the count says
};

bool Has(const std::vector<uint32_t>& numbers, uint32_t number) {
    return std::find(numbers.begin(), numbers.end(), number) != numbers.end();
}

// A server that is a list of commands received and of replies on their way.
class FakeServer {
  public:
    FakeServer(const Group& group, EarlyCommands early) : group_(group), early_(early) {}

    void Receive(std::string_view text) {
        for (bool isEarly = false; !text.empty(); isEarly = true) {
            const std::size_t end = text.find("\r\n");
            TakeCommand(std::string(text.substr(0, end)), isEarly);
            text.remove_prefix(end + 2);
        }
    }
    bool IsSilent() const { return replies_.empty(); }
    std::string TakeStatus() {
        const std::string status = replies_.front();
        replies_.pop_front();
        return status;
    }
    // Time passes.
    void Wake() {
        replies_.insert(replies_.begin(), held_.begin(), held_.end());
        held_.clear();
        early_ = EarlyCommands::kAnswers;
    }
    std::string commands;
    std::size_t most = 0;  // replies under way at once

  private:
    void TakeCommand(const std::string& command, bool isEarly) {
        commands += command + "\n";
        ++count_;
        if (isEarly && early_ == EarlyCommands::kThrowsAway) return;
        if (isEarly && early_ == EarlyCommands::kAnswersEveryOther && count_ % 2 == 0) return;
        if (isEarly && early_ == EarlyCommands::kAnswersTooLate) {
            held_.push_back(Answer(command));
        } else {
            const bool refuses = isEarly && early_ == EarlyCommands::kRefuses;
            replies_.push_back(refuses ? "500 one by one" : Answer(command));
        }
        most = std::max(most, replies_.size());
    }
    std::string Answer(const std::string& command) const {
        const uint32_t number = static_cast<uint32_t>(std::stoul(command.substr(5)));
        const bool isHead = command[0] == 'H';
        if (Has(group_.missing, number) || (!isHead && Has(group_.withoutBody, number))) return "423 none";
        return (isHead ? "221 " : "222 ") + std::to_string(number) + " <a@b>";
    }

    const Group& group_;
    EarlyCommands early_;
    std::deque<std::string> replies_;
    std::deque<std::string> held_;
    unsigned count_ = 0;
};

// The conversation as a client holds it; which articles were fetched, in their order.
std::vector<uint32_t> Converse(Pipeline& pipeline, FakeServer& server) {
    std::vector<uint32_t> fetched;
    std::array<char, kMostOnTheWay * kCommandSize> text;
    for (int turn = 0; turn < 2000 && !IsDone(pipeline); ++turn) {
        server.Receive({text.data(), TakeCommands(pipeline, text)});
        if (server.IsSilent()) {
            if (!TakeSilence(pipeline)) return {};  // a run that ends with an error
            server.Wake();
            continue;
        }
        const uint32_t number = NextCommand(pipeline.plan).number;
        const std::string status = server.TakeStatus();
        const ReplyContent content = TakeReply(pipeline, status.c_str());
        if (content == ReplyContent::kHead || content == ReplyContent::kBody) {
            EXPECT_EQ(status.substr(0, 4), content == ReplyContent::kHead ? "221 " : "222 ");
            EXPECT_EQ(std::stoul(status.substr(4)), number) << "misread";
        }
        if (content == ReplyContent::kBody) fetched.push_back(number);
    }
    EXPECT_TRUE(IsDone(pipeline)) << "hangs";
    return fetched;
}

struct Conversation {
    std::vector<uint32_t> fetched;
    std::string commands;
    std::size_t most = 0;
    uint32_t lastProcessed = 0;
    bool oneByOne = false;
};

Conversation Hold(const Group& group, EarlyCommands early, bool oneByOne) {
    Pipeline pipeline;
    pipeline.oneByOne = oneByOne;
    StartRange(pipeline, PlanArticles(group.first, group.last, group.limit), group.noneMissing);
    FakeServer server(group, early);
    Conversation held;
    held.fetched = Converse(pipeline, server);
    held.commands = server.commands;
    held.most = server.most;
    held.lastProcessed = LastProcessed(pipeline.plan);
    held.oneByOne = pipeline.oneByOne;
    return held;
}

struct PipelineCase {
    const char* sentence;
    Group group;
    std::size_t most;  // replies under way at once
};

const PipelineCase kPipelines[] = {
    {"a full group is asked for far ahead", {1, 40, 99, {}, {}, true}, 16},
    {"the limit bounds what is asked ahead", {1, 40, 3, {}, {}, true}, 6},
    {"a limit in the middle of a batch", {5, 40, 13, {}, {}, true}, 16},
    {"with gaps only a body and the head behind it", {1, 40, 99, {2, 3, 9}, {}, false}, 2},
    {"with gaps and a limit", {1, 40, 7, {1, 40}, {4}, false}, 2},
    {"a body that is missing", {1, 12, 99, {}, {3, 12}, false}, 2},
    {"the largest numbers there are", {4294967290u, 4294967295u, 99, {4294967295u}, {}, false}, 2},
    {"one article", {7, 7, 1, {}, {}, true}, 2},
};

TEST(Pipeline, SendsWhatAPatientClientWouldSendOnlyEarlier) {
    for (const PipelineCase& row : kPipelines) {
        SCOPED_TRACE(row.sentence);
        const Conversation patient = Hold(row.group, EarlyCommands::kAnswers, true);
        const Conversation early = Hold(row.group, EarlyCommands::kAnswers, false);
        EXPECT_EQ(early.commands, patient.commands);
        EXPECT_EQ(early.fetched, patient.fetched);
        EXPECT_EQ(early.lastProcessed, patient.lastProcessed);
        EXPECT_EQ(early.most, row.most);
        EXPECT_EQ(patient.most, 1u);
        EXPECT_FALSE(early.oneByOne);
    }
}

// Whatever the server does with commands sent ahead, and whatever its count had promised.
TEST(Pipeline, FetchesTheSameArticlesFromEveryServer) {
    const Group groups[] = {{1, 40, 99, {}, {}, true},          {1, 40, 99, {2, 3, 9, 40}, {5, 39}, true},
                            {1, 40, 7, {1, 2}, {4}, true},      {1, 40, 99, {2, 3, 9, 40}, {5, 39}, false},
                            {1, 6, 99, {}, {}, true},           {1, 2, 2, {}, {}, true},
                            {1, 30, 25, {30, 29, 28}, {}, true}};
    for (const Group& group : groups) {
        const Conversation patient = Hold(group, EarlyCommands::kAnswers, true);
        for (const EarlyCommands early :
             {EarlyCommands::kAnswers, EarlyCommands::kThrowsAway, EarlyCommands::kRefuses,
              EarlyCommands::kAnswersTooLate, EarlyCommands::kAnswersEveryOther}) {
            // A refusal names no command: with one reply lost and the count wrong, nothing tells whose it is.
            const bool isHonest = group.missing.empty() || !group.noneMissing;
            if (early == EarlyCommands::kAnswersEveryOther && !isHonest) continue;
            SCOPED_TRACE(testing::Message() << "up to " << group.last << ", missing " << group.missing.size()
                                            << ", early commands " << static_cast<int>(early));
            const Conversation held = Hold(group, early, false);
            EXPECT_EQ(held.fetched, patient.fetched);
            EXPECT_EQ(held.lastProcessed, patient.lastProcessed);
            EXPECT_EQ(held.oneByOne, early != EarlyCommands::kAnswers);
        }
    }
}

struct NumberCase {
    const char* sentence;
    const char* text;
    uint32_t value;
    int rest;  // bytes up to where the cursor then stands; -1 for null
};

const NumberCase kNumbers[] = {
    {"blanks behind the number are skipped", "211   5 6", 211, 6},
    {"a number ends before the line end", "42\r\n", 42, 2},
    {"a letter spoils the number", "12x", kNotANumber, -1},
    {"a lone LF is no line end", "12\n", kNotANumber, -1},
    {"a tab is no blank", "1\t2", kNotANumber, -1},
    {"a leading blank reads as an empty field", "  5", 0, 2},
    {"the largest number fits", "4294967295 x", 4294967295u, 11},
    {"a number too large wraps", "4294967297", 1, 10},
};

TEST(Reply, ParsesNumbers) {
    for (const NumberCase& row : kNumbers) {
        SCOPED_TRACE(row.sentence);
        const char* cursor = row.text;
        EXPECT_EQ(ParseNumber(cursor), row.value);
        EXPECT_EQ(cursor ? static_cast<int>(cursor - row.text) : -1, row.rest);
    }
}

struct GroupReplyCase {
    const char* sentence;
    const char* line;
    bool read;
    uint32_t count, first, last;
};

const GroupReplyCase kGroupReplies[] = {
    {"the group's name behind the numbers is not looked at", "211 3 10 12 fj.test\r\n", true, 3, 10, 12},
    {"the name may be missing", "211 3 10 12\r\n", true, 3, 10, 12},
    {"fields that are missing are 0", "211 3\r\n", true, 3, 0, 0},
    {"text in place of the count", "211 many 10 12 fj.test\r\n", false, 0, 0, 0},
};

TEST(Reply, ParsesGroupReplies) {
    for (const GroupReplyCase& row : kGroupReplies) {
        SCOPED_TRACE(row.sentence);
        GroupReply reply;
        ASSERT_EQ(ParseGroupReply(row.line, reply), row.read);
        if (!row.read) continue;
        EXPECT_EQ(reply.count, row.count);
        EXPECT_EQ(reply.first, row.first);
        EXPECT_EQ(reply.last, row.last);
    }
}

}  // namespace
