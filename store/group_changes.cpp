#include "store/group_changes.h"

#include <algorithm>

#include "store/article_writer.h"
#include "store/index.h"
#include "store/log.h"
#include "text/last_error.h"

namespace {

bool AppendAllArticles(GroupStore& store, const KeywordFilter& filter) {
    std::unique_ptr<LogScanner> scanner(new (std::nothrow) LogScanner);
    if (!scanner) return Fail(kErrorNoMemory);
    scanner->log = &store.log;
    ScanResult result;
    while ((result = NextArticle(*scanner)) == ScanResult::kArticle) {
        if (!AppendRecord(store, scanner->start, scanner->end, scanner->head, filter)) return false;
    }
    return result == ScanResult::kEnd;
}

bool RebuildRecords(GroupStore& store) {
    KeywordFilter filter;
    store.header.recordCount = 0;
    CopyCounts(store.header, RecordCounts());
    if (!OpenIndex(store) || !OpenLog(store) || !LoadKeywordFilter(filter, store.filterPath.get()))
        return false;
    return AppendAllArticles(store, filter);
}

uint32_t MarkRead(IndexRecord* records, uint32_t count) {
    uint32_t marked = 0;
    for (uint32_t i = 0; i < count; ++i) {
        if (!IsRead(records[i])) ++marked;
        records[i].flags |= kReadFlag;
    }
    return marked;
}

bool MarkRecordsRead(GroupStore& store) {
    const bool marked = VisitRecords(store, [&](IndexRecord* records, uint32_t first, uint32_t count) {
        const uint32_t newlyRead = MarkRead(records, count);
        if (!WriteRecords(store, records, first, count)) return false;
        store.header.unreadCount -= std::min(newlyRead, store.header.unreadCount);
        return true;
    });
    if (marked) store.header.unreadCount = 0;
    return marked;
}

bool RefilterRecord(GroupStore& store, const KeywordFilter& filter, uint32_t number) {
    IndexRecord record;
    if (!ReadRecord(store, record, number)) return false;
    const NarrowText subject = ReadSubjectText(store.log, record);
    if (!subject) return GetError() == kErrorInvalidData;  // unknown, so its priority stays
    const uint32_t before = PriorityOf(record);
    const uint32_t priority = MatchKeywordFilter(filter, subject.get());
    if (priority == before) return true;
    SetPriority(record, priority);
    if (!WriteRecord(store, record, number)) return false;
    if (before == kPriorityHigh) --store.header.highCount;
    if (before == kPriorityLow) --store.header.lowCount;
    CountPriority(store.header, priority);
    return true;
}

bool CountRecords(GroupStore& store, RecordCounts& counts) {
    return VisitRecords(store, [&](const IndexRecord* records, uint32_t, uint32_t count) {
        for (uint32_t i = 0; i < count; ++i)
            CountRecord(counts, records[i]);
        return true;
    });
}

bool CountPriorities(GroupStore& store) {
    RecordCounts counts;
    const bool counted = CountRecords(store, counts);
    store.header.highCount = counts.highCount;
    store.header.lowCount = counts.lowCount;
    return counted;
}

bool RefilterRecords(GroupStore& store) {
    KeywordFilter filter;
    if (!LoadKeywordFilter(filter, store.filterPath.get()) || !OpenLog(store) || !CountPriorities(store)) {
        return false;
    }
    for (uint32_t number = 0; number < store.header.recordCount; ++number) {
        if (!RefilterRecord(store, filter, number)) return false;
    }
    return true;
}

// What was counted may have been lost on its way to the disk.
void CountWhatStands(GroupStore& store) {
    RecordCounts counts;
    if (CountRecords(store, counts)) CopyCounts(store.header, counts);
}

// Runs `change` over the open index, then writes the header with the counts reached, whatever happened. The
// first failure's error is the one that stays.
bool ChangeAndCount(GroupStore& store, bool (*change)(GroupStore&)) {
    const bool changed = change(store) && FlushDataFile(store.index);
    const unsigned error = GetError();
    if (!changed) CountWhatStands(store);
    const bool saved = WriteHeader(store);
    return changed ? saved : Fail(error);
}

bool ChangeRecords(GroupStore& store, bool (*change)(GroupStore&)) {
    if (!ReadHeader(store) || !OpenIndex(store)) return false;
    const bool changed = RefreshHeader(store) && ChangeAndCount(store, change);
    const ErrorKeeper keeper;
    CloseDataFile(store.index);
    CloseDataFile(store.log);
    return changed;
}

}  // namespace

bool RebuildFromLog(GroupStore& store) {
    const bool rebuilt = RebuildRecords(store);
    const unsigned error = GetError();
    const bool saved = WriteHeader(store);
    const bool closed = CloseDataFile(store.index);
    CloseDataFile(store.log);
    return (rebuilt || Fail(error)) && saved && closed;
}

bool Refilter(GroupStore& store) {
    return ChangeRecords(store, RefilterRecords);
}

bool MarkAllRead(GroupStore& store) {
    return ChangeRecords(store, MarkRecordsRead);
}
