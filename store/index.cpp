#include "store/index.h"

#include <cstring>

#include "text/convert.h"
#include "text/last_error.h"
#include "text/sjis.h"

namespace {

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
    header = store.header;
    header.version = kIndexVersion;
    std::memset(header.statusText, 0, kStatusSize);
    CopyWholeCharacters(header.statusText, kStatusSize - 1, status.get(), std::strlen(status.get()));
    return true;
}

bool TakeHeader(GroupStore& store, IndexHeader& header) {
    header.statusText[kStatusSize - 1] = '\0';
    store.statusText = ToWide(header.statusText);
    store.header = header;
    return store.statusText != nullptr;
}

bool TakeHeaderFrom(DataFile& index, GroupStore& store, uint32_t mostRecords) {
    IndexHeader header;
    if (!ReadExactly(index, &header, kHeaderSize)) return false;
    if (header.version != kIndexVersion || header.recordCount > mostRecords) return Fail(kErrorInvalidData);
    return TakeHeader(store, header);
}

// A header never counts records that are not there.
bool WriteTrueHeader(DataFile& index, const GroupStore& store) {
    if (store.header.recordCount > RecordsInFile(index)) return Fail(kErrorInvalidData);
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

}  // namespace

bool ReadHeader(GroupStore& store) {
    Reset(store);
    if (!store.indexPath) return Fail(kErrorInvalidArgument);
    DataFile file;
    return OpenForReading(file, store.indexPath.get(), FileMode::kRead, kHeaderSize) &&
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
    if (first >= store.header.recordCount) return Fail(kErrorInvalidArgument);
    IndexSession session(store);
    if (!session.Open()) return false;
    const uint32_t inFile = RecordsInFile(store.index);
    if (first >= inFile) return true;
    const uint32_t readable = Smaller(wanted, Smaller(store.header.recordCount, inFile) - first);
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

bool WriteRecords(GroupStore& store, const IndexRecord* records, uint32_t first, uint32_t count) {
    SeekTo(store.index, OffsetOf(first));
    return WriteBytes(store.index, records, count * kRecordSize);
}
