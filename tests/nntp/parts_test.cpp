// The parts of a download that need no server: which command comes next, and what a status line says.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "nntp/article_plan.h"
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
