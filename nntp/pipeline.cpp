#include "nntp/pipeline.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "nntp/reply.h"
#include "text/decimal.h"

namespace {

bool IsSame(const ArticleCommand& a, const ArticleCommand& b) {
    return a.kind == b.kind && a.number == b.number;
}

std::size_t WriteNumbered(char* text, std::string_view word, uint32_t number) {
    std::memcpy(text, word.data(), word.size());
    return word.size() + WriteDecimal(text + word.size(), number);
}

// "221 n" or "222 n", whichever the command expects. Compared digit by digit, so that no other number passes.
bool Names(std::string_view status, const ArticleCommand& command) {
    char text[kCommandSize];
    const char* code = command.kind == CommandKind::kHead ? "221 " : "222 ";
    const std::string_view due(text, WriteNumbered(text, code, command.number));
    if (status.substr(0, due.size()) != due) return false;
    const std::string_view rest = status.substr(due.size());
    return rest.empty() || rest.front() < '0' || rest.front() > '9';
}

bool Refuses(const char* status, const ArticleCommand& command) {
    const bool noSuchGroup = std::strncmp(status, "411", 3) == 0;
    return *status == '4' && noSuchGroup == (command.kind == CommandKind::kGroup);
}

unsigned BodiesOnTheWay(const Pipeline& pipeline) {
    const auto begin = pipeline.sent.begin();
    return static_cast<unsigned>(
        std::count_if(begin, begin + pipeline.sentCount,
                      [](const ArticleCommand& command) { return command.kind == CommandKind::kBody; }));
}

// The command after the newest one, when that is certain.
ArticleCommand FollowUp(const Pipeline& pipeline) {
    const ArticlePlan& plan = pipeline.plan;
    const ArticleCommand newest = pipeline.sent[pipeline.sentCount - 1];
    if (newest.kind == CommandKind::kGroup) return {};
    if (newest.kind == CommandKind::kHead) {
        if (!pipeline.noneMissing) return {};
        return {CommandKind::kBody, newest.number};
    }
    const bool mayBeLimited = plan.limit - plan.fetched <= BodiesOnTheWay(pipeline);
    if (newest.number >= plan.last || mayBeLimited) return {};
    return {CommandKind::kHead, newest.number + 1};
}

ArticleCommand NextToSend(const Pipeline& pipeline) {
    if (pipeline.sentCount == 0) return NextCommand(pipeline.plan);
    if (pipeline.pace != Pace::kAhead || pipeline.sentCount == kMostOnTheWay) return {};
    return FollowUp(pipeline);
}

std::size_t WriteCommand(char* text, const ArticleCommand& command) {
    const char* word = command.kind == CommandKind::kHead ? "HEAD " : "BODY ";
    const std::size_t length = WriteNumbered(text, word, command.number);
    std::memcpy(text + length, "\r\n", 2);
    return length + 2;
}

ArticleCommand TakeOldest(Pipeline& pipeline) {
    const ArticleCommand oldest = pipeline.sent[0];
    std::copy(pipeline.sent.begin() + 1, pipeline.sent.begin() + pipeline.sentCount, pipeline.sent.begin());
    --pipeline.sentCount;
    return oldest;
}

// An article that its status line does not name makes the rest of the run go one by one.
void NotePace(Pipeline& pipeline, const ArticleCommand& command, bool named) {
    if (!named) {
        pipeline.pace = Pace::kOneByOne;
    } else if (pipeline.pace == Pace::kTrying && command.kind == CommandKind::kBody) {
        pipeline.pace = Pace::kAhead;
    }
}

ReplyContent TakeAnswer(Pipeline& pipeline, const ArticleCommand& command, bool hasArticle) {
    const bool isHead = command.kind == CommandKind::kHead;
    if (isHead) {
        NoteHead(pipeline.plan, hasArticle);
    } else {
        NoteBody(pipeline.plan, hasArticle);
    }
    if (hasArticle) return isHead ? ReplyContent::kHead : ReplyContent::kBody;
    pipeline.noneMissing = false;
    return ReplyContent::kNothing;
}

}  // namespace

void StartRange(Pipeline& pipeline, const ArticlePlan& plan, bool noneMissing) {
    pipeline.plan = pipeline.stored = plan;
    pipeline.sentCount = 0;
    pipeline.noneMissing = noneMissing;
}

std::size_t TakeCommands(Pipeline& pipeline, std::array<char, kMostOnTheWay * kCommandSize>& text) {
    std::size_t length = 0;
    const unsigned least = std::max(pipeline.sentCount + 1, kFewestOnTheWay);
    while (pipeline.sentCount < least) {
        const ArticleCommand next = NextToSend(pipeline);
        if (next.kind == CommandKind::kNone) break;
        pipeline.sent[pipeline.sentCount++] = next;
        length += WriteCommand(text.data() + length, next);
    }
    return length;
}

bool MayAskNextGroup(const Pipeline& pipeline) {
    if (pipeline.pace != Pace::kAhead || !pipeline.namesGroups) return false;
    if (pipeline.sentCount == 0 || pipeline.sentCount == kMostOnTheWay) return false;
    return IsSame(pipeline.sent[pipeline.sentCount - 1], {CommandKind::kBody, pipeline.plan.last});
}

void NoteGroupAsked(Pipeline& pipeline, const char* group) {
    pipeline.nextGroup = group;
    pipeline.sent[pipeline.sentCount++] = {CommandKind::kGroup, 0};
}

ReplyContent TakeReply(Pipeline& pipeline, const char* status) {
    const bool isGroup = pipeline.sent[0].kind == CommandKind::kGroup;
    const bool named = isGroup ? NamesGroup(status, pipeline.nextGroup) : Names(status, pipeline.sent[0]);
    if (pipeline.pace == Pace::kAhead && !named && !Refuses(status, pipeline.sent[0]))
        return ReplyContent::kDoubt;
    const ArticleCommand command = TakeOldest(pipeline);
    if (isGroup) {
        pipeline.nextEntered = true;
        return ReplyContent::kNothing;
    }
    const bool hasArticle = IsSuccess(status);
    if (hasArticle) NotePace(pipeline, command, named);
    // A body that was asked for together with its head is not wanted when the head was missing.
    if (!IsSame(command, NextCommand(pipeline.plan)))
        return hasArticle ? ReplyContent::kUnwanted : ReplyContent::kNothing;
    return TakeAnswer(pipeline, command, hasArticle);
}

void NoteStored(Pipeline& pipeline) {
    pipeline.stored = pipeline.plan;
}

void StartAgain(Pipeline& pipeline) {
    pipeline.pace = Pace::kOneByOne;
    pipeline.plan = pipeline.stored;
    pipeline.sentCount = 0;
}

bool IsDone(const Pipeline& pipeline) {
    return pipeline.sentCount == 0 && NextCommand(pipeline.plan).kind == CommandKind::kNone;
}
