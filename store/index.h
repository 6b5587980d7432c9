// A group's index: a 100-byte header and one 92-byte record an article, in the order in which the articles
// were stored (store/record.h). All functions answer false with the reason in the last-error value.
#pragma once

#include <array>

#include "store/group_store.h"
#include "store/record.h"
#include "text/last_error.h"

// Resets the store and takes the header's values over. Error 13 for a short file or another version, 87
// without names, 8. The record count is what the header says, true or not: it is shown, and no more.
[[nodiscard]] bool ReadHeader(GroupStore& store);

// Takes the header over from the open index, which stays open: whoever opens one for writing may have read a
// header that somebody has changed since. Error 13 also when it counts more records than the file has, since
// writing would go on behind them. A file that has more is the trace of a run that was cut off.
[[nodiscard]] bool RefreshHeader(GroupStore& store);

// Writes the store's values as the header, through the open index or, when it is closed, by opening it. The
// status text is cut to 63 bytes. Error 13 when the file has fewer records than the store counts.
[[nodiscard]] bool WriteHeader(GroupStore& store);

// The same into another file, at its start, whatever it holds.
[[nodiscard]] bool WriteHeaderTo(DataFile& file, const GroupStore& store);

// Reads up to `count` records from record `first` on; `count` says how many there were. Error 87 when `first`
// is not below the record count. Opens and closes the index itself when it is closed.
[[nodiscard]] bool ReadRecords(GroupStore& store, IndexRecord* records, uint32_t first, uint32_t& count);

// One record, which must be there: error 13 when the file is shorter than the header says.
[[nodiscard]] bool ReadRecord(GroupStore& store, IndexRecord& record, uint32_t number);

// Calls visit(records, first, count) for all records that the header counts, some at a time, until it answers
// false. Error 13 when the file has fewer.
template <class Visit>
[[nodiscard]] bool VisitRecords(GroupStore& store, Visit visit) {
    std::array<IndexRecord, 32> records;
    uint32_t count = 0;
    for (uint32_t first = 0; first < store.header.recordCount; first += count) {
        count = static_cast<uint32_t>(records.size());
        if (!ReadRecords(store, records.data(), first, count)) return false;
        if (count == 0) return Fail(kErrorInvalidData);
        if (!visit(records.data(), first, count)) return false;
    }
    return true;
}

constexpr uint32_t kCurrentPosition = 0xFFFFFFFF;

// Writes the record at its place, or where the open index stands with kCurrentPosition. Opens and closes the
// index itself when it is closed.
[[nodiscard]] bool WriteRecord(GroupStore& store, const IndexRecord& record, uint32_t number);

// Writes `count` records from record `first` on into the open index.
[[nodiscard]] bool WriteRecords(GroupStore& store, const IndexRecord* records, uint32_t first,
                                uint32_t count);
