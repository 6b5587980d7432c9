// The one rule of what a line is, for lines from the server and from files. Knows no platform.
#pragma once

#include <cstddef>

enum class LineState {
    kOpen,      // more bytes are wanted
    kComplete,  // the last byte added was the line's LF
    kFull,      // the buffer holds `capacity` bytes and the line has not ended
};

// Collects one line's bytes into a caller's buffer. A CR anywhere in the line makes the next LF its end; an
// LF without an earlier CR is an ordinary byte. The buffer has room for `capacity` bytes and one spare byte.
struct LineAssembler {
    char* buffer = nullptr;  // not owned
    std::size_t capacity = 0;
    std::size_t length = 0;
    bool seenCr = false;
};

inline bool IsFull(const LineAssembler& line) {
    return line.length == line.capacity;
}

// Adds as many of the `count` bytes as belong to the line; `added` receives their number.
LineState AddToLine(LineAssembler& line, const char* bytes, std::size_t count, std::size_t& added);

// The quick case: length of the line that bytes[0..count) begins with, CR LF included, when its CR is just
// before its LF, as it nearly always is; else 0.
std::size_t PlainLineLength(const char* bytes, std::size_t count);

// How many of the bytes that a line begins with are whole lines of at most `longest` bytes, none of which has
// `run` times the byte `mark` in a row. Looks at few of the bytes, so it may stop early, but never too late.
std::size_t LinesWithoutRun(const char* bytes, std::size_t count, std::size_t longest, char mark,
                            std::size_t run);

// Terminates what was collected with a NUL. With `cut`, drops the line end (CR LF, or the LF alone).
void FinishLine(LineAssembler& line, bool cut);

// Length of the line end of text[0..length): 2 for CR LF, 1 for a lone LF, else 0.
std::size_t LineEndLength(const char* text, std::size_t length);

// The line that ends a multi-line reply: "." CR LF and nothing else (RFC 3977, section 3.1.1).
bool IsFinalDot(const char* line);

// The line without the dot that a server adds before one that begins with a dot.
inline const char* Unstuffed(const char* line) {
    return *line == '.' ? line + 1 : line;
}
