// A group's index: a 100-byte header and one 92-byte record an article, in the order in which the articles
// were stored (store/record.h). All functions answer false with the reason in the last-error value.
#pragma once

#include <array>

#include "filters/keyword_filter.h"
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
    for (uint32_t first = 0; first < store.recordCount; first += count) {
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

// Adds the record of the article that stands in the open log from `start` to `end` and counts it. The index
// is open. The header on disk is not rewritten.
[[nodiscard]] bool AppendRecord(GroupStore& store, uint32_t start, uint32_t end, const HeaderBlock& head,
                                const KeywordFilter& filter);

// Makes all records anew from the log, and writes the header. A log that ends inside an article is complete
// up to the article before it.
[[nodiscard]] bool RebuildFromLog(GroupStore& store);

// Gives every record the priority that the group's filter says now. After a failure the header still counts
// what the records say.
[[nodiscard]] bool Refilter(GroupStore& store);

// Sets the read bit of every record (catch-up of the stored articles). After a failure the header still
// counts what the records say.
[[nodiscard]] bool MarkAllRead(GroupStore& store);

// The version word; 1 for a text header (a word above 500). Error 2 when there is no index, 13 when it is
// shorter than a version word.
[[nodiscard]] bool ProbeVersion(GroupStore& store, uint32_t& version);

enum class IndexState {
    kReady,           // version 5, or made so
    kUnknownVersion,  // neither of the versions 1 to 5; nothing was touched, error 13
    kFailed,
};

// Start-up's check of one group: an older index becomes version 5, a missing one is made from the log.
IndexState BringUpToDate(GroupStore& store);

enum class CutOffUpgrade {
    kNone,    // no new index, or one that was never finished, which is removed
    kTaken,   // it has the index's name now
    kFailed,  // it may be all that is left of the read marks, and cannot be read or renamed now
};

// For an index that is missing: takes over the new one of a conversion that was cut off after the old one had
// gone.
CutOffUpgrade FinishUpgrade(const GroupStore& store);

// Makes a missing index from the log. A log that holds a line which is too long gives the articles before it
// and the failure 234; after any other failure there is no index still.
[[nodiscard]] bool MakeIndex(GroupStore& store);

// Converts an index of version 1 to 4 to version 5. After a failure the old index stands.
[[nodiscard]] bool UpgradeIndex(GroupStore& store, uint32_t version);
