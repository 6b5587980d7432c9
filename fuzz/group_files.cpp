// One group's files as damage or another program may leave them, and all that the program does with them. The
// input is one byte that chooses what is done, the lengths of the index (two bytes) and of the filter (one),
// and then the index, the filter and the log.
#include <algorithm>
#include <vector>

#include "fuzz/harness.h"
#include "platform/platform.h"
#include "store/article_list.h"
#include "store/delete_read.h"
#include "store/group_changes.h"
#include "store/index.h"
#include "store/log.h"
#include "store/upgrade.h"

namespace {

constexpr wchar_t kIndexPath[] = L"D\\g.idx";
constexpr wchar_t kLogPath[] = L"D\\g.log";
constexpr wchar_t kFilterPath[] = L"D\\g.flt";
constexpr wchar_t kOtherPath[] = L"D\\other.log";
constexpr std::string_view kSeparator = "================\r\n";

using Files = std::map<std::wstring, std::string>;

void PutFiles(std::string_view& input) {
    const std::size_t indexLength = TakeByte(input) + TakeByte(input) * std::size_t{256};
    const std::size_t filterLength = TakeByte(input);
    memoryFiles.clear();
    memoryFiles[kOtherPath] = "of another group";
    const auto put = [&](const wchar_t* path, std::size_t length) {
        memoryFiles[path] = input.substr(0, length);
        input.remove_prefix(std::min(length, input.size()));
    };
    if (indexLength != 0) put(kIndexPath, indexLength);
    if (filterLength != 0) put(kFilterPath, filterLength);
    put(kLogPath, input.size());
}

// Holds after every operation, whether it succeeded or not.
void CheckAfter(bool succeeded) {
    Require(succeeded || GetError() != 0, "a failure names its reason");
    Require(memoryFiles[kOtherPath] == "of another group", "another group's files are left alone");
    Require(memoryFiles.size() <= 6, "only the group's own files are made");
}

void Name(GroupStore& store) {
    Require(SetNames(store, L"D\\", L"g"), "the group has a name");
    SetError(0);
}

bool BringUp() {
    GroupStore store;
    Name(store);
    const std::string log = memoryFiles[kLogPath];
    const bool ready = BringUpToDate(store) == IndexState::kReady;
    CheckAfter(ready);
    Require(memoryFiles[kLogPath] == log, "the log only grows, and not here");
    return ready;
}

// What the program reads of the index, record by record.
std::vector<IndexRecord> ReadAll() {
    GroupStore store;
    Name(store);
    std::vector<IndexRecord> records;
    IndexRecord record;
    if (!ReadHeader(store)) return records;
    while (records.size() < store.header.recordCount &&
           ReadRecord(store, record, static_cast<uint32_t>(records.size())))
        records.push_back(record);
    return records;
}

// The articles of a list from the first page to the last, as far as the files have them.
void ReadPages(ArticleList& list, bool marks) {
    for (uint32_t row = 0; row < list.visibleCount && LoadPage(list, row); row += list.pageSize) {
        for (list.currentInPage = 0; list.currentInPage < list.rowsInPage; ++list.currentInPage) {
            const IndexRecord& record = list.page[list.currentInPage];
            (void)ReadArticle(list.store, record.logOffset, record.logLength);
            (void)ReadSelectedSubject(list);
            if (marks && (row + list.currentInPage) % 2 != 0)
                (void)SetFlags(list, row + list.currentInPage, kReadFlag);
        }
        Require(LongestSubject(list) <= kSubjectSize && LongestFrom(list) <= kFromSize,
                "fields end in their room");
    }
}

void ReadGroup(bool showRead, bool marks) {
    ArticleList list;
    list.showRead = showRead;
    SetError(0);
    const bool opened = OpenArticleList(list, L"D\\", L"g") && BuildArticleList(list, 3);
    CheckAfter(opened);
    if (!opened) return;
    Require(list.visibleCount <= list.store.header.recordCount,
            "a list shows at most what the header counts");
    ReadPages(list, marks);
    SetError(0);
    CheckAfter(CloseArticleList(list));
}

bool Run(bool (*operation)(GroupStore&)) {
    GroupStore store;
    Name(store);
    const bool succeeded = operation(store);
    CheckAfter(succeeded);
    return succeeded;
}

// The line that a stream begins with: up to the LF behind its first CR.
std::string_view TakeLine(std::string_view& stream) {
    const std::size_t end = stream.find('\n', stream.find('\r'));
    const std::string_view line = stream.substr(0, end == std::string_view::npos ? end : end + 1);
    stream.remove_prefix(line.size());
    return line;
}

uint32_t MatchModel(std::string_view filter, std::string_view subject) {
    uint32_t best = kPriorityNormal;
    while (!filter.empty()) {
        std::string_view line = WithoutLineEnd(TakeLine(filter));
        line = line.substr(0, line.find('\0'));
        if (line.size() < 2) continue;
        const std::string_view keyword = line.substr(2);
        constexpr std::size_t kNowhere = std::string_view::npos;
        if (subject.find(keyword) == kNowhere && keyword.find(subject) == kNowhere) continue;
        if (line.front() == '+') return kPriorityHigh;
        best = kPriorityLow;
    }
    return best;
}

// Each record gets the priority of the best keyword that matches, and keeps its other bits.
void CheckRefilter(bool sound) {
    const std::vector<IndexRecord> before = ReadAll();
    if (!Run(Refilter) || !sound) return;
    const std::string log = memoryFiles[kLogPath];
    const std::vector<IndexRecord> after = ReadAll();
    Require(after.size() == before.size(), "keywords change no number of records");
    for (std::size_t i = 0; i < after.size(); ++i) {
        const std::string subject = log.substr(after[i].subjectTextOffset, after[i].subjectTextLength);
        Require(PriorityOf(after[i]) == MatchModel(memoryFiles[kFilterPath], subject.c_str()),
                "the priority is that of the best keyword");
        Require(((after[i].flags ^ before[i].flags) & ~kPriorityMask) == 0, "and the other bits stay");
    }
}

std::string ArticleOf(const Files& files, const IndexRecord& record) {
    return files.at(kLogPath).substr(record.logOffset, record.logLength);
}

// Afterwards the unread articles are there byte for byte, and no others; after a failure, which needs damage,
// everything is.
void CheckDeletion(bool sound) {
    const std::vector<IndexRecord> before = ReadAll();
    const Files files = memoryFiles;
    if (!Run(DeleteRead)) {
        Require(!sound, "deletion succeeds where nothing is damaged");
        Require(memoryFiles == files, "a deletion that fails changes nothing");
        return;
    }
    const std::vector<IndexRecord> after = ReadAll();
    std::size_t kept = 0;
    for (const IndexRecord& record : before) {
        if (IsRead(record)) continue;
        Require(kept < after.size() && !IsRead(after[kept]), "unread articles are kept");
        Require(ArticleOf(memoryFiles, after[kept++]) == ArticleOf(files, record), "with every byte");
    }
    Require(kept == after.size(), "and no others");
}

// Whether lines that end in CR ... LF come to a separator behind an empty line.
bool HoldsArticle(std::string_view log) {
    bool inHead = true;
    while (!log.empty()) {
        const std::string_view line = TakeLine(log);
        if (line.back() != '\n') return false;
        if (!inHead && line == kSeparator) return true;
        if (line.substr(0, 2) == "\r\n") inHead = false;
    }
    return false;
}

// The new records lie one behind the other in the log, from an article's first byte to its separator's last.
bool CheckRebuild() {
    const std::string log = memoryFiles[kLogPath];
    const bool rebuilt = Run(RebuildFromLog);
    Require(memoryFiles[kLogPath] == log, "the log is only read");
    uint32_t end = 0;
    for (const IndexRecord& record : ReadAll()) {
        Require(record.logOffset == end && record.logLength <= log.size() - end, "articles lie back to back");
        end += record.logLength;
        const std::string_view article = std::string_view(log).substr(record.logOffset, record.logLength);
        Require(article.substr(article.size() - kSeparator.size()) == kSeparator,
                "an article ends with a separator");
        Require(record.subjectTextOffset >= record.logOffset && record.subjectTextOffset <= end &&
                    record.subjectTextLength <= end - record.subjectTextOffset,
                "the subject's text lies in its article");
        Require(!IsRead(record), "a record made anew is unread");
    }
    Require(!rebuilt || !HoldsArticle(std::string_view(log).substr(end)), "no complete article is left out");
    return rebuilt;
}

}  // namespace

void FuzzOne(std::string_view input) {
    const uint8_t choice = TakeByte(input);
    PutFiles(input);
    if (BringUp()) Require(BringUp(), "an index that was brought up to date is so");
    const bool sound = (choice & 1) != 0 && CheckRebuild();
    if (choice & 2) CheckRefilter(sound);
    ReadGroup((choice & 4) != 0, (choice & 8) != 0);
    if (choice & 16) (void)Run(MarkAllRead);
    if (choice & 32) CheckDeletion(sound);
    ReadGroup(true, false);
    Require(OpenHandles() == 0, "every file is closed");
}
