// Appends articles to a group: first to the log, then to the index (store/log.h, store/index.h).
#pragma once

#include "filters/keyword_filter.h"
#include "store/group_store.h"

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

// Adds the record of the article that stands in the open log from `start` to `end` and counts it. The index
// is open. The header on disk is not rewritten.
[[nodiscard]] bool AppendRecord(GroupStore& store, uint32_t start, uint32_t end, const HeaderBlock& head,
                                const KeywordFilter& filter);
