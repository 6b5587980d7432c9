// The index file's header and record, byte for byte, and the fields that are read from an article's head. All
// numbers are little-endian; texts are Shift_JIS, NUL-padded. Knows no platform.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "filters/priority.h"
#include "store/header_block.h"

constexpr uint32_t kIndexVersion = 5;
constexpr uint32_t kNoneFetched = 0xFFFFFFFF;  // "last fetched" after catch-up on the server

constexpr std::size_t kStatusSize = 64;
constexpr std::size_t kSubjectSize = 48;
constexpr std::size_t kDateSize = 4;
constexpr std::size_t kFromSize = 16;

//  offset size
//       0    4  version (5)
//       4    4  number of the last article fetched; 0 in a new index, 0xFFFFFFFF after catch-up on the server
//       8    4  the server's last article number at the last GROUP
//      12    4  reserved, carried through
//      16    4  number of records that follow
//      20    4  position that the subject view was left at
//      24   64  text of the group's last download result
//      88    4  unread records
//      92    4  records of high priority
//      96    4  records of low priority
struct IndexHeader {
    uint32_t version = kIndexVersion;
    uint32_t lastFetched = 0;
    uint32_t serverLast = 0;
    uint32_t reserved = 0;
    uint32_t recordCount = 0;
    uint32_t savedPosition = 0;
    char statusText[kStatusSize] = {};
    uint32_t unreadCount = 0;
    uint32_t highCount = 0;
    uint32_t lowCount = 0;
};
constexpr uint32_t kHeaderSize = sizeof(IndexHeader);
static_assert(sizeof(IndexHeader) == 100 && offsetof(IndexHeader, unreadCount) == 88);

//  offset size
//       0    4  flags: bit 0 read, bits 1-2 priority (0 normal, 1 low, 2 high)
//       4    4  article number on the server
//       8    4  log offset of the article's first byte
//      12    4  log length, separator line included
//      16   48  subject, at most 47 bytes
//      64    4  date: two digits of the month, two of the day
//      68   16  sender's name, at most 15 bytes
//      84    4  log offset of the subject's text
//      88    4  length of the subject's text
struct IndexRecord {
    uint32_t flags = 0;
    uint32_t articleNumber = 0;
    uint32_t logOffset = 0;
    uint32_t logLength = 0;
    char subject[kSubjectSize] = {};
    char date[kDateSize] = {};
    char from[kFromSize] = {};
    uint32_t subjectTextOffset = 0;
    uint32_t subjectTextLength = 0;
};
constexpr uint32_t kRecordSize = sizeof(IndexRecord);
static_assert(sizeof(IndexRecord) == 92 && offsetof(IndexRecord, subjectTextOffset) == 84);

constexpr uint32_t kReadFlag = 1;
constexpr uint32_t kPriorityShift = 1;
constexpr uint32_t kPriorityMask = 3 << kPriorityShift;

inline bool IsRead(const IndexRecord& record) {
    return (record.flags & kReadFlag) != 0;
}

inline uint32_t PriorityOf(const IndexRecord& record) {
    return (record.flags & kPriorityMask) >> kPriorityShift;
}

inline void SetPriority(IndexRecord& record, uint32_t priority) {
    record.flags = (record.flags & ~kPriorityMask) | (priority << kPriorityShift);
}

// What the header counts of the records.
struct RecordCounts {
    uint32_t unreadCount = 0;
    uint32_t highCount = 0;
    uint32_t lowCount = 0;
};

template <class To, class From>
void CopyCounts(To& to, const From& from) {
    to.unreadCount = from.unreadCount;
    to.highCount = from.highCount;
    to.lowCount = from.lowCount;
}

// For all that counts records, by the names above.
template <class Counts>
void CountPriority(Counts& counts, uint32_t priority, uint32_t times = 1) {
    if (priority == kPriorityHigh) counts.highCount += times;
    if (priority == kPriorityLow) counts.lowCount += times;
}

template <class Counts>
void CountRecord(Counts& counts, const IndexRecord& record, uint32_t times = 1) {
    if (!IsRead(record)) counts.unreadCount += times;
    CountPriority(counts, PriorityOf(record), times);
}

// Fills the subject, date and from fields from an article's head: "(none)", "0000" and "(Unknown)" where it
// has nothing to show.
void FillHeadFields(IndexRecord& record, const HeaderBlock& head);

// Fills where the subject's text stands in the log, for an article that starts at `start`. Without a subject
// line that is an empty text at the start.
void FillSubjectRange(IndexRecord& record, const HeaderBlock& head, uint32_t start);

// The single fields, from the text behind the header's name; `text` may run on past the line's end.
void SubjectField(char (&field)[kSubjectSize], std::string_view text);
void DateField(char (&field)[kDateSize], std::string_view text);
void FromField(char (&field)[kFromSize], std::string_view text);
