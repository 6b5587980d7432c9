#include "views/scrolling.h"

namespace {

// The last top row that fills the page.
uint32_t LastTop(const ScrollState& state) {
    return state.total > state.page ? state.total - state.page : 0;
}

// A second page, less the two rows that stay in sight, lies behind the first.
bool HasWholeStep(const ScrollState& state) {
    const uint64_t end = static_cast<uint64_t>(state.top) + state.page + PageStep(state);
    return end <= state.total;
}

ScrollResult MoveTop(ScrollState& state, uint32_t top) {
    if (state.top == top) return ScrollResult::kNothing;
    state.top = top;
    return ScrollResult::kMoved;
}

ScrollResult StepBack(ScrollState& state, uint32_t step) {
    return MoveTop(state, state.top > step ? state.top - step : 0);
}

// The cursor stays on its row of the list where the page still shows that row. A page of one row never does.
void KeepCursorOn(ListScroll& list, uint32_t row) {
    const ScrollState& rows = list.rows;
    const uint32_t below = row > rows.top ? row - rows.top : 0;
    list.cursor = below < rows.page ? below : rows.page - 1;
}

bool HasLineBelow(const ScrollState& state) {
    return static_cast<uint64_t>(state.top) + state.page + 1 <= state.total;
}

}  // namespace

uint32_t PageStep(const ScrollState& state) {
    return state.page > 3 ? state.page - 2 : 1;
}

ScrollResult PageDown(ListScroll& list) {
    ScrollState& rows = list.rows;
    if (HasWholeStep(rows)) return MoveTop(rows, rows.top + PageStep(rows));
    const ScrollResult result = MoveTop(rows, LastTop(rows));
    return result == ScrollResult::kNothing ? ScrollResult::kAtEnd : result;
}

ScrollResult PageUp(ListScroll& list) {
    return StepBack(list.rows, PageStep(list.rows));
}

ScrollResult LineDown(ListScroll& list) {
    return HasLineBelow(list.rows) ? MoveTop(list.rows, list.rows.top + 1) : ScrollResult::kNothing;
}

ScrollResult LineUp(ListScroll& list) {
    return StepBack(list.rows, 1);
}

ScrollResult CursorDown(ListScroll& list, bool lineScroll) {
    const bool lastOfPage = list.cursor + 1 >= list.rows.page;
    const bool lastOfList = CursorRow(list) + 1 >= list.rows.total;
    if (!lastOfPage && !lastOfList) {
        ++list.cursor;
        return ScrollResult::kNothing;
    }
    if (lineScroll) return LineDown(list);
    const uint32_t row = CursorRow(list);
    const ScrollResult result = PageDown(list);
    if (result == ScrollResult::kMoved) KeepCursorOn(list, row);
    return result;
}

ScrollResult CursorUp(ListScroll& list, bool lineScroll) {
    if (list.cursor > 0) {
        --list.cursor;
        return ScrollResult::kNothing;
    }
    if (lineScroll) return LineUp(list);
    const uint32_t row = CursorRow(list);
    const ScrollResult result = PageUp(list);
    if (result == ScrollResult::kMoved) KeepCursorOn(list, row);
    return result;
}

ScrollResult ThumbTo(ListScroll& list, uint32_t position) {
    const uint32_t last = LastTop(list.rows);
    return MoveTop(list.rows, position < last ? position : last);
}

void ResizePage(ListScroll& list, uint32_t page) {
    ScrollState& rows = list.rows;
    const uint32_t row = CursorRow(list);
    rows.page = page;
    if (rows.top > LastTop(rows)) rows.top = LastTop(rows);
    if (row >= rows.top + page) rows.top = row - page + 1;
    list.cursor = row - rows.top;
}

bool MoveTo(ListScroll& list, uint32_t row) {
    ScrollState& rows = list.rows;
    if (row >= rows.total) return false;
    while (row >= rows.top + rows.page && PageDown(list) == ScrollResult::kMoved) {
    }
    while (row < rows.top && PageUp(list) == ScrollResult::kMoved) {
    }
    list.cursor = row - rows.top;
    return true;
}

int ListScrollMaximum(const ScrollState& rows) {
    return static_cast<int>(rows.total == rows.page ? rows.page : rows.total - rows.page);
}

bool EndIsVisible(const ScrollState& text) {
    return static_cast<uint64_t>(text.total) <= static_cast<uint64_t>(text.top) + text.page + text.page;
}

ScrollResult TextPageDown(ScrollState& text, bool autoNext) {
    if (autoNext && EndIsVisible(text)) return ScrollResult::kAtEnd;
    if (HasWholeStep(text)) return MoveTop(text, text.top + PageStep(text));
    const ScrollResult result = MoveTop(text, LastTop(text));
    return result == ScrollResult::kNothing && autoNext ? ScrollResult::kAtEnd : result;
}

ScrollResult TextPageUp(ScrollState& text) {
    return StepBack(text, PageStep(text));
}

ScrollResult TextLineDown(ScrollState& text, bool autoNext) {
    if (autoNext && EndIsVisible(text)) return ScrollResult::kAtEnd;
    if (HasLineBelow(text)) return MoveTop(text, text.top + 1);
    return autoNext ? ScrollResult::kAtEnd : ScrollResult::kNothing;
}

ScrollResult TextLineUp(ScrollState& text) {
    return StepBack(text, 1);
}

ScrollResult TextThumbTo(ScrollState& text, uint32_t position) {
    const uint32_t last = LastTop(text);
    return MoveTop(text, position < last ? position : last);
}

int TextScrollMaximum(const ScrollState& text) {
    const uint32_t beyond = text.total - 2 * text.page;
    return static_cast<int>(beyond == 0 ? text.page : beyond);
}
