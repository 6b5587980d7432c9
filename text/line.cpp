#include "text/line.h"

#include <cstring>

LineState AddToLine(LineAssembler& line, char byte) {
    if (IsFull(line)) return LineState::kFull;
    line.buffer[line.length++] = byte;
    if (byte == '\n' && line.seenCr) return LineState::kComplete;
    if (byte == '\r') line.seenCr = true;
    return LineState::kOpen;
}

void FinishLine(LineAssembler& line, bool cut) {
    if (cut) line.length -= LineEndLength(line.buffer, line.length);
    line.buffer[line.length] = '\0';
}

std::size_t LineEndLength(const char* text, std::size_t length) {
    if (length == 0 || text[length - 1] != '\n') return 0;
    return length > 1 && text[length - 2] == '\r' ? 2 : 1;
}

bool IsFinalDot(const char* line) {
    return std::strcmp(line, ".\r\n") == 0;
}
