// Commands sent ahead of their replies. The input's first bytes choose the server, the range, the limit and
// which articles are missing; the rest is what the server does with each command that reaches it early, or
// its replies.
#include <array>
#include <bitset>
#include <cstdlib>
#include <deque>
#include <vector>

#include "fuzz/harness.h"
#include "nntp/pipeline.h"

namespace {

using Numbers = std::bitset<64>;  // counted from the range's first

struct Group {
    uint32_t first = 1;
    uint32_t last = 1;
    uint32_t limit = 0;
    Numbers missing;
    Numbers withoutBody;
};

Numbers TakeNumbers(std::string_view& input) {
    const uint64_t low = TakeWord(input);
    return Numbers(static_cast<uint64_t>(TakeWord(input)) << 32 | low);
}

Group TakeGroup(std::string_view& input) {
    Group group;
    const uint32_t span = TakeByte(input) % 64;
    const uint8_t place = TakeByte(input);
    group.last = place == 0xFF ? 0xFFFFFFFF : place + span;  // the largest numbers there are, too
    group.first = group.last - span;
    group.limit = TakeByte(input);
    group.missing = TakeNumbers(input);
    group.withoutBody = TakeNumbers(input);
    return group;
}

struct Command {
    bool isHead = false;
    uint32_t number = 0;
    bool operator==(const Command& other) const { return isHead == other.isHead && number == other.number; }
};

// What left, read as a server reads it.
std::vector<Command> TakeSent(Pipeline& pipeline, const Group& group) {
    std::array<char, kMostOnTheWay * kCommandSize> text;
    std::string_view sent(text.data(), TakeCommands(pipeline, text));
    std::vector<Command> commands;
    while (!sent.empty()) {
        const std::string line(sent.substr(0, sent.find("\r\n")));
        const std::string word = line.substr(0, 5);
        Require(word == "HEAD " || word == "BODY ", "every command asks for an article");
        const uint32_t number = static_cast<uint32_t>(std::strtoul(line.c_str() + 5, nullptr, 10));
        Require(word + std::to_string(number) == line, "by its number");
        Require(number >= group.first && number <= group.last, "in the range");
        commands.push_back({word == "HEAD ", number});
        sent.remove_prefix(line.size() + 2);
    }
    Require(pipeline.sent.count <= kMostOnTheWay, "no more commands are on the way than may be");
    return commands;
}

// A body is taken only for the article whose head was.
void NoteContent(ReplyContent content, const Group& group, uint32_t number, std::vector<uint32_t>& fetched) {
    if (content != ReplyContent::kBody) return;
    Require(fetched.empty() || fetched.back() < number, "no article is fetched twice");
    fetched.push_back(number);
    Require(fetched.size() <= group.limit, "no more articles are fetched than allowed");
}

// A server that says anything at all, or nothing.
void Resist(Pipeline& pipeline, const Group& group, std::string_view replies) {
    std::vector<uint32_t> fetched;
    while (!IsDone(pipeline) && !replies.empty()) {
        (void)TakeSent(pipeline, group);
        const std::string_view status = TakeUpTo(replies, '\n');
        if (status.empty()) {
            if (!TakeSilence(pipeline)) return;
            continue;
        }
        const uint32_t number = NextCommand(pipeline.plan).number;
        NoteContent(TakeReply(pipeline, ExactText(status).get()), group, number, fetched);
    }
}

// A server that answers in order.
struct Server {
    const Group& group;
    bool dropsPackets = false;  // may throw away what stands behind a command in its packet
    bool dropsMore = false;     // and what comes before it has answered everything
    std::string_view choices;
    std::deque<std::string> replies;
    std::vector<Command> received;
};

std::string AnswerOf(const Group& group, const Command& command) {
    const uint32_t place = command.number - group.first;
    const bool has = !group.missing[place] && (command.isHead || !group.withoutBody[place]);
    return has ? (command.isHead ? "221 " : "222 ") + std::to_string(command.number) + " <a@b>" : "423 none";
}

void Receive(Server& server, const std::vector<Command>& commands) {
    bool isEarly = server.dropsMore && !server.replies.empty();
    for (const Command& command : commands) {
        server.received.push_back(command);
        if (!isEarly || !server.dropsPackets || TakeByte(server.choices) % 4 != 0)
            server.replies.push_back(AnswerOf(server.group, command));
        isEarly = true;
    }
}

// What a client sends that waits for each reply.
std::vector<Command> PatientCommands(const Group& group) {
    std::vector<Command> commands;
    uint32_t fetched = 0;
    for (uint32_t place = 0; place <= group.last - group.first && fetched < group.limit; ++place) {
        commands.push_back({true, group.first + place});
        if (group.missing[place]) continue;
        commands.push_back({false, group.first + place});
        if (!group.withoutBody[place]) ++fetched;
    }
    return commands;
}

std::vector<uint32_t> Articles(const Group& group) {
    std::vector<uint32_t> numbers;
    for (uint32_t place = 0; place <= group.last - group.first && numbers.size() < group.limit; ++place) {
        if (!group.missing[place] && !group.withoutBody[place]) numbers.push_back(group.first + place);
    }
    return numbers;
}

// What was fetched until the conversation ended, which a server that answers nothing does to it.
std::vector<uint32_t> Converse(Pipeline& pipeline, Server& server) {
    std::vector<uint32_t> fetched;
    int turns = 0;
    while (!IsDone(pipeline)) {
        Require(++turns < 1000, "a conversation ends");
        Receive(server, TakeSent(pipeline, server.group));
        if (server.replies.empty()) {
            if (!TakeSilence(pipeline)) return fetched;
            continue;
        }
        const std::string status = server.replies.front();
        server.replies.pop_front();
        const uint32_t number = NextCommand(pipeline.plan).number;
        const ReplyContent content = TakeReply(pipeline, ExactText(status).get());
        Require(content == ReplyContent::kNothing || content == ReplyContent::kUnwanted ||
                    std::stoul(status.substr(4)) == number,
                "no article is taken for another");
        NoteContent(content, server.group, number, fetched);
    }
    return fetched;
}

void CheckFetched(const std::vector<uint32_t>& fetched, const Group& group, bool ended) {
    std::vector<uint32_t> expected = Articles(group);
    Require(fetched.size() <= expected.size(), "nothing is fetched that is not there");
    if (!ended) expected.resize(fetched.size());
    Require(fetched == expected, "every article is fetched, one after the other, up to the limit");
}

}  // namespace

void FuzzOne(std::string_view input) {
    const uint8_t choice = TakeByte(input);
    const Group group = TakeGroup(input);
    Pipeline pipeline;
    const ArticlePlan plan = PlanArticles(group.first, group.last, group.limit);
    if (choice % 4 == 0) {
        StartRange(pipeline, plan, (choice & 4) != 0);
        Resist(pipeline, group, input);
        return;
    }
    const Numbers range(~uint64_t{0} >> (63 - (group.last - group.first)));
    const bool noneMissing = ((group.missing | group.withoutBody) & range).none();
    Server server{group, choice % 2 != 0, choice % 4 == 3, input, {}, {}};
    // A refusal names no command: a server that throws commands away is understood only when its count is
    // right.
    const bool miscounts = !server.dropsPackets && (choice & 4) != 0;
    StartRange(pipeline, plan, noneMissing || miscounts);
    const std::vector<uint32_t> fetched = Converse(pipeline, server);
    Require(IsDone(pipeline) || server.dropsMore, "a server that answers is not given up");
    CheckFetched(fetched, group, IsDone(pipeline));
    Require(server.dropsPackets || miscounts || server.received == PatientCommands(group),
            "what leaves early is what would have left later");
}
