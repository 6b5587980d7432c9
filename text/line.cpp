#include "text/line.h"

#include <cstring>

LineState AddToLine(LineAssembler& line, const char* bytes, std::size_t count, std::size_t& added) {
    const std::size_t room = line.capacity - line.length;
    const std::size_t most = count < room ? count : room;
    added = 0;
    while (added < most) {
        const char* rest = bytes + added;
        const auto lf = static_cast<const char*>(std::memchr(rest, '\n', most - added));
        const std::size_t part = lf ? static_cast<std::size_t>(lf - rest) + 1 : most - added;
        std::memcpy(line.buffer + line.length, rest, part);
        line.length += part;
        added += part;
        line.seenCr =
            line.seenCr || (part > 1 && lf && lf[-1] == '\r') || std::memchr(rest, '\r', part) != nullptr;
        if (lf && line.seenCr) return LineState::kComplete;
    }
    return added < count ? LineState::kFull : LineState::kOpen;
}

std::size_t PlainLineLength(const char* bytes, std::size_t count) {
    const auto lf = static_cast<const char*>(std::memchr(bytes, '\n', count));
    if (!lf || lf == bytes || lf[-1] != '\r') return 0;
    return static_cast<std::size_t>(lf - bytes) + 1;
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
