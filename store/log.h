// A group's log: every stored article, head and body, back to back (RFC 1036 header lines, Shift_JIS, CR LF).
//
//   header lines      the kept ones, folded lines joined
//   "X-Local-Seq: n"  the article's number on the server; the last header line
//   empty line
//   body lines        without dot-stuffing
//   "================" CR LF
#pragma once

#include <cstdint>

#include "filters/keyword_filter.h"
#include "store/group_store.h"
#include "store/header_block.h"
#include "store/record.h"

constexpr char kSeparator[] = "================\r\n";  // an article's last line
constexpr uint32_t kLineSize = 1024;                   // longest line that a scan takes, its NUL included

// One article being appended. The store's log and index are open; the store outlives the writer. One writer
// may append any number of articles of its group, one after the other.
struct ArticleWriter {
    GroupStore* store = nullptr;  // not owned
    HeaderBlock head;
    KeywordFilter filter;  // the group's keywords, loaded with the first article
    bool filterLoaded = false;
    uint32_t start = 0;  // log offset of the article's first byte
    uint32_t articleNumber = 0;
};

// Begins article `number` at the log's end. Error 8, or the filter file's.
[[nodiscard]] bool BeginArticle(ArticleWriter& writer, uint32_t number);

// Adds the sequence line, then writes the head and an empty line to the log. Header lines go into writer.head
// before (AddHeaderLine).
[[nodiscard]] bool FinishHead(ArticleWriter& writer);

// Writes one line as it is, its line end included.
[[nodiscard]] bool WriteBodyLine(ArticleWriter& writer, std::string_view line);

// Puts what was written so far on disk, so that a full disk is met before the index is touched.
[[nodiscard]] bool FinishBody(ArticleWriter& writer);

// Writes the separator, then the article's record: the log is on disk before the index names it. The index
// header is the caller's to write.
[[nodiscard]] bool FinishArticle(ArticleWriter& writer);

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
