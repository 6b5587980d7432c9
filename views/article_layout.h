// Breaks an article into the lines that the article view shows. Knows no platform: a function of the caller
// measures the text.
#pragma once

#include <cstddef>
#include <cstdint>

// How many of text[0..count) come before the first unit at which the text reaches `width` pixels.
struct TextMeasure {
    uint32_t (*fit)(void* context, const wchar_t* text, uint32_t count, int width) = nullptr;
    void* context = nullptr;
};

// Points into the article's text, or to an empty text. The entry behind the last one has a null text.
struct DisplayLine {
    const wchar_t* text = nullptr;
    uint32_t length = 0;  // UTF-16 units
    bool quote = false;   // belongs to a quoted line of the body
};

struct ArticleLayout {
    DisplayLine* lines = nullptr;  // owned; null until LayOut succeeded
    uint32_t lineCount = 0;        // the page of blank lines behind the text included
    uint32_t headerLines = 0;      // lines that belong to the header

    ArticleLayout() = default;
    ArticleLayout(const ArticleLayout&) = delete;
    ArticleLayout& operator=(const ArticleLayout&) = delete;
    ~ArticleLayout();
};

struct LayoutOptions {
    int width = 0;             // of the text area, in pixels
    uint32_t rowsPerPage = 1;  // a form feed at the start of a line fills a page
    bool wholeHeader = false;  // else only the "From:" and "Subject:" lines are kept
};

void FreeLayout(ArticleLayout& layout);

// Lays out the NUL-terminated text, which must outlive the layout. False, with error 8 and an empty layout,
// when memory runs out.
[[nodiscard]] bool LayOut(ArticleLayout& layout, const wchar_t* text, const LayoutOptions& options,
                          const TextMeasure& measure);

// Where in the text a line starts; a blank line that fills a page counts as the line of text above it. Null
// when there is none.
const wchar_t* PlaceOfLine(const ArticleLayout& layout, uint32_t line);

// The line that holds a place of the text, 0 for a null place; the last one before it, where it is not shown.
uint32_t LineOfPlace(const ArticleLayout& layout, const wchar_t* place);

// One display line as it is found.
struct WrappedLine {
    uint32_t length = 0;            // units to show
    const wchar_t* next = nullptr;  // where the next line starts
    bool endsLogicalLine = false;
};

// How much of a line is worth measuring at once, learned from the lines before it.
struct WrapHint {
    uint32_t units = 64;
};

// Finds the line that starts at `start`. A CR, with the LF behind it, ends the logical line. A unit whose low
// byte is 0x81-0x9F or 0xE0-0xFC stays with the unit behind it, whatever its script. A line takes at least
// one character, however narrow the width.
WrappedLine WrapLine(const wchar_t* start, int width, const TextMeasure& measure, WrapHint& hint);
