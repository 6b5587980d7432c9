// The reply to GROUP, and the plan that follows from it while a server answers one way or the other. The
// first line of the input is the reply; behind it stand the limit and one byte a reply.
#include <algorithm>

#include "fuzz/harness.h"
#include "nntp/article_plan.h"
#include "nntp/reply.h"

namespace {

// One field: its digits, then the blanks behind it. False for any other byte.
bool TakeNumber(std::string_view& line, uint32_t& number) {
    const std::string_view field = line.substr(0, line.find_first_of(" \r"));
    number = 0;
    for (const char digit : field) {
        if (digit < '0' || digit > '9') return false;
        number = number * 10 + static_cast<uint32_t>(digit - '0');
    }
    line.remove_prefix(field.size());
    line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
    return true;
}

bool ParseModel(std::string_view line, GroupReply& reply) {
    uint32_t status = 0;
    return TakeNumber(line, status) && TakeNumber(line, reply.count) && TakeNumber(line, reply.first) &&
           TakeNumber(line, reply.last);
}

void CheckReply(const char* line, GroupReply& reply) {
    GroupReply expected;
    const bool parsed = ParseGroupReply(line, reply);
    Require(parsed == ParseModel(line, expected), "a reply is read when its four fields are numbers");
    Require(!parsed || (reply.count == expected.count && reply.first == expected.first &&
                        reply.last == expected.last),
            "the numbers are those of the line");
}

// Asks as the plan says until it is done, and follows every number's way from HEAD to BODY.
void CheckPlan(uint32_t first, uint32_t last, uint32_t limit, std::string_view answers) {
    ArticlePlan plan = PlanArticles(first, last, limit);
    uint32_t fetched = 0;
    uint64_t expected = first;
    while (expected <= last && fetched < limit) {
        ArticleCommand command = NextCommand(plan);
        Require(command.kind == CommandKind::kHead && command.number == expected,
                "each number's head is asked for");
        const bool hasHead = TakeByte(answers) % 4 != 0;
        NoteHead(plan, hasHead);
        if (hasHead) {
            command = NextCommand(plan);
            Require(command.kind == CommandKind::kBody && command.number == expected,
                    "a head brings its body");
            const bool hasBody = TakeByte(answers) % 4 != 0;
            NoteBody(plan, hasBody);
            fetched += hasBody ? 1 : 0;
        }
        ++expected;
    }
    Require(NextCommand(plan).kind == CommandKind::kNone, "the plan ends with the range or the limit");
    Require(plan.fetched == fetched && IsLimited(plan) == (expected <= last),
            "the plan counts what it fetched");
    Require(first > last || LastProcessed(plan) == static_cast<uint32_t>(expected - 1),
            "the next run begins behind it");
}

}  // namespace

void FuzzOne(std::string_view input) {
    GroupReply reply;
    CheckReply(ExactText(TakeUpTo(input, '\n')).get(), reply);
    const uint32_t limit = TakeByte(input);
    const uint32_t span = TakeByte(input);
    if (reply.last >= span) CheckPlan(reply.last - span, reply.last, limit, input);
    if (reply.first > reply.last) CheckPlan(reply.first, reply.last, limit, input);
}
