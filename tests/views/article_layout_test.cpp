// The article's lines, put down by hand. ASCII is 6 pixels wide here, all else 12.
#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "views/article_layout.h"

namespace {

int UnitWidth(wchar_t unit) {
    return unit < 0x80 ? 6 : 12;
}

uint64_t measuredUnits = 0;

uint32_t FitUnits(void*, const wchar_t* text, uint32_t count, int width) {
    measuredUnits += count;
    uint32_t fit = 0;
    for (int reached = 0; fit < count; ++fit) {
        reached += UnitWidth(text[fit]);
        if (reached >= width) break;
    }
    return fit;
}

constexpr TextMeasure kMeasure = {FitUnits, nullptr};

struct Line {
    std::wstring text;
    bool quote = false;
    bool operator==(const Line& other) const { return text == other.text && quote == other.quote; }
};

TEST(ArticleLayout, BreaksAsPutDownByHand) {
    struct Row {
        const char* sentence;
        std::wstring text;
        LayoutOptions options;
        uint32_t header;
        std::vector<Line> lines;  // without the blank page
    };
    const std::wstring head = L"From: me\r\nNewsgroups: fj.test\r\nSubject: hello\r\n\r\n";
    const Row rows[] = {
        {"no text", L"", {60, 2, false}, 0, {}},
        {"no room", head, {0, 2, true}, 0, {}},
        {"other header lines are hidden",
         head + L"x",
         {600, 2, false},
         2,
         {{L"From: me"}, {L"Subject: hello"}, {L""}, {L"x"}}},
        {"hidden ones with their wrapped parts, kept ones with theirs",
         head,
         {37, 2, false},
         5,
         {{L"From: "}, {L"me"}, {L"Subjec"}, {L"t: hel"}, {L"lo"}, {L""}}},
        {"the names' case matters", L"FROM: me\r\nsubject: x\r\n\r\nb", {600, 1, false}, 0, {{L""}, {L"b"}}},
        {"a header that never ends", L"From: a\r\nTo: b", {600, 1, true}, 2, {{L"From: a"}, {L"To: b"}}},
        {"both quote signs, also where their line wraps",
         L"\r\n>abc\r\n\xFF1E"
         L"de\r\nx>y",
         {19, 1, false},
         0,
         {{L""},
          {L">ab", true},
          {L"c", true},
          {L"\xFF1E"
           L"d",
           true},
          {L"e", true},
          {L"x>y"}}},
        {"a quote sign where a line wraps is none",
         L"\r\nabc>d",
         {24, 1, false},
         0,
         {{L""}, {L"abc"}, {L">d"}}},
        {"a quote sign in the header is none", L">a\r\n\r\n", {600, 1, true}, 1, {{L">a"}, {L""}}},
        {"a form feed fills a page, the text goes on behind it",
         L"\r\na\r\n\fb",
         {600, 3, false},
         0,
         {{L""}, {L"a"}, {L""}, {L""}, {L""}, {L"b"}}},
        {"a form feed within a line is text", L"\r\na\fb", {600, 3, false}, 0, {{L""}, {L"a\fb"}}},
        {"a lone CR ends a line, a lone LF does not",
         L"\r\na\rb\nc",
         {600, 1, false},
         0,
         {{L""}, {L"a"}, {L"b\nc"}}},
        {"a line may not reach the width", L"\r\nabcd", {24, 1, false}, 0, {{L""}, {L"abc"}, {L"d"}}},
        {"a pair does not take the line's end in",
         L"\r\na\x3081\r\nb",
         {600, 1, false},
         0,
         {{L""}, {L"a\x3081"}, {L"b"}}},
        {"nor the text's end", L"\r\na\x3081", {600, 1, false}, 0, {{L""}, {L"a\x3081"}}},
        {"a character wider than the view is a line",
         L"\r\n\x65E5\x672C"
         L"a",
         {1, 1, false},
         0,
         {{L""}, {L"\x65E5\x672C"}, {L"a"}}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.sentence);
        std::vector<Line> expected = row.lines;
        expected.resize(expected.size() + row.options.rowsPerPage);
        ArticleLayout layout;
        ASSERT_TRUE(LayOut(layout, row.text.c_str(), row.options, kMeasure));
        std::vector<Line> lines;
        for (uint32_t i = 0; i < layout.lineCount; ++i)
            lines.push_back({{layout.lines[i].text, layout.lines[i].length}, layout.lines[i].quote});
        EXPECT_THAT(lines, testing::ElementsAreArray(expected));
        EXPECT_EQ(layout.headerLines, row.header);
    }
}

TEST(ArticleLayout, MeasuresEachLineAboutOnce) {
    struct Row {
        const char* sentence;
        std::wstring text;
        int width;
        uint64_t most;  // units measured for each of the text
    };
    std::wstring shortLines, mixedLines;
    for (int i = 0; i < 100000; ++i) {
        shortLines += L"ten units!\r\n";
        mixedLines += i % 2 ? L"\r\n" : std::wstring(200, L'x') + L"\r\n";
    }
    const Row rows[] = {
        {"a body of 1 MB in one line", std::wstring(1 << 20, L'x'), 240, 2},
        {"the same in a wide view", std::wstring(1 << 20, L'x'), 6000, 2},
        {"the same in Japanese", std::wstring(1 << 20, L'\x65E5'), 240, 3},
        {"long lines between empty ones", mixedLines, 600, 3},
        {"a view of two letters' width", std::wstring(1 << 20, L'x'), 13, 10},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.sentence);
        measuredUnits = 0;
        ArticleLayout layout;
        ASSERT_TRUE(LayOut(layout, (L"\r\n" + row.text).c_str(), {row.width, 20, false}, kMeasure));
        EXPECT_LE(measuredUnits, row.most * row.text.size());
        EXPECT_GT(layout.lineCount, 20u);
    }
}

}  // namespace
