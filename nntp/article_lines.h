// Converts an article's received lines into what is stored. Knows no platform.
#pragma once

#include <string_view>

#include "nntp/reply.h"

// Whether a header line is one of the six kinds that the store keeps (RFC 1036).
bool IsKept(std::string_view line);

// What the conversion of one line needs.
struct LineBuffers {
    ReplyLine decoded;
    char converted[sizeof(ReplyLine) + 1];  // and the CR that its line end may lack
};

// The received line as Shift_JIS, with its line end; in a header line the encoded words are decoded, too. The
// text is in `buffers`; `line` loses its end. The line end is kept out of the conversions: a broken encoded
// word or an unclosed escape cannot remove it, and no encoded word can add one.
std::string_view ConvertHeaderLine(LineBuffers& buffers, ReplyLine& line);
std::string_view ConvertBodyLine(LineBuffers& buffers, ReplyLine& line);
