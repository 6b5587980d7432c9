// Encoded words and ISO-2022-JP, both ways. The input is a header line; its characters are also what is sent
// out.
#include <cstring>
#include <vector>

#include "fuzz/harness.h"
#include "text/jis.h"
#include "text/mime.h"

namespace {

constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::string_view kOpenings[] = {"=?iso-2022-jp?B?", "=?ISO-2022-JP?B?"};
constexpr std::string_view kToSingleByte = "\x1B(B";

enum class Mode { kSingleByte, kTwoByte, kKatakana };
constexpr struct {
    std::string_view text;
    Mode mode;
} kEscapes[] = {
    {"\x1B$B", Mode::kTwoByte},    {"\x1B$@", Mode::kTwoByte},    {"\x1BK", Mode::kTwoByte},
    {"\x1B(B", Mode::kSingleByte}, {"\x1B(J", Mode::kSingleByte}, {"\x1B(H", Mode::kSingleByte},
    {"\x1BH", Mode::kSingleByte},  {"\x1B(I", Mode::kKatakana},
};

// A model of the decoder that works on whole pieces: the text of a word first, then its groups.
std::string DecodeText(std::string_view text) {
    std::string bytes;
    for (std::size_t at = 0; at < text.size(); at += 4) {
        std::vector<std::size_t> values;
        for (const char c : text.substr(at, 4))
            values.push_back(std::min(kAlphabet.find(c), kAlphabet.size()));
        for (std::size_t i = 1; i < values.size() && (i == 1 || values[i] != 64); ++i)
            bytes += static_cast<char>((values[i - 1] * 64 + values[i]) >> (6 - 2 * i) & 0xFF);
    }
    return bytes;
}

std::string Decode(std::string_view line) {
    std::string out;
    while (!line.empty()) {
        const std::string_view opening = line.substr(0, kOpenings[0].size());
        if (opening != kOpenings[0] && opening != kOpenings[1]) {
            const std::size_t taken = line.substr(0, 2) == "=?" ? 2 : 1;
            out += line.substr(0, taken);
            line.remove_prefix(taken);
            continue;
        }
        line.remove_prefix(opening.size());
        const std::string_view text = line.substr(0, line.find('?'));
        out += DecodeText(text);
        line.remove_prefix(text.size());
        if (line.substr(0, 2) != "?=") break;
        line.remove_prefix(2);
    }
    return out;
}

bool ChangesMode(std::string_view& line, Mode& mode) {
    for (const auto& escape : kEscapes) {
        if (line.substr(0, escape.text.size()) != escape.text) continue;
        line.remove_prefix(escape.text.size());
        mode = escape.mode;
        return true;
    }
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

std::string Convert(std::string_view line) {
    std::string out;
    Mode mode = Mode::kSingleByte;
    while (!line.empty()) {
        if (ChangesMode(line, mode)) continue;
        const bool takesTwo = mode == Mode::kTwoByte && line.size() > 1 && IsPair(line[0], line[0]);
        if (!takesTwo) {
            out += static_cast<char>(line[0] | (mode == Mode::kKatakana ? 0x80 : 0));
        } else {
            out += IsPair(line[0], line[1]) ? PlaceInTable(line[0], line[1]) : std::string(line.substr(0, 2));
        }
        line.remove_prefix(takesTwo ? 2 : 1);
    }
    return out;
}

// Into exactly the room that the contract asks for; the rest of the room stays as it was.
template <class Conversion>
std::string Converted(std::string_view text, Conversion convert) {
    const NarrowText line = ExactText(text);
    const NarrowText room = NewArray<char>(std::strlen(line.get()) + 1);
    convert(line.get(), room.get());
    return room.get();
}

std::string Decoded(std::string_view text) {
    return Converted(text, [](const char* line, char* room) { DecodeEncodedWords(room, line); });
}

std::string FromJis(std::string_view text) {
    return Converted(text, LineFromJis);
}

// Whatever the text is, it converts and ends in single-byte mode.
std::string ToJis(std::string_view text) {
    const std::string jis = TextToJis(ExactText(text).get()).get();
    Require(jis.size() >= 3 && jis.substr(jis.size() - 3) == kToSingleByte,
            "the text ends in single-byte mode");
    return jis;
}

void CheckDecoder(std::string_view line) {
    const std::string expected = Decode(line);
    Require(Decoded(line) == expected.c_str(), "the decoder writes what its rule says");
    Require(expected.find("=?") != std::string::npos || Decoded(expected) == expected.c_str(),
            "decoding twice is decoding once");
}

void CheckConversion(std::string_view line) {
    const std::string converted = FromJis(line);
    Require(converted == Convert(line), "the line converts as its modes say");
    Require(converted.find('\x1B') != std::string::npos || FromJis(converted) == converted,
            "without escapes a line stays what it is");
}

// The words decoded.
std::vector<std::string> MakeWords(std::string_view jis) {
    EncodedWordList list;
    Require(EncodeAsWords(list, ExactText(jis).get()), "encoding fails only for want of memory");
    std::vector<std::string> words;
    for (const EncodedWord* word = list.first; word; word = word->next) {
        Require(std::strlen(word->text.get()) < kEncodedWordSize, "a word fits its buffer");
        words.push_back(Decode(word->text.get()));
    }
    ReleaseEncodedWords(list);
    return words;
}

// Each word is read alone, as a reader does that sees a blank between them, and leaves single-byte mode
// behind.
void CheckWords(const std::string& text) {
    constexpr std::string_view kBehind = "~~";
    std::string read;
    for (const std::string& word : MakeWords(ToJis(text))) {
        const std::string line = FromJis(word + std::string(kBehind));
        const std::size_t length = line.size() - kBehind.size();
        Require(line.substr(length) == kBehind, "what follows a word is single-byte text");
        read += line.substr(0, length);
    }
    Require(read == text, "the words together are the text");
}

}  // namespace

void FuzzOne(std::string_view input) {
    const std::string_view line = input.substr(0, input.find('\0'));
    const std::string text = WholeCharacters(input);
    CheckDecoder(line);
    CheckConversion(line);
    (void)MakeWords(line);
    (void)FromJis(ToJis(input));
    CheckWords(text);
    Require(FromJis(ToJis(text)) == text, "text sent out reads back as it was");
}
