// A group's log: every stored article, head and body, back to back (RFC 1036 header lines, Shift_JIS, CR LF).
//
//   header lines      the kept ones, folded lines joined
//   "X-Local-Seq: n"  the article's number on the server; the last header line
//   empty line
//   body lines        without dot-stuffing
//   "================" CR LF
#pragma once

#include <cstdint>

#include "store/group_store.h"
#include "store/header_block.h"
#include "store/record.h"

constexpr char kSeparator[] = "================\r\n";  // an article's last line
constexpr uint32_t kLineSize = 1024;                   // longest line that a scan takes, its NUL included

// Whether the article that the record names is within the log, as far as its size says.
bool IsInLog(const DataFile& log, const IndexRecord& record);

// The article's bytes, separator included, as a new wide text. Null on failure: error 8, 13 when the range
// does not lie inside the log, or the file's error. The store's own log handle is not used.
WideText ReadArticle(const GroupStore& store, uint32_t offset, uint32_t length);

// The subject text that a record names. Null on failure: error 8, 13 when the text does not lie inside the
// record's own article or the log, or the file's error.
WideText ReadSubjectText(const GroupStore& store, const IndexRecord& record);

// The same from an open log, in the stored code page.
NarrowText ReadSubjectText(DataFile& log, const IndexRecord& record);

// Reads header lines up to the empty line that ends them, or to the end of the file. Error 234 for a line of
// 1024 bytes or more, 8, or the file's.
[[nodiscard]] bool ReadHeaderBlock(DataFile& file, HeaderBlock& head);

// Walks the articles of an open log from its start.
struct LogScanner {
    DataFile* log = nullptr;  // not owned
    uint32_t count = 0;       // bytes of the log taken so far
    HeaderBlock head;         // of the article found last
    uint32_t start = 0;       // its extent
    uint32_t end = 0;
    char line[kLineSize];
};

enum class ScanResult {
    kArticle,
    kEnd,     // the log's end; an article that it cuts off does not count
    kFailed,  // a line of 1024 bytes or more (234), no memory (8), or the file's error
};

ScanResult NextArticle(LogScanner& scanner);
