// The matching rule and the lists behind it. Knows no platform.
#include <cstring>

#include "filters/keyword_filter.h"
#include "filters/priority.h"
#include "text/last_error.h"

namespace {

void FreeList(KeywordNode*& head) {
    while (head) {
        KeywordNode* next = head->next;
        delete head;
        head = next;
    }
}

bool Matches(std::string_view keyword, std::string_view subject) {
    const bool subjectIsLonger = subject.size() > keyword.size();
    return subjectIsLonger ? subject.find(keyword) != std::string_view::npos
                           : keyword.find(subject) != std::string_view::npos;
}

bool AnyMatches(const KeywordNode* node, std::string_view subject) {
    while (node && !Matches(node->keyword.get(), subject))
        node = node->next;
    return node != nullptr;
}

}  // namespace

KeywordFilter::~KeywordFilter() {
    ClearKeywordFilter(*this);
}

void ClearKeywordFilter(KeywordFilter& filter) {
    FreeList(filter.high);
    FreeList(filter.low);
}

bool AddKeywordLine(KeywordFilter& filter, std::string_view line) {
    constexpr std::size_t kMarkLength = 2;
    if (line.size() < kMarkLength) return true;
    KeywordNode*& list = line.front() == '+' ? filter.high : filter.low;
    line.remove_prefix(kMarkLength);
    std::unique_ptr<KeywordNode> node(new (std::nothrow) KeywordNode);
    if (node) node->keyword = NewArray<char>(line.size() + 1);
    if (!node || !node->keyword) return Fail(kErrorNoMemory);
    std::memcpy(node->keyword.get(), line.data(), line.size());
    node->keyword[line.size()] = '\0';
    node->next = list;
    list = node.release();
    return true;
}

uint32_t MatchKeywordFilter(const KeywordFilter& filter, std::string_view subject) {
    if (AnyMatches(filter.high, subject)) return kPriorityHigh;
    return AnyMatches(filter.low, subject) ? kPriorityLow : kPriorityNormal;
}
