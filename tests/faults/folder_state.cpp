#include "tests/faults/folder_state.h"

#include <algorithm>
#include <numeric>
#include <set>

namespace {

constexpr size_t kHeaderSize = 100;
constexpr size_t kRecordSize = 92;
const std::string kSeparator = "================\r\n";

bool EndsWith(const std::string& text, const std::string& end) {
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

struct Counts {
    uint32_t unread = 0, high = 0, low = 0;
};

// The record's article, by what the record and the text say of each other; empty when they disagree.
std::string TextOf(const std::string& record, const std::string& log) {
    const uint32_t offset = WordAt(record, 8), length = WordAt(record, 12);
    if (offset > log.size() || length > log.size() - offset) return "";
    const std::string text = log.substr(offset, length);
    const std::string number = "X-Local-Seq: " + std::to_string(WordAt(record, 4)) + "\r\n\r\n";
    const std::string subject = "Subject: " + std::string(record.c_str() + 16) + "\r\n";
    const bool whole = text.find(kSeparator) == text.size() - kSeparator.size() && EndsWith(text, kSeparator);
    const bool same = text.find(number) != std::string::npos && text.find(subject) != std::string::npos;
    return whole && same && text.find("From: ") == 0 ? text : "";
}

void CountRecord(Counts& counts, uint32_t flags) {
    counts.unread += !(flags & 1);
    counts.high += (flags >> 1 & 3) == 2;
    counts.low += (flags >> 1 & 3) == 1;
}

GroupState ReadGroup(const std::string& index, const std::string& log, std::string& problem) {
    GroupState group;
    if (index.size() < kHeaderSize || WordAt(index, 0) != 5) {
        problem = "has no index of version 5";
        return group;
    }
    const uint32_t recordCount = WordAt(index, 16);
    group.progress = index.substr(4, 8) + std::string(index.c_str() + 24);
    Counts counts;
    for (uint32_t i = 0; i < recordCount; ++i) {
        const std::string record =
            index.substr(std::min(index.size(), kHeaderSize + i * kRecordSize), kRecordSize);
        const std::string text = record.size() == kRecordSize ? TextOf(record, log) : "";
        if (text.empty()) problem = "record " + std::to_string(i) + " does not name its article";
        if (text.empty()) return group;
        const uint32_t flags = WordAt(record, 0);
        if (!group.articles.insert({WordAt(record, 4), {flags, text}}).second)
            problem = "an article stands twice";
        CountRecord(counts, flags);
    }
    group.countsAreTrue = counts.unread == WordAt(index, 88) && counts.high == WordAt(index, 92) &&
                          counts.low == WordAt(index, 96);
    return group;
}

std::string SortedLines(const std::string& text) {
    std::set<std::string> lines;
    for (size_t start = 0, end; start < text.size(); start = end) {
        end = std::min(text.find('\n', start), text.size() - 1) + 1;
        lines.insert(text.substr(start, end - start));
    }
    return std::accumulate(lines.begin(), lines.end(), std::string());
}

}  // namespace

FolderState ReadFolder(const Storage& storage, const std::vector<std::wstring>& groups) {
    FolderState state;
    const auto contentOf = [&](const std::wstring& name) {
        const auto file = storage.files.find(kFolder + name);
        return file == storage.files.end() ? std::string() : file->second;
    };
    for (const auto& [path, content] : storage.files) {
        const std::wstring end = path.substr(path.size() - 4);
        if (end == L".dat" || end == L".flt") state.files[path.substr(kFolder.size())] = content;
        if (path == kFolder + L"group.dat") state.files[L"group.dat"] = SortedLines(content);
        if (end == L"idx~" || end == L".id~" || end == L".lo~")
            state.problems.push_back(Plain(path) + " is left over");
    }
    for (const std::wstring& group : groups) {
        std::string problem;
        state.groups[group] = ReadGroup(contentOf(group + L".idx"), contentOf(group + L".log"), problem);
        if (!problem.empty()) state.problems.push_back(Plain(group) + ": " + problem);
    }
    for (const auto& [path, value] : storage.values)
        state.files[path] = value.second;
    return state;
}

uint32_t WordAt(const std::string& bytes, std::size_t offset) {
    uint32_t word = 0;
    for (size_t i = 4; i-- > 0;)
        word = word << 8 | static_cast<unsigned char>(bytes[offset + i]);
    return word;
}

std::string Plain(const std::wstring& name) {
    return std::string(name.begin(), name.end());
}
