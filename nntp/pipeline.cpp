#include "nntp/pipeline.h"

#include <algorithm>
#include <cstring>

#include "nntp/reply.h"
#include "text/decimal.h"

namespace {

bool IsSame(const ArticleCommand& a, const ArticleCommand& b) {
    return a.kind == b.kind && a.number == b.number;
}

void RemoveFirst(CommandQueue& queue, unsigned count) {
    std::copy(queue.commands.begin() + count, queue.commands.begin() + queue.count, queue.commands.begin());
    queue.count -= count;
}

unsigned Find(const CommandQueue& queue, const ArticleCommand& command) {
    unsigned index = 0;
    while (index < queue.count && !IsSame(queue.commands[index], command))
        ++index;
    return index;
}

bool Contains(const CommandQueue& queue, const ArticleCommand& command) {
    return Find(queue, command) < queue.count;
}

// The command that "221 n" or "222 n" names; kNone for any other status.
ArticleCommand NamedCommand(const char* status) {
    const uint32_t code = ParseNumber(status);
    if (code != 221 && code != 222) return {};
    const uint32_t number = ParseNumber(status);
    if (!status) return {};
    return {code == 221 ? CommandKind::kHead : CommandKind::kBody, number};
}

unsigned BodiesOnTheWay(const Pipeline& pipeline) {
    const auto begin = pipeline.sent.commands.begin();
    return static_cast<unsigned>(
        std::count_if(begin, begin + pipeline.sent.count,
                      [](const ArticleCommand& command) { return command.kind == CommandKind::kBody; }));
}

// The command behind the newest one, when that is certain.
ArticleCommand FollowUp(const Pipeline& pipeline) {
    const ArticlePlan& plan = pipeline.plan;
    const ArticleCommand newest = pipeline.sent.commands[pipeline.sent.count - 1];
    if (newest.kind == CommandKind::kHead) {
        if (!pipeline.noneMissing) return {};
        return {CommandKind::kBody, newest.number};
    }
    const bool mayBeLimited = plan.limit - plan.fetched <= BodiesOnTheWay(pipeline);
    if (newest.number >= plan.last || mayBeLimited) return {};
    return {CommandKind::kHead, newest.number + 1};
}

ArticleCommand NextToSend(const Pipeline& pipeline) {
    if (pipeline.sent.count == 0) return NextCommand(pipeline.plan);
    if (pipeline.oneByOne || pipeline.sent.count == kMostOnTheWay) return {};
    return FollowUp(pipeline);
}

std::size_t WriteCommand(char* text, const ArticleCommand& command) {
    std::memcpy(text, command.kind == CommandKind::kHead ? "HEAD " : "BODY ", 5);
    const std::size_t count = WriteDecimal(text + 5, command.number);
    std::memcpy(text + 5 + count, "\r\n", 2);
    return 5 + count + 2;
}

// What was sent is asked again, but for the first `answered` commands; those behind them may be answered
// late.
void AskAgain(Pipeline& pipeline, unsigned answered) {
    RemoveFirst(pipeline.sent, answered);
    pipeline.late = pipeline.sent;
    pipeline.sent.count = 0;
    pipeline.oneByOne = true;
}

bool MayHaveBeenLost(const Pipeline& pipeline) {
    return !pipeline.oneByOne && pipeline.leftAhead;
}

// The server has thrown commands away: the oldest was refused as none that it could take, or a later one
// answered.
bool ShowsLoss(Pipeline& pipeline, const char* status) {
    if (!MayHaveBeenLost(pipeline)) return false;
    if (*status == '5') {
        AskAgain(pipeline, 1);
        return true;
    }
    const unsigned index = Find(pipeline.sent, NamedCommand(status));
    if (index == 0 || index == pipeline.sent.count) return false;
    AskAgain(pipeline, index + 1);
    return true;
}

// The status answers the first asking of a command that was asked again, or may do so: a refusal names no
// command.
bool IsLateReply(Pipeline& pipeline, const char* status) {
    CommandQueue& late = pipeline.late;
    if (late.count == 0) return false;
    if (pipeline.sent.count == 0) return true;
    const ArticleCommand named = NamedCommand(status);
    const ArticleCommand expected = pipeline.sent.commands[0];
    if (IsSame(named, expected)) {
        // The server answers in order: behind the reply to what was asked only once nothing comes late.
        if (!Contains(late, expected)) late.count = 0;
        pipeline.refused = false;
        return false;
    }
    if (!IsSuccess(status)) pipeline.refused = true;
    return !IsSuccess(status) || Contains(late, named);
}

ArticleCommand TakeOldest(Pipeline& pipeline) {
    const ArticleCommand oldest = pipeline.sent.commands[0];
    RemoveFirst(pipeline.sent, 1);
    if (pipeline.sent.count == 0) pipeline.leftAhead = false;
    return oldest;
}

void NoteReply(Pipeline& pipeline, const ArticleCommand& command, bool hasArticle) {
    if (command.kind == CommandKind::kHead) {
        NoteHead(pipeline.plan, hasArticle);
    } else {
        NoteBody(pipeline.plan, hasArticle);
    }
    if (!hasArticle) pipeline.noneMissing = false;
}

ReplyContent Unwanted(const char* status) {
    return IsSuccess(status) ? ReplyContent::kUnwanted : ReplyContent::kNothing;
}

}  // namespace

void StartRange(Pipeline& pipeline, const ArticlePlan& plan, bool noneMissing) {
    const bool oneByOne = pipeline.oneByOne;
    pipeline = {};
    pipeline.plan = plan;
    pipeline.noneMissing = noneMissing;
    pipeline.oneByOne = oneByOne;
}

std::size_t TakeCommands(Pipeline& pipeline, std::array<char, kMostOnTheWay * kCommandSize>& text) {
    std::size_t length = 0;
    CommandQueue& sent = pipeline.sent;
    const unsigned least = std::max(sent.count + 1, kFewestOnTheWay);
    while (sent.count < least) {
        const ArticleCommand next = NextToSend(pipeline);
        if (next.kind == CommandKind::kNone) break;
        if (sent.count > 0) pipeline.leftAhead = true;
        sent.commands[sent.count++] = next;
        length += WriteCommand(text.data() + length, next);
    }
    return length;
}

ReplyContent TakeReply(Pipeline& pipeline, const char* status) {
    if (IsLateReply(pipeline, status) || ShowsLoss(pipeline, status)) return Unwanted(status);
    const ArticleCommand command = TakeOldest(pipeline);
    if (!IsSame(command, NextCommand(pipeline.plan))) return Unwanted(status);
    const bool hasArticle = IsSuccess(status);
    NoteReply(pipeline, command, hasArticle);
    if (!hasArticle) return ReplyContent::kNothing;
    return command.kind == CommandKind::kHead ? ReplyContent::kHead : ReplyContent::kBody;
}

bool TakeSilence(Pipeline& pipeline) {
    if (MayHaveBeenLost(pipeline)) {
        AskAgain(pipeline, 0);
        return true;
    }
    if (pipeline.late.count == 0 || (pipeline.sent.count > 0 && !pipeline.refused)) return false;
    pipeline.late.count = 0;
    if (pipeline.sent.count > 0) NoteReply(pipeline, TakeOldest(pipeline), false);
    return true;
}

bool IsDone(const Pipeline& pipeline) {
    const bool isAnswered = pipeline.sent.count == 0 && pipeline.late.count == 0;
    return isAnswered && NextCommand(pipeline.plan).kind == CommandKind::kNone;
}
