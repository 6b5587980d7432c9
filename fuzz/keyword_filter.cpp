// Keywords and what they match. The first line of the input is the subject, every further one a line of the
// file.
#include <vector>

#include "filters/keyword_filter.h"
#include "fuzz/harness.h"
#include "store/record.h"

namespace {

bool Contains(std::string_view longer, std::string_view shorter) {
    for (std::size_t start = 0; start + shorter.size() <= longer.size(); ++start) {
        std::size_t same = 0;
        while (same < shorter.size() && longer[start + same] == shorter[same])
            ++same;
        if (same == shorter.size()) return true;
    }
    return false;
}

struct Keyword {
    std::string text;
    bool high = false;
};

Keyword KeywordOf(std::string_view line) {
    const std::string_view text = line.substr(2);
    return {std::string(text.substr(0, text.find('\0'))), line.front() == '+'};
}

uint32_t MatchModel(const std::vector<Keyword>& keywords, std::string_view subject) {
    uint32_t best = kPriorityNormal;
    for (const Keyword& keyword : keywords) {
        if (!Contains(subject, keyword.text) && !Contains(keyword.text, subject)) continue;
        if (keyword.high) return kPriorityHigh;
        best = kPriorityLow;
    }
    return best;
}

// Both lists together hold every keyword once, the newest of its kind first.
void CheckLists(const KeywordFilter& filter, const std::vector<Keyword>& keywords) {
    const KeywordNode* high = filter.high;
    const KeywordNode* low = filter.low;
    for (auto keyword = keywords.rbegin(); keyword != keywords.rend(); ++keyword) {
        const KeywordNode*& node = keyword->high ? high : low;
        Require(node && keyword->text == node->keyword.get(), "a line adds its keyword to its list");
        node = node->next;
    }
    Require(!high && !low, "nothing else is in the lists");
}

// A priority set in a record reads back and leaves its other bits alone.
void CheckRecordBits(uint32_t flags, uint32_t priority) {
    IndexRecord record;
    record.flags = flags;
    SetPriority(record, priority);
    Require(PriorityOf(record) == priority, "a record keeps its priority");
    Require((record.flags & ~kPriorityMask) == (flags & ~kPriorityMask), "and its other bits");
}

}  // namespace

void FuzzOne(std::string_view input) {
    const std::string_view line = TakeUpTo(input, '\n');
    const std::string subject(line.substr(0, line.find('\0')));
    KeywordFilter filter;
    std::vector<Keyword> keywords;
    while (!input.empty()) {
        const std::string_view entry = TakeUpTo(input, '\n');
        const NarrowText copy = ExactBytes(entry);
        Require(AddKeywordLine(filter, {copy.get(), entry.size()}), "adding fails only for want of memory");
        if (entry.size() >= 2) keywords.push_back(KeywordOf(entry));
    }
    CheckLists(filter, keywords);
    const NarrowText copy = ExactBytes(subject);
    const uint32_t priority = MatchKeywordFilter(filter, {copy.get(), subject.size()});
    Require(priority == MatchModel(keywords, subject),
            "the priority is that of the best keyword that matches");
    CheckRecordBits(static_cast<uint32_t>(subject.size()) * 0x9E3779B9u, priority);
}
