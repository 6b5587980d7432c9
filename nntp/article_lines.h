// What a received line of an article becomes before it is stored. Knows no platform.
#pragma once

#include <string_view>

#include "nntp/reply.h"

// Whether a header line is one of the six kinds that the store keeps (RFC 1036).
bool IsKept(std::string_view line);

// Room for one line on its way.
struct LineBuffers {
    ReplyLine decoded;
    char converted[sizeof(ReplyLine) + 1];  // and the CR that its line end may lack
};

// The received line as Shift_JIS, with its line end; of a header line the encoded words are decoded, too. The
// text is in `buffers`; `line` loses its end. The line end stands outside the conversions: a broken encoded
// word or an escape that is never closed cannot take it away, and what an encoded word decodes to cannot end
// the line.
std::string_view ConvertHeaderLine(LineBuffers& buffers, ReplyLine& line);
std::string_view ConvertBodyLine(LineBuffers& buffers, ReplyLine& line);
