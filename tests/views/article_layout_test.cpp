// The article's lines, compared with a model that takes one character at a time and measures the line from
// its start before each, and with lines put down by hand. ASCII is 6 pixels wide here, all else 12.
#include <gmock/gmock.h>

#include <cwchar>
#include <iterator>
#include <random>
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

void PrintTo(const Line& line, std::ostream* out) {
    *out << (line.quote ? "quote:" : "line:");
    for (const wchar_t unit : line.text)
        *out << ' ' << std::hex << static_cast<unsigned>(unit) << std::dec;
}

struct Lines {
    std::vector<Line> lines;
    uint32_t header = 0;
};

// The model.

int WidthOf(const std::wstring& text, std::size_t start, std::size_t units) {
    int width = 0;
    for (std::size_t i = start; i < start + units && i < text.size(); ++i)
        width += UnitWidth(text[i]);
    return width;
}

bool IsAt(const std::wstring& text, std::size_t place, const wchar_t* what) {
    return text.compare(place, wcslen(what), what) == 0;
}

struct ModelLine {
    std::size_t length = 0, next = 0;
    bool ends = false;
};

ModelLine ModelWrap(const std::wstring& text, std::size_t start, int width) {
    ModelLine line;
    while (true) {
        const std::size_t at = start + line.length;
        if (at == text.size() || text[at] == L'\r') {
            line.ends = true;
            line.next = IsAt(text, at, L"\r\n") ? at + 2 : at == text.size() ? at : at + 1;
            return line;
        }
        const unsigned low = text[at] & 0xFF;
        const bool lead = (low >= 0x81 && low <= 0x9F) || (low >= 0xE0 && low <= 0xFC);
        const bool alone = at + 1 == text.size() || text[at + 1] == L'\r';
        const std::size_t units = lead && !alone ? 2 : 1;
        if (line.length > 0 && WidthOf(text, start, line.length + units) >= width) {
            line.next = at;
            return line;
        }
        line.length += units;
    }
}

Lines Model(const std::wstring& text, const LayoutOptions& options) {
    Lines result;
    bool inHeader = true, starts = true, kept = true, quote = false;
    for (std::size_t at = 0; at < text.size();) {
        if (starts && inHeader && IsAt(text, at, L"\r\n")) {
            inHeader = false;
            result.header = static_cast<uint32_t>(result.lines.size());
        }
        if (starts) {
            kept =
                !inHeader || options.wholeHeader || IsAt(text, at, L"From:") || IsAt(text, at, L"Subject:");
            quote = !inHeader && (text[at] == L'>' || text[at] == 0xFF1E);
        }
        if (kept && text[at] == L'\f') {
            result.lines.resize(result.lines.size() + options.rowsPerPage);
            ++at;
            starts = false;
            continue;
        }
        const ModelLine line = ModelWrap(text, at, options.width);
        if (kept) result.lines.push_back({text.substr(at, line.length), quote});
        at = line.next;
        starts = line.ends;
    }
    if (inHeader) result.header = static_cast<uint32_t>(result.lines.size());
    result.lines.resize(result.lines.size() + options.rowsPerPage);
    return result;
}

Lines LaidOut(const std::wstring& text, const LayoutOptions& options) {
    Lines result;
    ArticleLayout layout;
    EXPECT_TRUE(LayOut(layout, text.c_str(), options, kMeasure));
    for (uint32_t i = 0; i < layout.lineCount; ++i)
        result.lines.push_back({{layout.lines[i].text, layout.lines[i].length}, layout.lines[i].quote});
    EXPECT_EQ(layout.lines[layout.lineCount].text, nullptr) << "the entry behind the last";
    result.header = layout.headerLines;
    return result;
}

std::wstring RandomText(std::mt19937& random) {
    static const wchar_t* const parts[] = {
        L"a",      L"Word ",  L"\t",        L">",     L"\xFF1E",   L"\x65E5\x672C\x8A9E",
        L"\x3042", L"From: ", L"Subject: ", L"To: ",  L"\x3081",   L"\x4E9F",
        L"\xE0",   L"\x30FC", L"\x81",      L"\x9F",  L"\xFC",     L"\xFD",
        L"\x80",   L"\xA0",   L"\r\n",      L"\r\n",  L"\r\n\r\n", L"\r",
        L"\n",     L"\f",     L"\r\n\f",    L"\r\n>", L"\xFB\r\n", L"0123456789abcdef"};
    std::wstring text = random() % 2 ? L"From: a\r\nTo: b\r\n\r\n" : L"";
    for (auto count = random() % 60; count > 0; --count)
        text += parts[random() % std::size(parts)];
    return text;
}

TEST(ArticleLayout, BreaksLikeOneCharacterAtATime) {
    std::mt19937 random(20011203);
    for (int round = 0; round < 3000 && !testing::Test::HasFailure(); ++round) {
        const std::wstring text = RandomText(random);
        for (const int width : {1, 6, 7, 12, 13, 25, 60, 240}) {
            const LayoutOptions options = {width, 1 + round % 4u, round % 3 == 0};
            SCOPED_TRACE(testing::Message() << "round " << round << ", width " << width);
            const Lines lines = LaidOut(text, options);
            const Lines model = Model(text, options);
            EXPECT_THAT(lines.lines, testing::ElementsAreArray(model.lines));
            EXPECT_EQ(lines.header, model.header);
        }
    }
}

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
        {"the whole header ends before its empty line",
         head + L"x",
         {600, 2, true},
         3,
         {{L"From: me"}, {L"Newsgroups: fj.test"}, {L"Subject: hello"}, {L""}, {L"x"}}},
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
        {"nothing to keep but the empty line", L"To: me\r\n\r\n", {600, 1, false}, 0, {{L""}}},
        {"a text that starts with the empty line",
         L"\r\nFrom: b\r\n",
         {600, 1, false},
         0,
         {{L""}, {L"From: b"}}},
        {"a header that never ends", L"From: a\r\nTo: b", {600, 1, true}, 2, {{L"From: a"}, {L"To: b"}}},
        {"a name in the body hides nothing", L"\r\nTo: b\r\n", {600, 1, false}, 0, {{L""}, {L"To: b"}}},
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
        {"each of two form feeds fills one",
         L"\r\n\f\f",
         {600, 2, false},
         0,
         {{L""}, {L""}, {L""}, {L""}, {L""}}},
        {"a form feed within a line is text", L"\r\na\fb", {600, 3, false}, 0, {{L""}, {L"a\fb"}}},
        {"a form feed hides a quote sign", L"\r\n\f>a", {600, 1, false}, 0, {{L""}, {L""}, {L">a"}}},
        {"a lone CR ends a line, a lone LF does not",
         L"\r\na\rb\nc",
         {600, 1, false},
         0,
         {{L""}, {L"a"}, {L"b\nc"}}},
        {"a line may not reach the width", L"\r\nabcd", {24, 1, false}, 0, {{L""}, {L"abc"}, {L"d"}}},
        {"but stay a pixel below it", L"\r\nabcd", {25, 1, false}, 0, {{L""}, {L"abcd"}}},
        {"a pair stays together",
         L"\r\nab\x3081"
         L"c",
         {30, 1, false},
         0,
         {{L""},
          {L"ab"},
          {L"\x3081"
           L"c"}}},
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
        const Lines lines = LaidOut(row.text, row.options);
        EXPECT_THAT(lines.lines, testing::ElementsAreArray(expected));
        EXPECT_EQ(lines.header, row.header);
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
        {"100,000 short lines", shortLines, 240, 1},
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
