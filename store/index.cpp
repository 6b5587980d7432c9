#include "store/index.h"

#include <cstring>

#include "store/log.h"
#include "text/convert.h"
#include "text/last_error.h"
#include "text/sjis.h"

namespace {

constexpr uint32_t kHeaderSize = sizeof(IndexHeader);
constexpr uint32_t kRecordSize = sizeof(IndexRecord);
constexpr uint32_t kTextVersion = 1;
constexpr uint32_t kLargestVersionWord = 500;  // digits of a text header read as more

constexpr uint32_t kAnyCount = 0xFFFFFFFF;
constexpr uint32_t kMostRecords = (0xFFFFFFFF - kHeaderSize) / kRecordSize;

uint32_t OffsetOf(uint32_t number) {
    return kHeaderSize + kRecordSize * number;
}

// A damaged header may count more records than the file has.
uint32_t RecordsInFile(const DataFile& index) {
    return index.size < kHeaderSize ? 0 : (index.size - kHeaderSize) / kRecordSize;
}

uint32_t Smaller(uint32_t a, uint32_t b) {
    return a < b ? a : b;
}

bool MakeHeader(const GroupStore& store, IndexHeader& header) {
    const NarrowText status = ToNarrow(StatusText(store));
    if (!status) return false;
    CopyWholeCharacters(header.statusText, kStatusSize - 1, status.get(), std::strlen(status.get()));
    header.lastFetched = store.lastFetched;
    header.serverLast = store.serverLast;
    header.reserved = store.reserved;
    header.recordCount = store.recordCount;
    header.savedPosition = store.savedPosition;
    CopyCounts(header, store);
    return true;
}

bool TakeHeader(GroupStore& store, IndexHeader& header) {
    header.statusText[kStatusSize - 1] = '\0';
    store.statusText = ToWide(header.statusText);
    if (!store.statusText) return false;
    store.lastFetched = header.lastFetched;
    store.serverLast = header.serverLast;
    store.reserved = header.reserved;
    store.recordCount = header.recordCount;
    store.savedPosition = header.savedPosition;
    CopyCounts(store, header);
    return true;
}

bool TakeHeaderFrom(DataFile& index, GroupStore& store, uint32_t mostRecords) {
    IndexHeader header;
    if (!ReadExactly(index, &header, kHeaderSize)) return false;
    if (header.version != kIndexVersion || header.recordCount > mostRecords) return Fail(kErrorInvalidData);
    return TakeHeader(store, header);
}

// A header never counts records that are not there.
bool WriteTrueHeader(DataFile& index, const GroupStore& store) {
    if (store.recordCount > RecordsInFile(index)) return Fail(kErrorInvalidData);
    return WriteHeaderTo(index, store);
}

// Opens the index for one operation unless the caller holds it open already.
class IndexSession {
  public:
    explicit IndexSession(GroupStore& store) : store_(store), borrowed_(IsOpen(store.index)) {}
    IndexSession(const IndexSession&) = delete;
    IndexSession& operator=(const IndexSession&) = delete;
    ~IndexSession() {
        if (!borrowed_) CloseDataFile(store_.index);
    }

    bool Open() { return borrowed_ || OpenIndex(store_); }

    // What was written is on disk, also when the caller goes on holding the file.
    bool Finish() { return borrowed_ || CloseDataFile(store_.index); }

  private:
    GroupStore& store_;
    bool borrowed_;
};

// `subject` runs from behind "Subject: " to the line end, which counts.
uint32_t PriorityOfSubject(const KeywordFilter& filter, const NarrowText& line) {
    const std::size_t length = std::strlen(line.get());
    const std::size_t skipped = length < kSubjectName.size() ? length : kSubjectName.size();
    return MatchKeywordFilter(filter, line.get() + skipped);
}

bool ReadSubjectLine(DataFile& log, uint32_t start, const HeaderBlock& head, NarrowText& line) {
    const uint32_t length = head.subjectLine == kNoLine ? 0 : head.subjectLength;
    line = NewArray<char>(static_cast<std::size_t>(length) + 1);
    if (!line) return Fail(kErrorNoMemory);
    line[length] = '\0';
    if (length == 0) return true;
    const uint32_t position = log.position;
    SeekTo(log, start + head.subjectLine);
    const bool read = ReadExactly(log, line.get(), length);
    SeekTo(log, position);
    return read;
}

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
    store.recordCount = 0;
    CopyCounts(store, RecordCounts());
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
        SeekTo(store.index, OffsetOf(first));
        if (!WriteBytes(store.index, records, count * kRecordSize)) return false;
        store.unreadCount -= Smaller(newlyRead, store.unreadCount);
        return true;
    });
    if (marked) store.unreadCount = 0;
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
    if (before == kPriorityHigh) --store.highCount;
    if (before == kPriorityLow) --store.lowCount;
    CountPriority(store, priority);
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
    store.highCount = counts.highCount;
    store.lowCount = counts.lowCount;
    return counted;
}

bool RefilterRecords(GroupStore& store) {
    KeywordFilter filter;
    if (!LoadKeywordFilter(filter, store.filterPath.get()) || !OpenLog(store) || !CountPriorities(store)) {
        return false;
    }
    for (uint32_t number = 0; number < store.recordCount; ++number) {
        if (!RefilterRecord(store, filter, number)) return false;
    }
    return true;
}

bool MakeMissingIndex(GroupStore& store) {
    const CutOffUpgrade upgrade = FinishUpgrade(store);
    return upgrade == CutOffUpgrade::kTaken || (upgrade == CutOffUpgrade::kNone && MakeIndex(store));
}

// What was counted may have been lost on its way to the disk.
void CountWhatStands(GroupStore& store) {
    RecordCounts counts;
    if (CountRecords(store, counts)) CopyCounts(store, counts);
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

bool ReadHeader(GroupStore& store) {
    Reset(store);
    if (!store.indexPath) return Fail(kErrorInvalidArgument);
    DataFile file;
    return OpenDataFile(file, store.indexPath.get(), FileMode::kRead) &&
           TakeHeaderFrom(file, store, kAnyCount);
}

bool RefreshHeader(GroupStore& store) {
    SeekTo(store.index, 0);
    return TakeHeaderFrom(store.index, store, RecordsInFile(store.index));
}

bool WriteHeaderTo(DataFile& file, const GroupStore& store) {
    IndexHeader header;
    if (!MakeHeader(store, header)) return false;
    // What stands behind the header goes first: a header never counts records that are not there.
    if (!FlushDataFile(file)) return false;
    SeekTo(file, 0);
    return WriteBytes(file, &header, kHeaderSize) && FlushDataFile(file);
}

bool WriteHeader(GroupStore& store) {
    if (IsOpen(store.index)) return WriteTrueHeader(store.index, store);
    if (!store.indexPath) return Fail(kErrorInvalidArgument);
    DataFile file;
    return OpenDataFile(file, store.indexPath.get(), FileMode::kWrite) && WriteTrueHeader(file, store) &&
           CloseDataFile(file);
}

bool ReadRecords(GroupStore& store, IndexRecord* records, uint32_t first, uint32_t& count) {
    const uint32_t wanted = count;
    count = 0;
    if (first >= store.recordCount) return Fail(kErrorInvalidArgument);
    IndexSession session(store);
    if (!session.Open()) return false;
    const uint32_t inFile = RecordsInFile(store.index);
    if (first >= inFile) return true;
    const uint32_t readable = Smaller(wanted, Smaller(store.recordCount, inFile) - first);
    SeekTo(store.index, OffsetOf(first));
    if (!ReadExactly(store.index, records, readable * kRecordSize)) return false;
    count = readable;
    return true;
}

bool ReadRecord(GroupStore& store, IndexRecord& record, uint32_t number) {
    uint32_t count = 1;
    if (!ReadRecords(store, &record, number, count)) return false;
    return count == 1 || Fail(kErrorInvalidData);
}

bool WriteRecord(GroupStore& store, const IndexRecord& record, uint32_t number) {
    if (number > kMostRecords && number != kCurrentPosition) return Fail(kErrorInvalidArgument);
    IndexSession session(store);
    if (!session.Open()) return false;
    if (number != kCurrentPosition) SeekTo(store.index, OffsetOf(number));
    return WriteBytes(store.index, &record, kRecordSize) && session.Finish();
}

bool AppendRecord(GroupStore& store, uint32_t start, uint32_t end, const HeaderBlock& head,
                  const KeywordFilter& filter) {
    NarrowText subjectLine;
    if (!ReadSubjectLine(store.log, start, head, subjectLine)) return false;
    IndexRecord record;
    record.articleNumber = head.sequence;
    record.logOffset = start;
    record.logLength = end - start;
    FillHeadFields(record, head);
    FillSubjectRange(record, head, start);
    const uint32_t priority = PriorityOfSubject(filter, subjectLine);
    SetPriority(record, priority);
    if (!WriteRecord(store, record, store.recordCount)) return false;
    ++store.recordCount;
    CountRecord(store, record);
    return true;
}

bool RebuildFromLog(GroupStore& store) {
    const bool rebuilt = RebuildRecords(store);
    const unsigned error = GetError();
    const bool closed = CloseDataFile(store.index);
    CloseDataFile(store.log);
    if (!closed) return false;
    const bool saved = WriteHeader(store);
    return (rebuilt || Fail(error)) && saved;
}

bool Refilter(GroupStore& store) {
    return ChangeRecords(store, RefilterRecords);
}

bool MarkAllRead(GroupStore& store) {
    return ChangeRecords(store, MarkRecordsRead);
}

bool ProbeVersion(GroupStore& store, uint32_t& version) {
    if (!store.indexPath) return Fail(kErrorInvalidArgument);
    DataFile file;
    if (!OpenDataFile(file, store.indexPath.get(), FileMode::kReadWriteExisting)) return false;
    if (!ReadExactly(file, &version, sizeof(version))) return false;
    if (version > kLargestVersionWord) version = kTextVersion;
    return true;
}

IndexState BringUpToDate(GroupStore& store) {
    uint32_t version = 0;
    bool probed = ProbeVersion(store, version);
    if (!probed && GetError() == kErrorFileNotFound) {
        probed = MakeMissingIndex(store) && ProbeVersion(store, version);
    }
    if (!probed) return IndexState::kFailed;
    if (version == 0 || version > kIndexVersion) {
        SetError(kErrorInvalidData);
        return IndexState::kUnknownVersion;
    }
    if (version == kIndexVersion) return IndexState::kReady;
    return UpgradeIndex(store, version) ? IndexState::kReady : IndexState::kFailed;
}
