// Encoded words, both ways. The input is a header line; its characters are also what the encoder is given.
#include <cstring>
#include <vector>

#include "fuzz/harness.h"
#include "text/jis.h"
#include "text/mime.h"

namespace {

constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::string_view kOpenings[] = {"=?iso-2022-jp?B?", "=?ISO-2022-JP?B?"};

unsigned ValueOf(char c) {
    const std::size_t place = kAlphabet.find(c);
    return place == std::string_view::npos ? 64 : static_cast<unsigned>(place);
}

// A model of the decoder that works on whole pieces: the text of a word first, then its groups.
std::string DecodeText(std::string_view text) {
    std::string bytes;
    for (std::size_t at = 0; at < text.size(); at += 4) {
        std::vector<unsigned> values;
        for (const char c : text.substr(at, 4))
            values.push_back(ValueOf(c));
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

// Decoded into exactly the room that the contract asks for.
std::string DecodeExactly(const char* line, std::size_t length) {
    const NarrowText room = NewArray<char>(std::strlen(line) + 1);
    DecodeEncodedWords(room.get(), line);
    return {room.get(), length};
}

void CheckDecoder(std::string_view input) {
    const NarrowText line = ExactText(input);
    const std::string expected = Decode(line.get());
    Require(expected.size() <= std::strlen(line.get()), "decoded text is no longer than the line");
    Require(
        DecodeExactly(line.get(), expected.size() + 1) == std::string(expected.c_str(), expected.size() + 1),
        "the decoder writes what its rule says");
    if (expected.find("=?") == std::string::npos) {
        const NarrowText again = ExactText(expected);
        Require(DecodeExactly(again.get(), std::strlen(again.get())) == again.get(),
                "decoding twice is decoding once");
    }
}

void CheckBase64(std::string_view input) {
    const NarrowText source = ExactText(input);
    const std::size_t length = std::strlen(source.get());
    const std::size_t size = 4 * ((length + 2) / 3) + 1;
    const NarrowText encoded = NewArray<char>(size);
    Base64Encode(source.get(), encoded.get());
    Require(std::strlen(encoded.get()) + 1 == size, "base64 fills its stated size");
    const std::string word = std::string(kOpenings[0]) + encoded.get() + "?=";
    Require(DecodeExactly(word.c_str(), length + 1) == std::string(source.get(), length + 1),
            "what was encoded decodes to itself");
}

std::string ToShiftJis(const std::string& jis) {
    const NarrowText source = ExactText(jis);
    const NarrowText room = NewArray<char>(std::strlen(source.get()) + 1);
    LineFromJis(source.get(), room.get());
    return room.get();
}

// The decoded words.
std::vector<std::string> MakeWords(const char* jisText) {
    EncodedWordList list;
    Require(EncodeAsWords(list, jisText), "encoding fails only for want of memory");
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
    for (const std::string& word : MakeWords(TextToJis(text.c_str()).get())) {
        const std::string line = ToShiftJis(word + std::string(kBehind));
        const std::size_t length = line.size() - kBehind.size();
        Require(line.substr(length) == kBehind, "what follows a word is single-byte text");
        read += line.substr(0, length);
    }
    Require(read == text, "the words together are the text");
}

}  // namespace

void FuzzOne(std::string_view input) {
    CheckDecoder(input);
    CheckBase64(input);
    (void)MakeWords(ExactText(input).get());
    CheckWords(WholeCharacters(input));
}
