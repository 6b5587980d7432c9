// The arithmetic of paging and scrolling, on plain numbers: P rows or lines a page, T the top one, N all of
// them. Knows no platform. The list (subject view) and the text (article view) have rules of their own.
#pragma once

#include <cstdint>

struct ScrollState {
    uint32_t page = 1;   // P, at least 1
    uint32_t top = 0;    // T
    uint32_t total = 0;  // N
};

enum class ScrollResult {
    kNothing,  // stays where it is
    kMoved,    // the top has changed
    kAtEnd,    // asked to go past the end: the view tells its parent
};

// Two rows or lines of the old page stay in sight; a page too small for that moves by one.
uint32_t PageStep(const ScrollState& state);

// The subject view's rows.

struct ListScroll {
    ScrollState rows;
    uint32_t cursor = 0;  // row of the cursor, counted from the top row
};

ScrollResult PageDown(ListScroll& list);
ScrollResult PageUp(ListScroll& list);
ScrollResult LineDown(ListScroll& list);
ScrollResult LineUp(ListScroll& list);

// Moves the cursor one row; at the page's edge the list scrolls, by a line with `lineScroll`, else by a page
// with the cursor on the same row of the list. kNothing also when only the cursor moved.
ScrollResult CursorDown(ListScroll& list, bool lineScroll);
ScrollResult CursorUp(ListScroll& list, bool lineScroll);

// The scroll bar's thumb. The top stays one that fills the page.
ScrollResult ThumbTo(ListScroll& list, uint32_t position);

// Gives the list pages of `page` rows. The cursor stays on its row, and that in the page; the page stays
// full.
void ResizePage(ListScroll& list, uint32_t page);

// Puts the cursor on a row of the list, and the row into the page. False when there is no such row.
bool MoveTo(ListScroll& list, uint32_t row);

inline uint32_t CursorRow(const ListScroll& list) {
    return list.rows.top + list.cursor;
}

// The scroll bar's maximum: what lies beyond one page, but the page itself when that is nothing. A list
// shorter than a page gives a negative value, which the bar takes as no range.
int ListScrollMaximum(const ScrollState& rows);

// The article view's lines. N counts a page of blank lines behind the text.

// Whether the last line of the text is in sight.
bool EndIsVisible(const ScrollState& text);

// With `autoNext`, going on where the end is visible answers kAtEnd.
ScrollResult TextPageDown(ScrollState& text, bool autoNext);
ScrollResult TextPageUp(ScrollState& text);
ScrollResult TextLineDown(ScrollState& text, bool autoNext);
ScrollResult TextLineUp(ScrollState& text);
ScrollResult TextThumbTo(ScrollState& text, uint32_t position);

int TextScrollMaximum(const ScrollState& text);
