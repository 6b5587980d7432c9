// ISO-2022-JP lines to Shift_JIS and back. The input is the line.
#include <cstring>

#include "fuzz/harness.h"
#include "text/jis.h"

namespace {

constexpr std::string_view kTwoByteEscapes[] = {"\x1B$B", "\x1B$@", "\x1BK"};
constexpr std::string_view kSingleByteEscapes[] = {"\x1B(B", "\x1B(J", "\x1B(H", "\x1BH"};
constexpr std::string_view kKatakanaEscapes[] = {"\x1B(I"};

enum class Mode { kSingleByte, kTwoByte, kKatakana };

template <std::size_t N>
bool TakeEscape(std::string_view& line, const std::string_view (&escapes)[N]) {
    for (const std::string_view escape : escapes) {
        if (line.substr(0, escape.size()) != escape) continue;
        line.remove_prefix(escape.size());
        return true;
    }
    return false;
}

bool ChangesMode(std::string_view& line, Mode& mode) {
    if (TakeEscape(line, kTwoByteEscapes)) return mode = Mode::kTwoByte, true;
    if (TakeEscape(line, kSingleByteEscapes)) return mode = Mode::kSingleByte, true;
    if (TakeEscape(line, kKatakanaEscapes)) return mode = Mode::kKatakana, true;
    return false;
}

// Two bytes of the same half of the code: 0x21-0x7E, or the same with the top bit.
bool IsPair(char first, char second) {
    const auto inTable = [](int byte) { return (byte & 0x7F) >= 0x21 && (byte & 0x7F) <= 0x7E; };
    return inTable(first) && inTable(second) && ((first ^ second) & 0x80) == 0;
}

// By row and cell of the table: two rows share one lead byte, and the trail byte steps over 0x7F.
std::string PlaceInTable(char first, char second) {
    const int row = (first & 0x7F) - 0x21;
    const int cell = (second & 0x7F) - 0x21;
    const int lead = row / 2 + (row < 62 ? 0x81 : 0xC1);
    const int trail = row % 2 != 0 ? cell + 0x9F : cell + 0x40 + (cell >= 63 ? 1 : 0);
    return {static_cast<char>(lead), static_cast<char>(trail)};
}

bool StandsAlone(char byte) {
    return !IsPair(byte, byte);
}

std::string Convert(std::string_view line) {
    std::string out;
    Mode mode = Mode::kSingleByte;
    while (!line.empty()) {
        if (ChangesMode(line, mode)) continue;
        const bool takesTwo = mode == Mode::kTwoByte && line.size() > 1 && !StandsAlone(line[0]);
        if (!takesTwo) {
            out += static_cast<char>(line[0] | (mode == Mode::kKatakana ? 0x80 : 0));
        } else {
            out += IsPair(line[0], line[1]) ? PlaceInTable(line[0], line[1]) : std::string(line.substr(0, 2));
        }
        line.remove_prefix(takesTwo ? 2 : 1);
    }
    return out;
}

std::string FromJis(const char* line) {
    const NarrowText room = NewArray<char>(std::strlen(line) + 1);
    LineFromJis(line, room.get());
    return room.get();
}

// Whatever the text is, it converts, ends in single-byte mode and reads back without harm.
std::string ToJis(std::string_view text) {
    const NarrowText jis = TextToJis(ExactText(text).get());
    const std::string result = jis.get();
    Require(result.size() >= 3 && result.substr(result.size() - 3) == "\x1B(B",
            "the text ends in single-byte mode");
    return result;
}

}  // namespace

void FuzzOne(std::string_view input) {
    const NarrowText line = ExactText(input);
    const std::string converted = FromJis(line.get());
    Require(converted == Convert(line.get()), "the line converts as its modes say");
    if (converted.find('\x1B') == std::string::npos) {
        Require(FromJis(ExactText(converted).get()) == converted, "without escapes a line stays what it is");
    }
    (void)FromJis(ExactText(ToJis(input)).get());
    const std::string text = WholeCharacters(input);
    Require(FromJis(ExactText(ToJis(text)).get()) == text, "text sent out reads back as it was");
}
