// Converts an article's received lines into what is stored. Knows no platform.
#pragma once

#include <cstddef>
#include <string_view>

#include "nntp/reply.h"

// Whether a header line is one of the six kinds that the store keeps (RFC 1036).
bool IsKept(std::string_view line);

// What the conversion of one line needs.
struct LineBuffers {
    ReplyLine decoded;
    char converted[kReceiveBufferSize];
};

// The received line as Shift_JIS, with its line end; in a header line the encoded words are decoded, too. The
// text is in `buffers`; `line` loses its end. The line end is kept out of the conversions: a broken encoded
// word or an unclosed escape cannot remove it, and no encoded word can add one.
std::string_view ConvertHeaderLine(LineBuffers& buffers, ReplyLine& line);
std::string_view ConvertBodyLine(LineBuffers& buffers, ReplyLine& line);

// The quick case of ConvertBodyLine: converts the line that `received`, which ends with a NUL, begins with.
// Returns its length, or 0 when it is no whole line, begins with a dot or has a CR or a NUL inside.
std::size_t ConvertPlainLine(LineBuffers& buffers, const char* received, std::string_view& converted);
