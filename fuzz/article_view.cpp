// The article view: the lines that a text breaks into, and moving through them. The first bytes of the input
// choose the width, the rows a page, the header and the moves; the rest is the text, where a byte above 0x7F
// and the next make one unit.
#include <cstring>
#include <vector>

#include "fuzz/harness.h"
#include "views/article_layout.h"
#include "views/scrolling.h"

static_assert(sizeof(wchar_t) == 2, "the program's texts are UTF-16");

namespace {

int UnitWidth(wchar_t unit) {
    return unit < 0x80 ? 6 : unit == 0x3099 ? 0 : 12;  // a combining mark has no width of its own
}

uint32_t FitUnits(void*, const wchar_t* text, uint32_t count, int width) {
    uint32_t fit = 0;
    for (int reached = 0; fit < count; ++fit) {
        reached += UnitWidth(text[fit]);
        if (reached >= width) break;
    }
    return fit;
}

int WidthOf(const wchar_t* text, uint32_t count) {
    int width = 0;
    for (uint32_t i = 0; i < count; ++i)
        width += UnitWidth(text[i]);
    return width;
}

WideText MakeText(std::string_view material) {
    std::vector<wchar_t> units;
    while (!material.empty()) {
        unsigned unit = TakeByte(material);
        if (unit > 0x7F) unit = unit << 8 | TakeByte(material);
        if (unit != 0) units.push_back(static_cast<wchar_t>(unit));
    }
    units.push_back(L'\0');
    WideText text = NewArray<wchar_t>(units.size());
    std::memcpy(text.get(), units.data(), units.size() * sizeof(wchar_t));
    return text;
}

bool EndsLine(wchar_t unit) {
    return unit == L'\r' || unit == L'\0';
}

bool StartsWith(const wchar_t* text, const char* name) {
    while (*name && *text == static_cast<unsigned char>(*name)) {
        ++text;
        ++name;
    }
    return *name == '\0';
}

// Units of the character that begins at `text`: a unit whose low byte is a Shift_JIS lead byte takes the next
// along.
uint32_t CharacterAt(const wchar_t* text) {
    const unsigned low = *text & 0xFFu;
    const bool lead = (low >= 0x81 && low <= 0x9F) || (low >= 0xE0 && low <= 0xFC);
    return lead && !EndsLine(text[1]) ? 2 : 1;
}

// Goes through the text along the lines of a layout. Each line has to begin where the one before ended.
struct Reader {
    const wchar_t* text;
    const DisplayLine* line;
    const LayoutOptions* options;
    bool inHeader = true;
    bool quote = false;
    uint32_t headerLines = 0;
};

void SkipLineEnd(Reader& reader) {
    if (*reader.text != L'\r') return;
    ++reader.text;
    if (*reader.text == L'\n') ++reader.text;
}

void ReadBlankLines(Reader& reader) {
    for (uint32_t i = 0; i < reader.options->rowsPerPage; ++i, ++reader.line)
        Require(reader.line->text && reader.line->length == 0 && !reader.line->quote,
                "a page of blank lines");
}

bool IsHidden(const Reader& reader) {
    return reader.inHeader && !reader.options->wholeHeader && !StartsWith(reader.text, "From:") &&
           !StartsWith(reader.text, "Subject:");
}

// A line is as long as it can be, but never without a character.
void CheckLength(const Reader& reader) {
    const uint32_t length = reader.line->length;
    uint32_t last = 0;
    for (uint32_t at = 0; at < length; at += last) {
        Require(!EndsLine(reader.text[at]), "a line holds no line end");
        last = CharacterAt(reader.text + at);
        Require(at + last <= length, "a pair of units is not torn");
    }
    const int width = reader.options->width;
    Require(length == last || WidthOf(reader.text, length) < width, "a line is narrower than the window");
    if (EndsLine(reader.text[length])) return;
    Require(length > 0, "a line that is not empty takes a character");
    const uint32_t more = CharacterAt(reader.text + length);
    Require(WidthOf(reader.text, length + more) >= width,
            "a line breaks only where the next character has no room");
}

// One display line; true at the end of the logical line.
bool ReadLine(Reader& reader) {
    if (*reader.text == L'\f') {
        ReadBlankLines(reader);
        ++reader.text;
        return *reader.text == L'\0';
    }
    Require(reader.line->text == reader.text, "no unit is lost or shown twice");
    Require(reader.line->quote == reader.quote, "all lines of a quotation are marked, no others");
    CheckLength(reader);
    reader.text += reader.line->length;
    ++reader.line;
    const bool ends = EndsLine(*reader.text);
    SkipLineEnd(reader);
    return ends;
}

void ReadLogicalLine(Reader& reader, const ArticleLayout& layout) {
    if (reader.inHeader && StartsWith(reader.text, "\r\n")) {
        reader.inHeader = false;
        reader.headerLines = static_cast<uint32_t>(reader.line - layout.lines);
    }
    if (IsHidden(reader)) {
        while (!EndsLine(*reader.text))
            ++reader.text;
        SkipLineEnd(reader);
        return;
    }
    reader.quote = !reader.inHeader && (*reader.text == L'>' || *reader.text == 0xFF1E);
    while (!ReadLine(reader)) {
    }
}

void CheckLayout(const ArticleLayout& layout, const wchar_t* text, const LayoutOptions& options) {
    Reader reader{text, layout.lines, &options};
    while (*reader.text && options.width > 0)
        ReadLogicalLine(reader, layout);
    if (reader.inHeader) reader.headerLines = static_cast<uint32_t>(reader.line - layout.lines);
    ReadBlankLines(reader);
    Require(reader.line == layout.lines + layout.lineCount && !reader.line->text,
            "the layout ends behind a blank page");
    Require(layout.headerLines == reader.headerLines, "the header ends at the first empty line");
}

// Where a line starts leads back to a line that starts there: a window may change its size and keep what is
// read.
void CheckPlaces(const ArticleLayout& layout) {
    for (uint32_t line = 0; line < layout.lineCount; ++line) {
        const wchar_t* place = PlaceOfLine(layout, line);
        const uint32_t found = LineOfPlace(layout, place);
        Require(found < layout.lineCount && (!place || PlaceOfLine(layout, found) == place),
                "a place is found again");
    }
}

void Judge(ScrollResult result, const ScrollState& before, const ScrollState& after) {
    Require((result == ScrollResult::kMoved) == (before.top != after.top), "a move is told, and only a move");
    Require(after.top == 0 || after.top + after.page <= after.total,
            "the top line leaves no gap below the last");
    const uint32_t moved = before.top < after.top ? after.top - before.top : before.top - after.top;
    Require(moved <= 1 || moved + 2 <= after.page, "two lines of the old page stay in sight");
}

void ScrollText(uint32_t page, uint32_t total, std::string_view moves) {
    ScrollState text{page, 0, total, 0, ScrollKind::kText};
    while (!moves.empty()) {
        const uint8_t move = TakeByte(moves);
        text.kind = (move & 4) != 0 ? ScrollKind::kTextGoingOn : ScrollKind::kText;
        const ScrollState before = text;
        ScrollResult (*const onward)(ScrollState&) = (move & 2) != 0 ? LineDown : PageDown;
        ScrollResult (*const back)(ScrollState&) = (move & 2) != 0 ? LineUp : PageUp;
        const ScrollResult result = (move & 1) != 0 ? back(text) : onward(text);
        Judge(result, before, text);
        Require(
            result != ScrollResult::kAtEnd || (text.kind == ScrollKind::kTextGoingOn && EndIsVisible(before)),
            "the next article comes only when this one's end was seen");
    }
    ThumbTo(text, total);
    Require(total <= page || text.top + page == total, "the thumb reaches the end");
}

ScrollResult (*const kListMoves[])(ScrollState&) = {
    PageDown,
    PageUp,
    LineDown,
    LineUp,
    [](ScrollState& list) { return CursorDown(list, false); },
    [](ScrollState& list) { return CursorUp(list, false); },
    [](ScrollState& list) { return CursorDown(list, true); },
    [](ScrollState& list) { return CursorUp(list, true); },
};

void ScrollList(uint32_t page, uint32_t total, std::string_view moves) {
    ScrollState list{page, 0, total};
    while (!moves.empty()) {
        const uint8_t move = TakeByte(moves);
        const ScrollState before = list;
        Judge(kListMoves[move % 8](list), before, list);
        Require(list.cursor < list.page && (CursorRow(list) < total || total == 0),
                "the cursor stands on a row in sight");
        const uint32_t stays = CursorRow(list);
        ResizePage(list, TakeByte(moves) % 16u + 1);
        Require(CursorRow(list) == stays && list.cursor < list.page,
                "the cursor keeps its row and stays in sight");
        Require(list.top == 0 || list.top + list.page <= list.total,
                "another page size leaves no gap below the last row");
        const uint32_t row = TakeByte(moves) % (total + 1);
        Require(MoveTo(list, row) == (row < total), "every row can be gone to");
        Require(row == total || (CursorRow(list) == row && list.cursor < list.page), "and is in sight then");
    }
}

}  // namespace

void FuzzOne(std::string_view input) {
    LayoutOptions options;
    options.width = TakeByte(input);
    const uint8_t choice = TakeByte(input);
    options.rowsPerPage = choice % 16 + 1u;
    options.wholeHeader = choice >= 128;
    const std::string_view moves = input.substr(0, choice / 16);
    input.remove_prefix(moves.size());
    const WideText text = MakeText(input);
    ArticleLayout layout;
    Require(LayOut(layout, text.get(), options, {FitUnits, nullptr}),
            "laying out fails only for want of memory");
    CheckLayout(layout, text.get(), options);
    CheckPlaces(layout);
    ScrollText(options.rowsPerPage, layout.lineCount, moves);
    ScrollList(options.rowsPerPage, layout.lineCount - options.rowsPerPage, moves);
}
