#include "text/line.h"

#include <cstdint>
#include <cstring>

namespace {

using Word = std::uintptr_t;

// A bit in each of the word's bytes from the first LF on, or 0.
Word LineFeedsIn(const char* bytes) {
    constexpr Word kOnes = ~Word{0} / 0xFF;
    Word word;
    std::memcpy(&word, __builtin_assume_aligned(bytes, sizeof(Word)), sizeof(Word));
    word ^= kOnes * '\n';
    return (word - kOnes) & ~word & kOnes * 0x80;
}

// The first LF, else `end`. Goes a word at a time: the systems' own searches go byte by byte.
const char* FindLineFeed(const char* begin, const char* end) {
    const char* next = begin;
    for (; next < end && reinterpret_cast<Word>(next) % sizeof(Word) != 0; ++next) {
        if (*next == '\n') return next;
    }
    for (; static_cast<std::size_t>(end - next) >= sizeof(Word); next += sizeof(Word)) {
        if (LineFeedsIn(next) != 0) break;
    }
    while (next < end && *next != '\n')
        ++next;
    return next;
}

// Length of what ends with the last CR LF of bytes[0..count), 0 when there is none.
std::size_t EndOfLastLine(const char* bytes, std::size_t count) {
    while (count > 1 && (bytes[count - 1] != '\n' || bytes[count - 2] != '\r'))
        --count;
    return count > 1 ? count : 0;
}

}  // namespace

LineState AddToLine(LineAssembler& line, const char* bytes, std::size_t count, std::size_t& added) {
    const std::size_t room = line.capacity - line.length;
    const std::size_t most = count < room ? count : room;
    added = 0;
    while (added < most) {
        const char* rest = bytes + added;
        const char* lf = FindLineFeed(rest, bytes + most);
        const bool found = lf < bytes + most;
        const std::size_t part = static_cast<std::size_t>(lf - rest) + (found ? 1 : 0);
        std::memcpy(line.buffer + line.length, rest, part);
        line.length += part;
        added += part;
        // The CR is nearly always just before the LF.
        const bool plain = found && lf > rest && lf[-1] == '\r';
        line.seenCr = line.seenCr || plain || std::memchr(rest, '\r', part) != nullptr;
        if (found && line.seenCr) return LineState::kComplete;
    }
    return added < count ? LineState::kFull : LineState::kOpen;
}

std::size_t PlainLineLength(const char* bytes, std::size_t count) {
    const char* lf = FindLineFeed(bytes, bytes + count);
    if (lf == bytes || lf == bytes + count || lf[-1] != '\r') return 0;
    return static_cast<std::size_t>(lf - bytes) + 1;
}

// A run covers every place that is looked at if these are its own length apart, and a CR LF ends a line
// wherever it stands.
std::size_t LinesWithoutRun(const char* bytes, std::size_t count, std::size_t longest, char mark,
                            std::size_t run) {
    std::size_t sure = 0;
    for (;;) {
        const std::size_t rest = count - sure;
        const std::size_t stretch = rest < longest ? rest : longest;
        std::size_t looked = run - 1;
        while (looked < stretch && bytes[sure + looked] != mark)
            looked += run;
        const bool stopped = looked < stretch;
        const std::size_t lines = EndOfLastLine(bytes + sure, stopped ? looked : stretch);
        sure += lines;
        if (stopped || lines == 0) return sure;
    }
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
