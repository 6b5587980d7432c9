// Paging and scrolling, worked out by hand for ten rows or lines a page (so a page moves by eight) and for
// pages too small for two rows to stay in sight.
#include <gtest/gtest.h>

#include "views/scrolling.h"

namespace {

constexpr ScrollResult kNothing = ScrollResult::kNothing;
constexpr ScrollResult kMoved = ScrollResult::kMoved;
constexpr ScrollResult kAtEnd = ScrollResult::kAtEnd;
constexpr ScrollKind kText = ScrollKind::kText;
constexpr ScrollKind kGoingOn = ScrollKind::kTextGoingOn;

struct ListRow {
    const char* sentence;
    uint32_t page, top, total, cursor;
    ScrollResult (*move)(ScrollState& list);
    ScrollResult result;
    uint32_t newTop, newCursor;
};

void CheckRow(const ListRow& row) {
    SCOPED_TRACE(row.sentence);
    ScrollState list{row.page, row.top, row.total, row.cursor};
    EXPECT_EQ(row.move(list), row.result);
    EXPECT_EQ(list.top, row.newTop);
    EXPECT_EQ(list.cursor, row.newCursor);
    EXPECT_EQ(list.page, row.page);
    EXPECT_EQ(list.total, row.total);
}

TEST(ListScrolling, PagesAndLines) {
    const ListRow rows[] = {
        {"a list of exactly a page is at its end", 10, 0, 10, 9, PageDown, kAtEnd, 0, 9},
        {"one row more moves by one", 10, 0, 11, 4, PageDown, kMoved, 1, 4},
        {"exactly a whole step", 10, 0, 18, 0, PageDown, kMoved, 8, 0},
        {"a row more than a whole step", 10, 0, 19, 0, PageDown, kMoved, 8, 0},
        {"two rows stay in sight in mid-list", 10, 20, 100, 6, PageDown, kMoved, 28, 6},
        {"three rows a page move by one", 3, 0, 10, 0, PageDown, kMoved, 1, 0},
        {"two rows a page do not stand still", 2, 0, 3, 0, PageDown, kMoved, 1, 0},
        {"one row a page ends at the last row", 1, 2, 3, 0, PageDown, kAtEnd, 2, 0},
        {"page up at the top", 10, 0, 45, 3, PageUp, kNothing, 0, 3},
        {"page up of less than a step", 10, 3, 45, 3, PageUp, kMoved, 0, 3},
        {"page up with two rows a page", 2, 1, 3, 0, PageUp, kMoved, 0, 0},
        {"a list of exactly a page", 10, 0, 10, 0, LineDown, kNothing, 0, 0},
        {"one row more", 10, 0, 11, 2, LineDown, kMoved, 1, 2},
        {"up at the top", 10, 0, 45, 2, LineUp, kNothing, 0, 2},
    };
    for (const ListRow& row : rows)
        CheckRow(row);
}

TEST(ListScrolling, TheCursorTakesThePageAlong) {
    const auto downByPage = [](ScrollState& list) { return CursorDown(list, false); };
    const auto downByLine = [](ScrollState& list) { return CursorDown(list, true); };
    const auto upByPage = [](ScrollState& list) { return CursorUp(list, false); };
    const auto upByLine = [](ScrollState& list) { return CursorUp(list, true); };
    const ListRow rows[] = {
        {"down within the page", 10, 0, 45, 3, downByPage, kNothing, 0, 4},
        {"a page further the cursor keeps its article", 10, 0, 45, 9, downByPage, kMoved, 8, 1},
        {"a short last page too", 10, 30, 45, 9, downByPage, kMoved, 35, 4},
        {"a line further it keeps its row", 10, 0, 45, 9, downByLine, kMoved, 1, 9},
        {"past the last article by pages", 10, 35, 45, 9, downByPage, kAtEnd, 35, 9},
        {"past the last article by lines", 10, 35, 45, 9, downByLine, kNothing, 35, 9},
        {"one row a page moves on", 1, 0, 3, 0, downByLine, kMoved, 1, 0},
        {"up within the page", 10, 8, 45, 1, upByPage, kNothing, 8, 0},
        {"a page back the cursor keeps its article", 10, 8, 45, 0, upByPage, kMoved, 0, 8},
        {"a line back it keeps its row", 10, 8, 45, 0, upByLine, kMoved, 7, 0},
        {"before the first article by pages", 10, 0, 45, 0, upByPage, kNothing, 0, 0},
    };
    for (const ListRow& row : rows)
        CheckRow(row);
}

TEST(ListScrolling, TheThumbKeepsThePageFull) {
    const ListRow rows[] = {
        {"to the middle", 10, 0, 45, 2, [](ScrollState& l) { return ThumbTo(l, 20); }, kMoved, 20, 2},
        {"beyond it", 10, 0, 45, 2, [](ScrollState& l) { return ThumbTo(l, 36); }, kMoved, 35, 2},
        {"the odd maximum of one page", 10, 0, 10, 2, [](ScrollState& l) { return ThumbTo(l, 10); }, kNothing,
         0, 2},
    };
    for (const ListRow& row : rows)
        CheckRow(row);
}

TEST(ListScrolling, MovesToARow) {
    struct Row {
        const char* sentence;
        uint32_t top, total, row;
        bool found;
        uint32_t newTop, newCursor;
    };
    const Row rows[] = {
        {"in the page", 8, 45, 17, true, 8, 9},      {"the first behind the page", 0, 45, 10, true, 8, 2},
        {"the last of all", 0, 45, 44, true, 35, 9}, {"the last before the page", 35, 45, 34, true, 27, 7},
        {"the first of all", 35, 45, 0, true, 0, 0}, {"behind the last", 35, 45, 45, false, 35, 5},
        {"in an empty list", 0, 0, 0, false, 0, 5},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.sentence);
        ScrollState list{10, row.top, row.total, 5};
        EXPECT_EQ(MoveTo(list, row.row), row.found);
        EXPECT_EQ(list.top, row.newTop);
        EXPECT_EQ(list.cursor, row.newCursor);
    }
}

struct TextRow {
    const char* sentence;
    ScrollKind kind;
    uint32_t top, total;  // ten of them blank
    ScrollResult (*move)(ScrollState& text);
    ScrollResult result;
    uint32_t newTop;
};

void CheckRow(const TextRow& row) {
    SCOPED_TRACE(row.sentence);
    ScrollState text{10, row.top, row.total, 0, row.kind};
    EXPECT_EQ(row.move(text), row.result);
    EXPECT_EQ(text.top, row.newTop);
}

TEST(TextScrolling, Pages) {
    const TextRow rows[] = {
        {"no text", kText, 0, 10, PageDown, kNothing, 0},
        {"less than a page, next article", kGoingOn, 0, 15, PageDown, kAtEnd, 0},
        {"less than a page scrolls to its end all the same", kText, 0, 15, PageDown, kMoved, 5},
        {"two pages less three lines", kText, 0, 17, PageDown, kMoved, 7},
        {"the last line stands on top", kText, 8, 18, PageDown, kNothing, 8},
        {"exactly a page of text, next article", kGoingOn, 0, 20, PageDown, kAtEnd, 0},
        {"the last two lines of a page of text", kText, 8, 20, PageDown, kMoved, 10},
        {"a line more than a page", kGoingOn, 0, 21, PageDown, kMoved, 8},
        {"a long text", kGoingOn, 8, 110, PageDown, kMoved, 16},
        {"a long text with its last line in sight", kGoingOn, 90, 110, PageDown, kAtEnd, 90},
        {"page up of more than a step", kText, 9, 110, PageUp, kMoved, 1},
    };
    for (const TextRow& row : rows)
        CheckRow(row);
}

TEST(TextScrolling, Lines) {
    const TextRow rows[] = {
        {"exactly a page of text, next article", kGoingOn, 0, 20, LineDown, kAtEnd, 0},
        {"exactly a page of text", kText, 0, 20, LineDown, kMoved, 1},
        {"a line more than a page", kGoingOn, 0, 21, LineDown, kMoved, 1},
        {"no further than the blank page", kText, 11, 21, LineDown, kNothing, 11},
        {"no text", kText, 0, 10, LineDown, kNothing, 0},
    };
    for (const TextRow& row : rows)
        CheckRow(row);
}

TEST(ScrollRanges, HaveTheirOddEdges) {
    const struct {
        const char* sentence;
        uint32_t total;
        int list, text;
    } rows[] = {
        {"nothing", 0, -10, -20},
        {"a page: the list takes the page itself", 10, 10, -10},
        {"a row more", 11, 1, -9},
        {"two pages: the text takes the page itself", 20, 10, 10},
        {"a line more than two pages", 21, 11, 1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sentence);
        EXPECT_EQ(ScrollMaximum({10, 0, row.total}), row.list);
        EXPECT_EQ(ScrollMaximum({10, 0, row.total, 0, kText}), row.text);
    }
}

}  // namespace
