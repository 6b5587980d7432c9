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

// As many whole characters as come before the first unit at which the width is reached, but at least one.
uint32_t LineLength(const wchar_t* text, int width) {
    uint32_t length = 0;
    for (int reached = 0; !EndsLine(text[length]);) {
        const uint32_t units = CharacterAt(text + length);
        for (uint32_t i = 0; i < units; ++i)
            reached += UnitWidth(text[length + i]);
        if (reached >= width && length > 0) break;
        length += units;
    }
    return length;
}

struct Model {
    std::vector<DisplayLine> lines;
    uint32_t headerLines = 0;
};

const wchar_t* BehindLineEnd(const wchar_t* text) {
    if (*text == L'\r') ++text;
    return text[0] == L'\n' && text[-1] == L'\r' ? text + 1 : text;
}

void AddBlankPage(Model& model, const LayoutOptions& options) {
    model.lines.insert(model.lines.end(), options.rowsPerPage, {nullptr, 0, false});
}

// One display line; true at the end of the logical line. A form feed at a line's start fills a page.
bool AddLine(Model& model, const wchar_t*& text, const LayoutOptions& options, bool quote) {
    if (*text == L'\f') {
        AddBlankPage(model, options);
        return *++text == L'\0';
    }
    model.lines.push_back({text, LineLength(text, options.width), quote});
    text += model.lines.back().length;
    const bool ends = EndsLine(*text);
    if (ends) text = BehindLineEnd(text);
    return ends;
}

bool IsShown(const wchar_t* text, bool inHeader, const LayoutOptions& options) {
    return !inHeader || options.wholeHeader || StartsWith(text, "From:") || StartsWith(text, "Subject:");
}

Model MakeModel(const wchar_t* text, const LayoutOptions& options) {
    Model model;
    bool inHeader = true;
    while (*text && options.width > 0) {
        inHeader = inHeader && !StartsWith(text, "\r\n");
        if (IsShown(text, inHeader, options)) {
            const bool quote = !inHeader && (*text == L'>' || *text == 0xFF1E);
            while (!AddLine(model, text, options, quote)) {
            }
        } else {
            while (!EndsLine(*text))
                ++text;
            text = BehindLineEnd(text);
        }
        if (inHeader) model.headerLines = static_cast<uint32_t>(model.lines.size());
    }
    AddBlankPage(model, options);
    return model;
}

void CheckLayout(const ArticleLayout& layout, const Model& model) {
    Require(layout.lineCount == model.lines.size() && !layout.lines[layout.lineCount].text &&
                layout.headerLines == model.headerLines,
            "the layout ends behind a blank page, the header at the first empty line");
    for (uint32_t i = 0; i < layout.lineCount; ++i) {
        const DisplayLine &line = layout.lines[i], &due = model.lines[i];
        Require(line.length == due.length && (due.text ? line.text == due.text : line.text != nullptr) &&
                    line.quote == due.quote,
                "no unit is lost or shown twice, a line breaks where the next character has no room");
    }
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
    CheckLayout(layout, MakeModel(text.get(), options));
    CheckPlaces(layout);
    ScrollText(options.rowsPerPage, layout.lineCount, moves);
    ScrollList(options.rowsPerPage, layout.lineCount - options.rowsPerPage, moves);
}
