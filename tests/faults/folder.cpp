#include "tests/faults/folder.h"

#include <algorithm>
#include <set>
#include <sstream>

const std::map<std::string, GroupIs> kStates = {{"current", GroupIs::kCurrent},
                                                {"lost-index", GroupIs::kWithoutIndex},
                                                {"upgrade-cut-off", GroupIs::kUpgradeCutOff},
                                                {"deletion-without-log", GroupIs::kDeletionWithoutLog},
                                                {"deletion-with-new-log", GroupIs::kDeletionWithNewLog},
                                                {"deletion-without-index", GroupIs::kDeletionWithoutIndex},
                                                {"version-1", GroupIs::kVersion1},
                                                {"version-2", GroupIs::kVersion2},
                                                {"version-3", GroupIs::kVersion3},
                                                {"version-4", GroupIs::kVersion4}};

namespace {

const std::string kSeparator = "================\r\n";
constexpr std::size_t kSubject = 16, kCounts = 88;  // places in a record, in a header

std::string SequenceLine(uint32_t number) {
    return "X-Local-Seq: " + std::to_string(number) + "\r\n\r\n";
}

std::string Padded(std::string text, std::size_t size) {
    text.resize(size, '\0');
    return text;
}

// Unread, high and low.
std::string CountsOf(const std::vector<uint32_t>& flags) {
    const auto count = [&](uint32_t mask, uint32_t value) {
        return Word(static_cast<uint32_t>(std::count_if(
            flags.begin(), flags.end(), [=](uint32_t each) { return (each & mask) == value; })));
    };
    return count(1, 0) + count(6, 4) + count(6, 2);
}

std::string LogOf(const std::vector<Article>& articles) {
    std::string log;
    for (const Article& article : articles)
        log += StoredText(article);
    return log;
}

std::string RecordOf(const Article& article, std::size_t start, uint32_t version) {
    const std::string text = StoredText(article);
    const auto word = [](std::size_t value) { return Word(static_cast<uint32_t>(value)); };
    return Word(article.flags) + Word(article.number) + word(start) + word(text.size()) +
           (version < 4 ? std::string(48, '#') : Padded(article.subject, 48) + "0305" + Padded("Taro", 16)) +
           (version < 5 ? "" : word(start + text.find("Subject: ") + 9) + word(article.subject.size()));
}

std::string IndexOf(const std::vector<Article>& articles, uint32_t version) {
    const uint32_t last = articles.back().number;
    if (version == 1) return std::to_string(last) + "\r\nnew\r\n5\r\n0\r\n";
    std::string records;
    std::vector<uint32_t> flags;
    std::size_t start = 0;
    for (const Article& article : articles) {
        records += RecordOf(article, start, version);
        start += StoredText(article).size();
        flags.push_back(article.flags);
    }
    const std::size_t counts = version < 3 ? 0 : version < 5 ? 4 : 12;
    return Word(version) + Word(last) + Word(last) + Word(0) + Word(static_cast<uint32_t>(flags.size())) +
           Word(0) + Padded("new", 64) + CountsOf(flags).substr(0, counts) + records;
}

// The record's article, by what the record and the text say of each other; empty when they disagree.
std::string TextOf(const std::string& record, const std::string& log) {
    if (record.size() < kRecordBytes || WordAt(record, 8) > log.size()) return "";
    const std::string text = log.substr(WordAt(record, 8), WordAt(record, 12));
    const std::string subject = "Subject: " + std::string(record.c_str() + kSubject) + "\r\n";
    const bool whole = text.find(kSeparator) == text.size() - kSeparator.size();
    const bool same = text.find(SequenceLine(WordAt(record, 4))) != text.npos &&
                      text.find(subject) != text.npos && text.find("From: ") == 0;
    return whole && same ? text : "";
}

GroupState ReadGroup(const std::string& index, const std::string& log, uint32_t mask, std::string& problem) {
    GroupState group;
    if (index.size() < kHeaderBytes || WordAt(index, 0) != 5) {
        problem = "has no index of version 5";
        return group;
    }
    std::vector<uint32_t> flags;
    for (std::size_t at = kHeaderBytes; flags.size() < WordAt(index, 16); at += kRecordBytes) {
        const std::string record = index.substr(std::min(index.size(), at), kRecordBytes);
        const std::string text = TextOf(record, log);
        if (text.empty()) problem = "a record does not name its article";
        if (text.empty()) return group;
        flags.push_back(WordAt(record, 0));
        const std::string article = std::to_string(flags.back() & mask) + text;
        if (!group.articles.insert({WordAt(record, 4), article}).second) problem = "an article stands twice";
    }
    group.progress = index.substr(4, 8) + std::string(index.c_str() + 24);
    group.countsAreTrue = index.compare(kCounts, 12, CountsOf(flags)) == 0;
    return group;
}

std::string SortedLines(const std::string& text) {
    std::istringstream stream(text);
    std::set<std::string> lines;
    for (std::string line; std::getline(stream, line);)
        lines.insert(line + "\n");
    std::string sorted;
    for (const std::string& line : lines)
        sorted += line;
    return sorted;
}

}  // namespace

Files GroupFiles(const std::wstring& group, const std::vector<Article>& articles, GroupIs state) {
    const std::wstring idx = group + L".idx", log = group + L".log", newIdx = group + L".id~";
    std::vector<Article> kept = articles;
    const auto isRead = [](const Article& article) { return (article.flags & 1) != 0; };
    kept.erase(std::remove_if(kept.begin(), kept.end(), isRead), kept.end());
    switch (state) {
        case GroupIs::kWithoutIndex:
            return {{log, LogOf(articles)}};
        case GroupIs::kUpgradeCutOff:
            return {{idx + L"~", IndexOf(articles, 5)}, {log, LogOf(articles)}};
        case GroupIs::kDeletionWithoutLog:
            return {{idx, IndexOf(articles, 5)}, {newIdx, IndexOf(kept, 5)}, {group + L".lo~", LogOf(kept)}};
        case GroupIs::kDeletionWithNewLog:
            return {{idx, IndexOf(articles, 5)}, {newIdx, IndexOf(kept, 5)}, {log, LogOf(kept)}};
        case GroupIs::kDeletionWithoutIndex:
            return {{newIdx, IndexOf(kept, 5)}, {log, LogOf(kept)}};
        default:
            return {{idx, IndexOf(articles, static_cast<uint32_t>(state) + 1)}, {log, LogOf(articles)}};
    }
}

std::string HeadOf(const Article& article) {
    return "From: a@b.jp (Taro)\r\nSubject: " + article.subject + "\r\nDate: 5 Mar 1998\r\n";
}

std::string StoredText(const Article& article) {
    return HeadOf(article) + SequenceLine(article.number) + article.body + kSeparator;
}

std::string Word(uint32_t value) {
    std::string bytes;
    for (int shift = 0; shift < 32; shift += 8)
        bytes += static_cast<char>(value >> shift & 0xFF);
    return bytes;
}

uint32_t WordAt(const std::string& bytes, std::size_t offset) {
    uint32_t word = 0;
    for (std::size_t i = std::min<std::size_t>(4, bytes.size() - std::min(offset, bytes.size())); i-- > 0;)
        word = word << 8 | static_cast<unsigned char>(bytes[offset + i]);
    return word;
}

FolderState ReadFolder(const Storage& storage, const std::vector<std::wstring>& groups, uint32_t flags) {
    FolderState state;
    for (const auto& [path, content] : storage.files) {
        const std::wstring name = path.substr(kFolder.size()), end = path.substr(path.size() - 4);
        if (end == L".dat" || end == L".flt")
            state.files[name] = name == L"group.dat" ? SortedLines(content) : content;
        if (end == L"idx~" || end == L".id~" || end == L".lo~")
            state.problems.push_back(Plain(name) + " is left over");
    }
    const auto contentOf = [&](const std::wstring& name) {
        const auto file = storage.files.find(kFolder + name);
        return file == storage.files.end() ? std::string() : file->second;
    };
    for (const std::wstring& group : groups) {
        std::string problem;
        state.groups[group] =
            ReadGroup(contentOf(group + L".idx"), contentOf(group + L".log"), flags, problem);
        if (!problem.empty()) state.problems.push_back(Plain(group) + ": " + problem);
    }
    for (const auto& [path, value] : storage.values)
        state.files[path] = value.second;
    return state;
}

std::string Plain(const std::wstring& name) {
    return std::string(name.begin(), name.end());
}
