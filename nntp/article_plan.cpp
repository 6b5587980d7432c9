#include "nntp/article_plan.h"

namespace {

// `last` may be the largest number there is, so `next` never counts past it.
void Advance(ArticlePlan& plan) {
    plan.bodyPending = false;
    if (plan.next >= plan.last) {
        plan.exhausted = true;
    } else {
        ++plan.next;
    }
}

}  // namespace

ArticlePlan PlanArticles(uint32_t first, uint32_t last, uint32_t limit) {
    ArticlePlan plan;
    plan.next = first;
    plan.last = last;
    plan.limit = limit;
    plan.exhausted = first > last;
    return plan;
}

ArticleCommand NextCommand(const ArticlePlan& plan) {
    if (plan.exhausted || IsLimited(plan)) return {};
    return {plan.bodyPending ? CommandKind::kBody : CommandKind::kHead, plan.next};
}

void NoteHead(ArticlePlan& plan, bool hasArticle) {
    if (hasArticle) {
        plan.bodyPending = true;
    } else {
        Advance(plan);
    }
}

void NoteBody(ArticlePlan& plan, bool hasArticle) {
    if (hasArticle) ++plan.fetched;
    Advance(plan);
}
