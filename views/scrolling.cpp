#include "views/scrolling.h"

namespace {

// The last top row that fills the page.
uint32_t LastTop(const ScrollState& state) {
    return state.total > state.page ? state.total - state.page : 0;
}

// A second page, less the two rows that stay in sight, follows the first.
bool HasWholeStep(const ScrollState& state) {
    const uint64_t end = static_cast<uint64_t>(state.top) + state.page + PageStep(state);
    return end <= state.total;
}

bool HasLineBelow(const ScrollState& state) {
    return static_cast<uint64_t>(state.top) + state.page + 1 <= state.total;
}

bool GoesOn(const ScrollState& state) {
    return state.kind == ScrollKind::kTextGoingOn && EndIsVisible(state);
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
ScrollResult PageWithCursor(ScrollState& list, ScrollResult (*page)(ScrollState&)) {
    const uint32_t row = CursorRow(list);
    const ScrollResult result = page(list);
    const uint32_t below = row > list.top ? row - list.top : 0;
    list.cursor = below < list.page ? below : list.page - 1;
    return result;
}

}  // namespace

uint32_t PageStep(const ScrollState& state) {
    return state.page > 3 ? state.page - 2 : 1;
}

ScrollResult PageDown(ScrollState& state) {
    if (GoesOn(state)) return ScrollResult::kAtEnd;
    if (HasWholeStep(state)) return MoveTop(state, state.top + PageStep(state));
    const ScrollResult result = MoveTop(state, LastTop(state));
    const bool reports = state.kind == ScrollKind::kList && result == ScrollResult::kNothing;
    return reports ? ScrollResult::kAtEnd : result;
}

ScrollResult PageUp(ScrollState& state) {
    return StepBack(state, PageStep(state));
}

ScrollResult LineDown(ScrollState& state) {
    if (GoesOn(state)) return ScrollResult::kAtEnd;
    return HasLineBelow(state) ? MoveTop(state, state.top + 1) : ScrollResult::kNothing;
}

ScrollResult LineUp(ScrollState& state) {
    return StepBack(state, 1);
}

ScrollResult ThumbTo(ScrollState& state, uint32_t position) {
    const uint32_t last = LastTop(state);
    return MoveTop(state, position < last ? position : last);
}

int ScrollMaximum(const ScrollState& state) {
    const uint32_t pages = state.kind == ScrollKind::kList ? 1 : 2;
    const uint32_t beyond = state.total - pages * state.page;
    return static_cast<int>(beyond == 0 ? state.page : beyond);
}

bool EndIsVisible(const ScrollState& text) {
    return static_cast<uint64_t>(text.total) <= static_cast<uint64_t>(text.top) + text.page + text.page;
}

ScrollResult CursorDown(ScrollState& list, bool lineScroll) {
    const bool lastOfPage = list.cursor + 1 >= list.page;
    const bool lastOfList = CursorRow(list) + 1 >= list.total;
    if (lastOfPage || lastOfList) return lineScroll ? LineDown(list) : PageWithCursor(list, PageDown);
    ++list.cursor;
    return ScrollResult::kNothing;
}

ScrollResult CursorUp(ScrollState& list, bool lineScroll) {
    if (list.cursor == 0) return lineScroll ? LineUp(list) : PageWithCursor(list, PageUp);
    --list.cursor;
    return ScrollResult::kNothing;
}

void GoToEnd(ScrollState& state, int direction) {
    const bool list = state.kind == ScrollKind::kList;
    const uint32_t shown = list ? state.page : state.page + state.page;  // the blank page with the last one
    const uint32_t last = state.total > shown ? state.total - shown : 0;
    state.top = direction > 0 ? last : 0;
    state.cursor = direction > 0 && list && state.total > 0 ? state.total - 1 - last : 0;
}

void ResizePage(ScrollState& list, uint32_t page) {
    const uint32_t row = CursorRow(list);
    list.page = page;
    if (list.top > LastTop(list)) list.top = LastTop(list);
    if (row >= list.top + page) list.top = row - page + 1;
    list.cursor = row - list.top;
}

bool MoveTo(ScrollState& list, uint32_t row) {
    if (row >= list.total) return false;
    while (row >= list.top + list.page && PageDown(list) == ScrollResult::kMoved) {
    }
    while (row < list.top && PageUp(list) == ScrollResult::kMoved) {
    }
    list.cursor = row - list.top;
    return true;
}
