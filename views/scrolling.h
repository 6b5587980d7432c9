// The arithmetic of paging and scrolling, on plain numbers. Knows no platform.
#pragma once

#include <cstdint>

enum class ScrollKind {
    kList,         // rows with a cursor; going a page further from the last one is reported
    kText,         // lines, and a page of blank ones behind them
    kTextGoingOn,  // the same; going further is reported as soon as the last line is in sight
};

struct ScrollState {
    uint32_t page = 1;    // P: rows or lines a page, at least 1
    uint32_t top = 0;     // T: the first one in sight
    uint32_t total = 0;   // N: all of them, a text's blank page included
    uint32_t cursor = 0;  // a list's: counted from the top row
    ScrollKind kind = ScrollKind::kList;
};

enum class ScrollResult {
    kNothing,  // the top stays
    kMoved,    // the top has changed
    kAtEnd,    // the top stays, and the view reports that the user wants to go further
};

// Two rows or lines of the old page stay in sight; a page too small for that moves by one.
uint32_t PageStep(const ScrollState& state);

ScrollResult PageDown(ScrollState& state);
ScrollResult PageUp(ScrollState& state);
ScrollResult LineDown(ScrollState& state);
ScrollResult LineUp(ScrollState& state);

// The scroll bar's thumb. The top stays one that fills the page.
ScrollResult ThumbTo(ScrollState& state, uint32_t position);

// The scroll bar's maximum: what follows the first page, a text's blank page left out, or the page itself
// when that is nothing. Less than a page gives a negative value, which the bar takes as no range.
int ScrollMaximum(const ScrollState& state);

// Whether the last line of a text is in sight.
bool EndIsVisible(const ScrollState& text);

// Move a list's cursor one row. At the page's edge the list scrolls instead: by a line with `lineScroll`,
// else by a page, with the cursor on the same row of the list. kNothing also when only the cursor moved.
ScrollResult CursorDown(ScrollState& list, bool lineScroll);
ScrollResult CursorUp(ScrollState& list, bool lineScroll);

// Goes to a list's first or last row, or to a text's first or last page; `direction` is below 0 for the
// first.
void GoToEnd(ScrollState& state, int direction);

// Gives the list pages of `page` rows. The cursor keeps its row of the list and stays in sight; the page
// stays full.
void ResizePage(ScrollState& list, uint32_t page);

// Puts the cursor on a row of the list, and the row into the page. False when there is no such row.
bool MoveTo(ScrollState& list, uint32_t row);

inline uint32_t CursorRow(const ScrollState& list) {
    return list.top + list.cursor;
}
