#include "views/article_layout.h"

#include <cstdlib>

#include "text/last_error.h"

namespace {

constexpr wchar_t kFormFeed = 0x0C;
constexpr wchar_t kFullWidthQuote = 0xFF1E;
constexpr wchar_t kEmptyText[] = L"";
constexpr uint32_t kFirstCapacity = 256;

bool EndsLine(wchar_t unit) {
    return unit == L'\r' || unit == L'\0';
}

// Units of the character at `text`, which is not at its line's end.
uint32_t CharacterUnits(const wchar_t* text) {
    const unsigned low = static_cast<unsigned>(*text) & 0xFF;
    const bool pair = (low >= 0x81 && low <= 0x9F) || (low >= 0xE0 && low <= 0xFC);
    return pair && !EndsLine(text[1]) ? 2 : 1;
}

// Units up to the line's end, at most `most`.
uint32_t UnitsOfLine(const wchar_t* text, uint32_t most) {
    uint32_t units = 0;
    while (units < most && !EndsLine(text[units]))
        ++units;
    return units;
}

// Measures at once about what the lines before held, and more only when all of that fits. A line that ended
// early says nothing about how much the next one holds.
uint32_t FittingUnits(const wchar_t* start, int width, const TextMeasure& measure, WrapHint& hint) {
    uint32_t asked = hint.units;
    while (true) {
        const uint32_t count = UnitsOfLine(start, asked);
        const uint32_t fit = count == 0 ? 0 : measure.fit(measure.context, start, count, width);
        if (fit < count || fit > hint.units) hint.units = fit + fit / 4 + 4;
        if (fit < count || count < asked) return fit;
        asked += asked / 2 + 4;
    }
}

// The lines found so far.
struct Table {
    DisplayLine* lines = nullptr;
    uint32_t count = 0;
    uint32_t capacity = 0;
    bool failed = false;
};

void AddLine(Table& table, const wchar_t* text, uint32_t length, bool quote) {
    if (table.count == table.capacity && !table.failed) {
        const uint32_t capacity = table.capacity ? table.capacity + table.capacity / 2 : kFirstCapacity;
        void* grown = std::realloc(table.lines, capacity * sizeof(DisplayLine));
        table.failed = !grown;
        if (grown) {
            table.lines = static_cast<DisplayLine*>(grown);
            table.capacity = capacity;
        }
    }
    if (!table.failed) table.lines[table.count++] = {text, length, quote};
}

void AddBlankLines(Table& table, uint32_t count) {
    for (uint32_t i = 0; i < count && !table.failed; ++i)
        AddLine(table, kEmptyText, 0, false);
}

bool StartsWithName(const wchar_t* line, const wchar_t* name) {
    while (*name && *line == *name) {
        ++line;
        ++name;
    }
    return *name == L'\0';
}

// A place in the article. The flags are those of its logical line.
struct Walk {
    const wchar_t* text;
    bool inHeader = true;
    bool atLogicalStart = true;
    bool kept = true;
    bool quote = false;
};

// False at the empty line that ends the header; that line itself is the body's first.
void StartLogicalLine(Walk& walk, const LayoutOptions& options, const Table& table, uint32_t& headerLines) {
    if (walk.inHeader && StartsWithName(walk.text, L"\r\n")) {
        walk.inHeader = false;
        headerLines = table.count;
    }
    walk.kept = !walk.inHeader || options.wholeHeader || StartsWithName(walk.text, L"From:") ||
                StartsWithName(walk.text, L"Subject:");
    walk.quote = !walk.inHeader && (*walk.text == L'>' || *walk.text == kFullWidthQuote);
}

// A line that is not shown needs no measuring.
WrappedLine WholeLine(const wchar_t* start) {
    WrappedLine line;
    line.length = UnitsOfLine(start, 0xFFFFFFFF);
    line.next = start + line.length;
    if (*line.next == L'\r') ++line.next;
    if (*line.next == L'\n' && line.next[-1] == L'\r') ++line.next;
    line.endsLogicalLine = true;
    return line;
}

void AddWrappedLine(Table& table, Walk& walk, const LayoutOptions& options, const TextMeasure& measure,
                    WrapHint& hint) {
    if (walk.kept && *walk.text == kFormFeed) {
        AddBlankLines(table, options.rowsPerPage);
        ++walk.text;
        walk.atLogicalStart = false;
        return;
    }
    const WrappedLine line =
        walk.kept ? WrapLine(walk.text, options.width, measure, hint) : WholeLine(walk.text);
    if (walk.kept) AddLine(table, walk.text, line.length, walk.quote);
    walk.text = line.next;
    walk.atLogicalStart = line.endsLogicalLine;
}

uint32_t AddArticle(Table& table, const wchar_t* text, const LayoutOptions& options,
                    const TextMeasure& measure) {
    Walk walk{text};
    WrapHint hint;
    uint32_t headerLines = 0;
    while (*walk.text && options.width > 0 && !table.failed) {
        if (walk.atLogicalStart) StartLogicalLine(walk, options, table, headerLines);
        AddWrappedLine(table, walk, options, measure, hint);
    }
    return walk.inHeader ? table.count : headerLines;
}

}  // namespace

ArticleLayout::~ArticleLayout() {
    FreeLayout(*this);
}

void FreeLayout(ArticleLayout& layout) {
    std::free(layout.lines);
    layout.lines = nullptr;
    layout.lineCount = layout.headerLines = 0;
}

bool LayOut(ArticleLayout& layout, const wchar_t* text, const LayoutOptions& options,
            const TextMeasure& measure) {
    FreeLayout(layout);
    Table table;
    const uint32_t headerLines = AddArticle(table, text, options, measure);
    AddBlankLines(table, options.rowsPerPage);
    AddLine(table, nullptr, 0, false);
    if (table.failed) {
        std::free(table.lines);
        return Fail(kErrorNoMemory);
    }
    layout.lines = table.lines;
    layout.lineCount = table.count - 1;
    layout.headerLines = headerLines;
    return true;
}

const wchar_t* PlaceOfLine(const ArticleLayout& layout, uint32_t line) {
    if (line >= layout.lineCount) return nullptr;
    while (line > 0 && layout.lines[line].text == kEmptyText)
        --line;
    const wchar_t* text = layout.lines[line].text;
    return text == kEmptyText ? nullptr : text;
}

uint32_t LineOfPlace(const ArticleLayout& layout, const wchar_t* place) {
    uint32_t found = 0;
    for (uint32_t line = 0; place && line < layout.lineCount; ++line) {
        const wchar_t* text = layout.lines[line].text;
        if (text == kEmptyText) continue;
        if (text > place) break;
        found = line;
    }
    return found;
}

WrappedLine WrapLine(const wchar_t* start, int width, const TextMeasure& measure, WrapHint& hint) {
    WrappedLine line;
    const uint32_t fit = FittingUnits(start, width, measure, hint);
    while (!EndsLine(start[line.length])) {
        const uint32_t units = CharacterUnits(start + line.length);
        if (line.length + units > fit && line.length > 0) break;
        line.length += units;
    }
    line.next = start + line.length;
    line.endsLogicalLine = EndsLine(*line.next);
    if (*line.next == L'\r') ++line.next;
    if (line.endsLogicalLine && *line.next == L'\n' && line.next[-1] == L'\r') ++line.next;
    return line;
}
