// Paging and scrolling, worked out by hand for ten rows or lines a page (so a page moves by eight) and for
// pages too small for two rows to stay in sight.
#include <gtest/gtest.h>

#include "views/scrolling.h"

namespace {

constexpr ScrollResult kNothing = ScrollResult::kNothing;
constexpr ScrollResult kMoved = ScrollResult::kMoved;
constexpr ScrollResult kAtEnd = ScrollResult::kAtEnd;

struct ListRow {
    const char* sentence;
    uint32_t page, top, total, cursor;
    ScrollResult (*move)(ListScroll& list);
    ScrollResult result;
    uint32_t newTop, newCursor;
};

void CheckRow(const ListRow& row) {
    SCOPED_TRACE(row.sentence);
    ListScroll list{{row.page, row.top, row.total}, row.cursor};
    EXPECT_EQ(row.move(list), row.result);
    EXPECT_EQ(list.rows.top, row.newTop);
    EXPECT_EQ(list.cursor, row.newCursor);
    EXPECT_EQ(list.rows.page, row.page);
    EXPECT_EQ(list.rows.total, row.total);
}

TEST(ListScrolling, Pages) {
    const ListRow rows[] = {
        {"an empty list is at its end", 10, 0, 0, 0, PageDown, kAtEnd, 0, 0},
        {"a list shorter than a page is at its end", 10, 0, 5, 3, PageDown, kAtEnd, 0, 3},
        {"so is one of exactly a page", 10, 0, 10, 9, PageDown, kAtEnd, 0, 9},
        {"one row more moves by one", 10, 0, 11, 4, PageDown, kMoved, 1, 4},
        {"and is at its end then", 10, 1, 11, 4, PageDown, kAtEnd, 1, 4},
        {"a row short of a whole step", 10, 0, 17, 0, PageDown, kMoved, 7, 0},
        {"exactly a whole step", 10, 0, 18, 0, PageDown, kMoved, 8, 0},
        {"the end behind a whole step", 10, 8, 18, 0, PageDown, kAtEnd, 8, 0},
        {"a row more than a whole step", 10, 0, 19, 0, PageDown, kMoved, 8, 0},
        {"leaves one row for the next page", 10, 8, 19, 0, PageDown, kMoved, 9, 0},
        {"two rows stay in sight in mid-list", 10, 20, 100, 6, PageDown, kMoved, 28, 6},
        {"three rows a page move by one", 3, 0, 10, 0, PageDown, kMoved, 1, 0},
        {"four move by two", 4, 0, 10, 0, PageDown, kMoved, 2, 0},
        {"two rows a page do not stand still", 2, 0, 3, 0, PageDown, kMoved, 1, 0},
        {"nor does one", 1, 1, 3, 0, PageDown, kMoved, 2, 0},
        {"one row a page ends at the last row", 1, 2, 3, 0, PageDown, kAtEnd, 2, 0},
        {"page up at the top", 10, 0, 45, 3, PageUp, kNothing, 0, 3},
        {"page up of less than a step", 10, 3, 45, 3, PageUp, kMoved, 0, 3},
        {"page up of exactly a step", 10, 8, 45, 3, PageUp, kMoved, 0, 3},
        {"page up of more than a step", 10, 9, 45, 3, PageUp, kMoved, 1, 3},
        {"page up with two rows a page", 2, 1, 3, 0, PageUp, kMoved, 0, 0},
    };
    for (const ListRow& row : rows)
        CheckRow(row);
}

TEST(ListScrolling, Lines) {
    const ListRow rows[] = {
        {"an empty list", 10, 0, 0, 0, LineDown, kNothing, 0, 0},
        {"a list of exactly a page", 10, 0, 10, 0, LineDown, kNothing, 0, 0},
        {"one row more", 10, 0, 11, 2, LineDown, kMoved, 1, 2},
        {"the last row is in sight", 10, 1, 11, 2, LineDown, kNothing, 1, 2},
        {"up at the top", 10, 0, 45, 2, LineUp, kNothing, 0, 2},
        {"up from the second row", 10, 1, 45, 2, LineUp, kMoved, 0, 2},
    };
    for (const ListRow& row : rows)
        CheckRow(row);
}

TEST(ListScrolling, TheCursorTakesThePageAlong) {
    const auto downByPage = [](ListScroll& list) { return CursorDown(list, false); };
    const auto downByLine = [](ListScroll& list) { return CursorDown(list, true); };
    const auto upByPage = [](ListScroll& list) { return CursorUp(list, false); };
    const auto upByLine = [](ListScroll& list) { return CursorUp(list, true); };
    const ListRow rows[] = {
        {"down within the page", 10, 0, 45, 3, downByPage, kNothing, 0, 4},
        {"down to the page's last row", 10, 0, 45, 8, downByLine, kNothing, 0, 9},
        {"a page further the cursor keeps its article", 10, 0, 45, 9, downByPage, kMoved, 8, 1},
        {"a short last page too", 10, 30, 45, 9, downByPage, kMoved, 35, 4},
        {"a line further it keeps its row", 10, 0, 45, 9, downByLine, kMoved, 1, 9},
        {"past the last article by pages", 10, 35, 45, 9, downByPage, kAtEnd, 35, 9},
        {"past the last article by lines", 10, 35, 45, 9, downByLine, kNothing, 35, 9},
        {"past the end of a short list by pages", 10, 0, 5, 4, downByPage, kAtEnd, 0, 4},
        {"past the end of a short list by lines", 10, 0, 5, 4, downByLine, kNothing, 0, 4},
        {"an empty list by pages", 10, 0, 0, 0, downByPage, kAtEnd, 0, 0},
        {"an empty list by lines", 10, 0, 0, 0, downByLine, kNothing, 0, 0},
        {"one row a page moves on", 1, 0, 3, 0, downByLine, kMoved, 1, 0},
        {"up within the page", 10, 8, 45, 1, upByPage, kNothing, 8, 0},
        {"a page back the cursor keeps its article", 10, 8, 45, 0, upByPage, kMoved, 0, 8},
        {"a page back of less than a step", 10, 3, 45, 0, upByPage, kMoved, 0, 3},
        {"a line back it keeps its row", 10, 8, 45, 0, upByLine, kMoved, 7, 0},
        {"before the first article by pages", 10, 0, 45, 0, upByPage, kNothing, 0, 0},
        {"before the first article by lines", 10, 0, 45, 0, upByLine, kNothing, 0, 0},
    };
    for (const ListRow& row : rows)
        CheckRow(row);
}

TEST(ListScrolling, TheThumbKeepsThePageFull) {
    const ListRow rows[] = {
        {"to the middle", 10, 0, 45, 2, [](ListScroll& l) { return ThumbTo(l, 20); }, kMoved, 20, 2},
        {"to the last page", 10, 0, 45, 2, [](ListScroll& l) { return ThumbTo(l, 35); }, kMoved, 35, 2},
        {"beyond it", 10, 0, 45, 2, [](ListScroll& l) { return ThumbTo(l, 36); }, kMoved, 35, 2},
        {"to where it is", 10, 20, 45, 2, [](ListScroll& l) { return ThumbTo(l, 20); }, kNothing, 20, 2},
        {"the odd maximum of one page", 10, 0, 10, 2, [](ListScroll& l) { return ThumbTo(l, 10); }, kNothing,
         0, 2},
        {"in a short list", 10, 0, 5, 2, [](ListScroll& l) { return ThumbTo(l, 3); }, kNothing, 0, 2},
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
        ListScroll list{{10, row.top, row.total}, 5};
        EXPECT_EQ(MoveTo(list, row.row), row.found);
        EXPECT_EQ(list.rows.top, row.newTop);
        EXPECT_EQ(list.cursor, row.newCursor);
    }
}

struct TextRow {
    const char* sentence;
    uint32_t top, total;  // ten of them blank
    ScrollResult (*move)(ScrollState& text);
    ScrollResult result;
    uint32_t newTop;
};

void CheckRow(const TextRow& row) {
    SCOPED_TRACE(row.sentence);
    ScrollState text{10, row.top, row.total};
    EXPECT_EQ(row.move(text), row.result);
    EXPECT_EQ(text.top, row.newTop);
}

TEST(TextScrolling, Pages) {
    const auto goOn = [](ScrollState& text) { return TextPageDown(text, true); };
    const auto stay = [](ScrollState& text) { return TextPageDown(text, false); };
    const TextRow rows[] = {
        {"no text, next article", 0, 10, goOn, kAtEnd, 0},
        {"no text", 0, 10, stay, kNothing, 0},
        {"less than a page, next article", 0, 15, goOn, kAtEnd, 0},
        {"less than a page scrolls to its end all the same", 0, 15, stay, kMoved, 5},
        {"two pages less three lines", 0, 17, stay, kMoved, 7},
        {"two pages less two lines", 0, 18, stay, kMoved, 8},
        {"the last line stands on top", 8, 18, stay, kNothing, 8},
        {"exactly a page of text, next article", 0, 20, goOn, kAtEnd, 0},
        {"exactly a page of text", 0, 20, stay, kMoved, 8},
        {"its last two lines", 8, 20, stay, kMoved, 10},
        {"nothing but the blank page is left", 10, 20, stay, kNothing, 10},
        {"a line more than a page", 0, 21, goOn, kMoved, 8},
        {"whose end is in sight now", 8, 21, goOn, kAtEnd, 8},
        {"a long text", 8, 110, goOn, kMoved, 16},
        {"a long text with its last line one below the page", 89, 110, goOn, kMoved, 97},
        {"a long text with its last line in sight", 90, 110, goOn, kAtEnd, 90},
        {"page up at the top", 0, 110, TextPageUp, kNothing, 0},
        {"page up of less than a step", 7, 110, TextPageUp, kMoved, 0},
        {"page up of more than a step", 9, 110, TextPageUp, kMoved, 1},
    };
    for (const TextRow& row : rows)
        CheckRow(row);
}

TEST(TextScrolling, LinesAndThumb) {
    const auto goOn = [](ScrollState& text) { return TextLineDown(text, true); };
    const auto stay = [](ScrollState& text) { return TextLineDown(text, false); };
    const TextRow rows[] = {
        {"exactly a page of text, next article", 0, 20, goOn, kAtEnd, 0},
        {"exactly a page of text", 0, 20, stay, kMoved, 1},
        {"a line more than a page", 0, 21, goOn, kMoved, 1},
        {"whose end is in sight now", 1, 21, goOn, kAtEnd, 1},
        {"until the blank page fills the view", 10, 21, stay, kMoved, 11},
        {"and no further", 11, 21, stay, kNothing, 11},
        {"no text", 0, 10, stay, kNothing, 0},
        {"up at the top", 0, 21, TextLineUp, kNothing, 0},
        {"up from the second line", 1, 21, TextLineUp, kMoved, 0},
        {"thumb to a line", 0, 110, [](ScrollState& t) { return TextThumbTo(t, 50); }, kMoved, 50},
        {"thumb past the last line", 0, 110, [](ScrollState& t) { return TextThumbTo(t, 101); }, kMoved, 100},
        {"thumb to where it is", 7, 110, [](ScrollState& t) { return TextThumbTo(t, 7); }, kNothing, 7},
    };
    for (const TextRow& row : rows)
        CheckRow(row);
}

TEST(ScrollRanges, HaveTheirOddEdges) {
    struct Row {
        const char* sentence;
        uint32_t total;
        int list, text;
    };
    const Row rows[] = {
        {"nothing", 0, -10, -20},
        {"less than a page", 9, -1, -11},
        {"a page: the list takes the page itself", 10, 10, -10},
        {"a row more", 11, 1, -9},
        {"a line less than two pages", 19, 9, -1},
        {"two pages: the text takes the page itself", 20, 10, 10},
        {"a line more than two pages", 21, 11, 1},
        {"many pages", 1000, 990, 980},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.sentence);
        EXPECT_EQ(ListScrollMaximum({10, 0, row.total}), row.list);
        EXPECT_EQ(TextScrollMaximum({10, 0, row.total}), row.text);
    }
}

}  // namespace
