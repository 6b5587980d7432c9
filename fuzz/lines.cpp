// Lines from a server or a file: where each ends, what its terminator and its line end do to the buffer, and
// the dots that a server doubles. The first byte chooses the buffer's capacity, the rest is the stream.
#include "fuzz/harness.h"
#include "text/line.h"

namespace {

// A line of the stream as a reader that sees all of it at once would find it.
struct Found {
    std::string_view bytes;
    LineState state = LineState::kOpen;
};

Found FindLine(std::string_view stream, std::size_t capacity) {
    const std::size_t cr = stream.find('\r');
    const std::size_t lf = cr == std::string_view::npos ? cr : stream.find('\n', cr);
    if (lf != std::string_view::npos && lf < capacity)
        return {stream.substr(0, lf + 1), LineState::kComplete};
    if (stream.size() > capacity) return {stream.substr(0, capacity), LineState::kFull};
    return {stream, LineState::kOpen};
}

std::string_view WithoutLineEnd(std::string_view line) {
    if (line.empty() || line.back() != '\n') return line;
    line.remove_suffix(1);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    return line;
}

// The same bytes through the assembler, in a buffer of exactly the promised size.
struct Assembled {
    NarrowText buffer;
    LineAssembler line;
    LineState state = LineState::kOpen;
};

// In pieces of at most `piece` bytes.
Assembled Assemble(std::string_view stream, std::size_t capacity, std::size_t piece) {
    Assembled result;
    result.buffer = NewArray<char>(capacity + 1);
    result.line = {result.buffer.get(), capacity};
    while (!stream.empty() && result.state == LineState::kOpen) {
        const std::string_view part = stream.substr(0, piece);
        std::size_t added = 0;
        result.state = AddToLine(result.line, part.data(), part.size(), added);
        Require(added <= part.size(), "a line takes no more than is there");
        stream.remove_prefix(added);
    }
    return result;
}

// A line that can be told at a glance is the line that the assembler finds.
void CheckPlain(std::string_view stream, const Found& found) {
    const std::size_t plain = PlainLineLength(stream.data(), stream.size());
    if (plain == 0 || plain > found.bytes.size()) return;
    Require(found.state == LineState::kComplete && plain == found.bytes.size(), "a plain line is a line");
}

void CheckFinished(std::string_view stream, std::size_t capacity, std::size_t piece, const Found& found,
                   bool cut) {
    Assembled assembled = Assemble(stream, capacity, piece);
    Require(assembled.state == found.state,
            "the line ends at the LF behind its first CR, or at the capacity");
    Require(std::string_view(assembled.buffer.get(), assembled.line.length) == found.bytes,
            "a line holds exactly the stream's bytes");
    FinishLine(assembled.line, cut);
    const std::string_view expected = cut ? WithoutLineEnd(found.bytes) : found.bytes;
    Require(assembled.line.length == expected.size(), "cutting takes the line end and nothing else");
    Require(assembled.buffer[expected.size()] == '\0', "a finished line is terminated");
}

// Doubling a leading dot on the way out and taking one off on the way in is no change.
void CheckDots(const Found& found) {
    const std::string stuffed = (found.bytes.front() == '.' ? "." : "") + std::string(found.bytes);
    Assembled assembled = Assemble(stuffed, stuffed.size(), stuffed.size());
    FinishLine(assembled.line, false);
    const char* line = assembled.buffer.get();
    Require(!IsFinalDot(line), "a stuffed line is never the end of the reply");
    const char* unstuffed = Unstuffed(line);
    const std::size_t length = stuffed.size() - static_cast<std::size_t>(unstuffed - line);
    Require(std::string_view(unstuffed, length) == found.bytes, "unstuffing gives the line that was stuffed");
    Require(IsFinalDot(ExactText(found.bytes).get()) == (found.bytes == ".\r\n"),
            "the reply ends at a lone dot only");
}

}  // namespace

void FuzzOne(std::string_view input) {
    const std::size_t capacity = TakeByte(input) + std::size_t{1};
    while (!input.empty()) {
        const Found found = FindLine(input, capacity);
        CheckPlain(input, found);
        CheckFinished(input, capacity, input.size(), found, false);
        CheckFinished(input, capacity, 1 + capacity % 7, found, true);
        if (found.state != LineState::kComplete) break;
        CheckFinished(input, capacity * 2, input.size(), found, false);
        CheckDots(found);
        input.remove_prefix(found.bytes.size());
    }
}
