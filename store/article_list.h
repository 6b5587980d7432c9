// The subject view's handle on one group: which records the view shows, in which order, and the page of them
// that is on the screen. Rows count from 0 over all visible records: all high ones in the index's order, then
// the normal, then the low. All functions answer false with the reason in the last-error value.
#pragma once

#include "store/group_store.h"
#include "store/record.h"
#include "text/owned.h"

struct ArticleList {
    GroupStore store;
    uint32_t pageSize = 0;        // rows that the view can show at once
    uint32_t visibleCount = 0;    // records that pass the view options
    uint32_t rowsInPage = 0;      // records loaded
    uint32_t firstRow = 0;        // row of the first loaded record
    IndexRecord* page = nullptr;  // pageSize records, on the heap below
    HeapOwner heap;
    uint32_t* rowMap = nullptr;             // record number of each visible row, on the heap
    bool open = false;                      // opened from a group: closing writes the header back
    bool showRead = false;                  // the `ViewReadArticle` option
    uint32_t priorityLevel = kPriorityLow;  // the `PriorityViewLevel` option
    uint32_t currentInPage = 0;             // the selected record, counted within the page
};

// Takes the group's names and reads its header. Closes what was open before, without writing.
[[nodiscard]] bool OpenArticleList(ArticleList& list, const wchar_t* folder, const wchar_t* group);

// Reads the header, makes the row map for the view options and loads the page at row 0. A failure leaves the
// list empty; it may be built again.
[[nodiscard]] bool BuildArticleList(ArticleList& list, uint32_t pageSize);

// Gives a list that was built pages of another size, and loads the one at the same row. What the list shows
// stays. Error 8 leaves it as it was.
[[nodiscard]] bool SetPageSize(ArticleList& list, uint32_t pageSize);

// Loads the page that begins at `firstRow`; past the end it is empty.
[[nodiscard]] bool LoadPage(ArticleList& list, uint32_t firstRow);

// Sets or clears flag bits of a loaded row and writes its record back at once; a change of the read bit
// counts in the unread count. Error 87 for a row that is not in the page.
[[nodiscard]] bool SetFlags(ArticleList& list, uint32_t row, uint32_t bits);
[[nodiscard]] bool ClearFlags(ArticleList& list, uint32_t row, uint32_t bits);

// Writes the header, with the position that the view was left at, when a group is open. Error 2, and no new
// file, when the index has vanished.
[[nodiscard]] bool CloseArticleList(ArticleList& list);

// The selected record's whole subject text; null when there is none, on an error, or with error 8.
WideText ReadSelectedSubject(const ArticleList& list);

// Longest text of the loaded page in bytes.
uint32_t LongestSubject(const ArticleList& list);
uint32_t LongestFrom(const ArticleList& list);
