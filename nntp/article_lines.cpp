#include "nntp/article_lines.h"

#include <cstring>

#include "store/header_block.h"
#include "text/jis.h"
#include "text/line.h"
#include "text/mime.h"

namespace {

// An encoded word may decode to a line end, which would let its sender forge lines of the log.
void ReplaceLineEnds(char* text) {
    for (; *text; ++text) {
        if (*text == '\r' || *text == '\n') *text = ' ';
    }
}

// Cuts the line end off and returns its length.
std::size_t CutLineEnd(char* line) {
    const std::size_t length = std::strlen(line);
    const std::size_t endLength = LineEndLength(line, length);
    line[length - endLength] = '\0';
    return endLength;
}

// Appends the line end that was cut, for which `text` has room. A line that ended with a lone LF had its CR
// inside. If the conversions dropped that CR, the line gets a new one; without it, the log would be read on
// past its end.
std::string_view AppendLineEnd(char* text, std::size_t endLength) {
    const std::size_t length = std::strlen(text);
    const bool needsCr = endLength == 2 || (endLength == 1 && !std::memchr(text, '\r', length));
    const std::string_view end = endLength == 0 ? "" : needsCr ? "\r\n" : "\n";
    std::memcpy(text + length, end.data(), end.size());
    text[length + end.size()] = '\0';
    return {text, length + end.size()};
}

}  // namespace

bool IsKept(std::string_view line) {
    constexpr std::string_view kKept[] = {
        "From:", "Subject:", "Newsgroups:", "Date:", "Message-ID:", "References:"};
    for (const std::string_view name : kKept) {
        if (StartsWith(line, name)) return true;
    }
    return false;
}

std::string_view ConvertHeaderLine(LineBuffers& buffers, ReplyLine& line) {
    const std::size_t endLength = CutLineEnd(line);
    DecodeEncodedWords(buffers.decoded, line);
    LineFromJis(buffers.decoded, buffers.converted);
    ReplaceLineEnds(buffers.converted);
    return AppendLineEnd(buffers.converted, endLength);
}

std::string_view ConvertBodyLine(LineBuffers& buffers, ReplyLine& line) {
    const std::size_t endLength = CutLineEnd(line);
    LineFromJis(Unstuffed(line), buffers.converted);
    return AppendLineEnd(buffers.converted, endLength);
}

std::size_t ConvertPlainLine(LineBuffers& buffers, const char* received, std::string_view& converted) {
    if (*received == '.') return 0;
    const char* end = received;
    char* convertedEnd = TextFromJis(end, buffers.converted, '\r');
    const std::size_t length = static_cast<std::size_t>(end - received) + 2;
    if (end[0] != '\r' || end[1] != '\n' || length > kReplyLineSize) return 0;
    std::memcpy(convertedEnd, end, 2);
    converted = {buffers.converted, static_cast<std::size_t>(convertedEnd + 2 - buffers.converted)};
    return length;
}
