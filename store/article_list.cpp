#include "store/article_list.h"

#include <cstring>

#include "platform/heap.h"
#include "store/index.h"
#include "store/log.h"
#include "text/last_error.h"

namespace {

enum RowClass : uint8_t { kHighRow, kNormalRow, kLowRow, kHidden };
constexpr uint32_t kRunCount = 3;

// All that a record's flags decide here: read or not, and the priority.
constexpr uint32_t kKindMask = kReadFlag | kPriorityMask;
constexpr uint32_t kKinds = kKindMask + 1;

RowClass ClassOf(const ArticleList& list, const IndexRecord& record) {
    if (IsRead(record) && !list.showRead) return kHidden;
    switch (PriorityOf(record)) {
        case kPriorityHigh:
            return kHighRow;
        case kPriorityLow:
            return list.priorityLevel == kPriorityLow ? kLowRow : kHidden;
        default:
            return list.priorityLevel == kPriorityHigh ? kHidden : kNormalRow;
    }
}

template <class T>
T* AllocateOn(const HeapOwner& heap, uint32_t count) {
    const SIZE_T size = (count ? count : 1) * static_cast<SIZE_T>(sizeof(T));
    return static_cast<T*>(TakeFrom(heap, size));
}

// An index that has vanished stays away: an empty one in its place could not be told from a damaged one,
// while a missing one is made anew from the log.
bool OpenExistingIndex(GroupStore& store) {
    if (!store.indexPath) return Fail(kErrorInvalidArgument);
    return OpenDataFile(store.index, store.indexPath.get(), FileMode::kReadWriteExisting);
}

// Reads every record once, and counts them by kind.
bool ReadKinds(ArticleList& list, uint8_t* kinds, uint32_t (&seen)[kKinds]) {
    return VisitRecords(list.store, [&](const IndexRecord* records, uint32_t first, uint32_t count) {
        for (uint32_t i = 0; i < count; ++i) {
            const uint32_t kind = records[i].flags & kKindMask;
            kinds[first + i] = static_cast<uint8_t>(kind);
            ++seen[kind];
        }
        return true;
    });
}

// What the header counts is counted anew: a program that ended between a record's change and the header's
// left an old number there.
void TakeCounts(ArticleList& list, const uint32_t (&seen)[kKinds], RowClass (&classes)[kKinds],
                uint32_t (&rows)[kRunCount + 1]) {
    RecordCounts counted;
    for (uint32_t kind = 0; kind < kKinds; ++kind) {
        IndexRecord record;
        record.flags = kind;
        CountRecord(counted, record, seen[kind]);
        classes[kind] = ClassOf(list, record);
        rows[classes[kind]] += seen[kind];
    }
    CopyCounts(list.store.header, counted);
}

bool MakeRowMap(ArticleList& list) {
    uint32_t seen[kKinds] = {}, rows[kRunCount + 1] = {};
    RowClass classes[kKinds];
    const std::unique_ptr<uint8_t[]> kinds = NewArray<uint8_t>(list.store.header.recordCount);
    if (!kinds) return false;
    if (!ReadKinds(list, kinds.get(), seen)) return false;
    TakeCounts(list, seen, classes, rows);
    uint32_t next[kRunCount] = {0, rows[kHighRow], rows[kHighRow] + rows[kNormalRow]};
    const uint32_t visible = next[kLowRow] + rows[kLowRow];
    list.rowMap = AllocateOn<uint32_t>(list.heap, visible);
    if (!list.rowMap) return Fail(kErrorNoMemory);
    for (uint32_t number = 0; number < list.store.header.recordCount; ++number) {
        const RowClass rowClass = classes[kinds[number]];
        if (rowClass != kHidden) list.rowMap[next[rowClass]++] = number;
    }
    list.visibleCount = visible;
    return true;
}

void Forget(ArticleList& list) {
    list.heap.Reset();
    list.page = nullptr;
    list.rowMap = nullptr;
    list.visibleCount = list.rowsInPage = list.firstRow = list.currentInPage = 0;
}

bool AllocatePage(ArticleList& list, uint32_t pageSize) {
    list.heap = MakeHeap(0, 0);
    if (!list.heap) return false;
    list.page = AllocateOn<IndexRecord>(list.heap, pageSize);
    list.pageSize = pageSize;
    return list.page || Fail(kErrorNoMemory);
}

// From the open index. Past the end the page is empty.
bool ReadPage(ArticleList& list, uint32_t firstRow) {
    list.firstRow = firstRow;
    list.rowsInPage = 0;
    const uint32_t left = firstRow < list.visibleCount ? list.visibleCount - firstRow : 0;
    const uint32_t wanted = left < list.pageSize ? left : list.pageSize;
    while (list.rowsInPage < wanted) {
        const uint32_t number = list.rowMap[firstRow + list.rowsInPage];
        if (!ReadRecord(list.store, list.page[list.rowsInPage], number)) return false;
        ++list.rowsInPage;
    }
    return true;
}

// A run may have ended since the list was made: its numbers stay in the header. What the list counted holds
// only for as many records as it knows.
bool TakeNewerHeader(GroupStore& store) {
    const uint32_t savedPosition = store.header.savedPosition;
    const uint32_t records = store.header.recordCount;
    RecordCounts counts;
    CopyCounts(counts, store.header);
    if (!RefreshHeader(store)) return false;
    store.header.savedPosition = savedPosition;
    if (store.header.recordCount == records) CopyCounts(store.header, counts);
    return true;
}

// Whether the index still has the page's record at its place: a mark would overwrite another article's.
bool StandsInIndex(ArticleList& list, uint32_t row) {
    IndexRecord standing;
    if (!ReadRecord(list.store, standing, list.rowMap[row])) return false;
    const IndexRecord& shown = list.page[row - list.firstRow];
    const bool same = standing.articleNumber == shown.articleNumber &&
                      standing.logOffset == shown.logOffset && standing.logLength == shown.logLength;
    return same || Fail(kErrorInvalidData);
}

bool ChangeFlags(ArticleList& list, uint32_t row, uint32_t set, uint32_t clear) {
    if (row < list.firstRow || row - list.firstRow >= list.rowsInPage) return Fail(kErrorInvalidArgument);
    IndexRecord& record = list.page[row - list.firstRow];
    IndexRecord changed = record;
    changed.flags = (record.flags | set) & ~clear;
    if (changed.flags == record.flags) return true;
    if (!OpenExistingIndex(list.store)) return false;
    bool written = TakeNewerHeader(list.store) && StandsInIndex(list, row) &&
                   WriteRecord(list.store, changed, list.rowMap[row]);
    if (written) {
        if (!IsRead(record) && IsRead(changed)) --list.store.header.unreadCount;
        if (IsRead(record) && !IsRead(changed)) ++list.store.header.unreadCount;
        record = changed;
        // The header follows at once, so that a program that ends here leaves counts that are true.
        written = WriteHeader(list.store);
    }
    const ErrorKeeper keeper;
    CloseDataFile(list.store.index);
    return written;
}

template <std::size_t Size>
uint32_t LongestField(const ArticleList& list, char (IndexRecord::*field)[Size]) {
    uint32_t longest = 0;
    for (uint32_t i = 0; i < list.rowsInPage; ++i) {
        const char* text = list.page[i].*field;
        const void* end = std::memchr(text, '\0', Size);
        const auto length = static_cast<uint32_t>(end ? static_cast<const char*>(end) - text : Size);
        if (length > longest) longest = length;
    }
    return longest;
}

}  // namespace

bool OpenArticleList(ArticleList& list, const wchar_t* folder, const wchar_t* group) {
    Forget(list);
    list.open = false;
    if (!SetNames(list.store, folder, group) || !ReadHeader(list.store)) return false;
    list.open = true;
    return true;
}

bool BuildArticleList(ArticleList& list, uint32_t pageSize) {
    Forget(list);
    const bool built = OpenExistingIndex(list.store) && RefreshHeader(list.store) &&
                       AllocatePage(list, pageSize) && MakeRowMap(list) && ReadPage(list, 0);
    const ErrorKeeper keeper;
    CloseDataFile(list.store.index);
    if (!built) Forget(list);
    return built;
}

bool SetPageSize(ArticleList& list, uint32_t pageSize) {
    auto page = AllocateOn<IndexRecord>(list.heap, pageSize);
    if (!page) return Fail(kErrorNoMemory);
    HeapFree(list.heap.Get(), 0, list.page);
    list.page = page;
    list.pageSize = pageSize;
    return LoadPage(list, list.firstRow);
}

bool LoadPage(ArticleList& list, uint32_t firstRow) {
    list.firstRow = firstRow;
    list.rowsInPage = 0;
    if (firstRow >= list.visibleCount) return true;
    if (!OpenExistingIndex(list.store)) return false;
    const bool loaded = ReadPage(list, firstRow);
    const ErrorKeeper keeper;
    CloseDataFile(list.store.index);
    return loaded;
}

bool SetFlags(ArticleList& list, uint32_t row, uint32_t bits) {
    return ChangeFlags(list, row, bits, 0);
}
bool ClearFlags(ArticleList& list, uint32_t row, uint32_t bits) {
    return ChangeFlags(list, row, 0, bits);
}

bool CloseArticleList(ArticleList& list) {
    if (!list.open) return true;
    list.store.header.savedPosition = list.firstRow + list.currentInPage;
    list.open = false;
    if (!OpenExistingIndex(list.store)) return false;
    const bool written = TakeNewerHeader(list.store) && WriteHeader(list.store);
    return CloseDataFile(list.store.index) && written;
}

WideText ReadSelectedSubject(const ArticleList& list) {
    if (list.currentInPage >= list.rowsInPage) return nullptr;
    return ReadSubjectText(list.store, list.page[list.currentInPage]);
}

uint32_t LongestSubject(const ArticleList& list) {
    return LongestField(list, &IndexRecord::subject);
}
uint32_t LongestFrom(const ArticleList& list) {
    return LongestField(list, &IndexRecord::from);
}
