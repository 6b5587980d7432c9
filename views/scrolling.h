// The arithmetic of paging and scrolling, on plain numbers. Knows no platform.
#pragma once

#include <cstdint>

enum class ScrollKind {
    kList,         // rows with a cursor; a page further than the last is asked for: reported
    kText,         // lines, with a page of blank ones behind them
    kTextGoingOn,  // the same; once the last line is in sight, going further is reported
};

struct ScrollState {
    uint32_t page = 1;    // P: rows or lines a page, at least 1
    uint32_t top = 0;     // T: the first one in sight
    uint32_t total = 0;   // N: all of them, a text's blank page included
    uint32_t cursor = 0;  // a list's: counted from the top row
    ScrollKind kind = ScrollKind::kList;
};

enum class ScrollResult {
    kNothing,  // stays where it is
    kMoved,    // the top has changed
    kAtEnd,    // asked to go past the end: the view reports it
};

// Two rows or lines of the old page stay in sight; a page too small for that moves by one.
uint32_t PageStep(const ScrollState& state);

ScrollResult PageDown(ScrollState& state);
ScrollResult PageUp(ScrollState& state);
ScrollResult LineDown(ScrollState& state);
ScrollResult LineUp(ScrollState& state);

// The scroll bar's thumb. The top stays one that fills the page.
ScrollResult ThumbTo(ScrollState& state, uint32_t position);

// The scroll bar's maximum: what comes after the first page, without a text's blank one, but the page itself
// when that is nothing. What is shorter gives a negative value, which the bar takes as no range.
int ScrollMaximum(const ScrollState& state);

// Whether the last line of a text is in sight.
bool EndIsVisible(const ScrollState& text);

// Moves a list's cursor one row; at the page's edge the list scrolls, by a line with `lineScroll`, else by a
// page with the cursor on the same row of the list. kNothing also when only the cursor moved.
ScrollResult CursorDown(ScrollState& list, bool lineScroll);
ScrollResult CursorUp(ScrollState& list, bool lineScroll);

// Gives the list pages of `page` rows. The cursor stays on its row, and that in the page; the page stays
// full.
void ResizePage(ScrollState& list, uint32_t page);

// Puts the cursor on a row of the list, and the row into the page. False when there is no such row.
bool MoveTo(ScrollState& list, uint32_t row);

inline uint32_t CursorRow(const ScrollState& list) {
    return list.top + list.cursor;
}
