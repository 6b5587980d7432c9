// Decides which command comes next while a range of articles is fetched, but sends and reads nothing: HEAD n,
// then BODY n when the server has n, then the next number, until the range or the limit is exhausted. Knows
// no platform.
#pragma once

#include <cstdint>

struct ArticlePlan {
    uint32_t next = 0;   // number of the next command
    uint32_t last = 0;   // of the range
    uint32_t limit = 0;  // most articles to fetch
    uint32_t fetched = 0;
    bool bodyPending = false;  // the head of `next` has arrived
    bool exhausted = false;    // every number of the range was asked for
};

enum class CommandKind { kNone, kHead, kBody, kGroup };  // the plan names no kGroup

struct ArticleCommand {
    CommandKind kind = CommandKind::kNone;
    uint32_t number = 0;
};

// A plan for first..last; nothing to fetch when last < first.
ArticlePlan PlanArticles(uint32_t first, uint32_t last, uint32_t limit);

ArticleCommand NextCommand(const ArticlePlan& plan);

// Notes the reply to the command that NextCommand names: whether the server has the article.
void NoteHead(ArticlePlan& plan, bool hasArticle);
void NoteBody(ArticlePlan& plan, bool hasArticle);

// The limit stopped the plan before the end of its range.
inline bool IsLimited(const ArticlePlan& plan) {
    return !plan.exhausted && plan.fetched >= plan.limit;
}

// The highest number processed; the next run begins after it.
inline uint32_t LastProcessed(const ArticlePlan& plan) {
    return plan.exhausted ? plan.last : plan.next - 1;
}
