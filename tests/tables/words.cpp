#include "tests/tables/words.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <utility>

namespace {

constexpr std::string_view kBytes = {"\r\n\t\0\"\\", 6};
constexpr std::string_view kNames = "rnt0\"\\";
constexpr std::size_t kLongRun = 20;

char TakeByte(std::string_view& line) {
    const char byte = line[0];
    line.remove_prefix(1);
    if (byte != '\\') return byte;
    const char name = line[0];
    line.remove_prefix(1);
    if (name != 'x') return kBytes[kNames.find(name)];
    const std::string digits(line.substr(0, 2));
    line.remove_prefix(2);
    return static_cast<char>(std::strtoul(digits.c_str(), nullptr, 16));
}

// Behind the sign that the line begins with.
std::size_t TakeNumber(std::string_view& line) {
    line.remove_prefix(1);
    const std::size_t length = std::min(line.find_first_not_of("0123456789"), line.size());
    const std::string digits(line.substr(0, length));
    line.remove_prefix(length);
    return std::strtoul(digits.c_str(), nullptr, 10);
}

std::string TakePiece(std::string_view& line) {
    std::string piece;
    line.remove_prefix(1);
    while (line[0] != '"')
        piece += TakeByte(line);
    line.remove_prefix(1);
    if (!line.empty() && line[0] == ':') piece.resize(TakeNumber(line), '\0');
    if (line.empty() || line[0] != '*') return piece;
    std::string pieces;
    for (std::size_t count = TakeNumber(line); count > 0; --count)
        pieces += piece;
    return pieces;
}

Word TakeWord(std::string_view& line) {
    Word word{"", line[0] == '"'};
    while (word.isQuoted && !line.empty() && line[0] == '"')
        word.text += TakePiece(line);
    if (word.isQuoted) return word;
    word.text = line.substr(0, line.find(' '));
    line.remove_prefix(word.text.size());
    return word;
}

std::string Escaped(char byte) {
    const std::size_t place = kBytes.find(byte);
    if (place != std::string_view::npos) return {'\\', kNames[place]};
    if (byte >= ' ' && byte <= '~') return {byte};
    constexpr char kDigits[] = "0123456789ABCDEF";
    const auto value = static_cast<unsigned char>(byte);
    return {'\\', 'x', kDigits[value / 16], kDigits[value % 16]};
}

std::string TakeField(std::string_view& bytes, std::size_t size) {
    const std::string_view field = bytes.substr(0, size ? size : 4);
    bytes.remove_prefix(field.size());
    if (size != 0) return Quoted(field.substr(0, field.find_last_not_of('\0') + 1));
    uint32_t number = 0;
    for (std::size_t i = 4; i > 0; --i)
        number = number << 8 | static_cast<unsigned char>(field[i - 1]);
    return std::to_string(number);
}

// Fields by their size; 0 for a number.
std::string TakeFields(std::string_view& bytes, const std::vector<std::size_t>& sizes) {
    std::string line;
    for (const std::size_t size : sizes)
        line += (line.empty() ? "" : " ") + TakeField(bytes, size);
    return line;
}

}  // namespace

std::vector<Word> WordsOf(std::string_view line) {
    std::vector<Word> words;
    while (line.find_first_not_of(' ') != std::string_view::npos) {
        line.remove_prefix(line.find_first_not_of(' '));
        words.push_back(TakeWord(line));
    }
    return words;
}

std::string Quoted(std::string_view bytes) {
    std::string quoted, piece;
    while (!bytes.empty()) {
        const std::string byte = Escaped(bytes[0]);
        const std::size_t run = std::min(bytes.find_first_not_of(bytes[0]), bytes.size());
        bytes.remove_prefix(run < kLongRun ? 1 : run);
        piece += byte;
        if (run < kLongRun) continue;
        piece.resize(piece.size() - byte.size());
        if (!piece.empty()) quoted += '"' + std::exchange(piece, "") + '"';
        quoted += '"' + byte + "\"*" + std::to_string(run);
    }
    return piece.empty() && !quoted.empty() ? quoted : quoted + '"' + piece + '"';
}

std::string BytesOf(const Word& word) {
    if (word.isQuoted) return word.text;
    std::string bytes;
    for (unsigned long value = std::strtoul(word.text.c_str(), nullptr, 10); bytes.size() < 4; value >>= 8)
        bytes += static_cast<char>(value & 0xFF);
    return bytes;
}

std::vector<std::string> IndexLines(std::string_view bytes) {
    if (bytes.size() < 100 || bytes[0] != 5) return {Quoted(bytes)};
    std::vector<std::string> lines = {TakeFields(bytes, {0, 0, 0, 0, 0, 0, 64, 0, 0, 0})};
    while (bytes.size() >= 92) {
        const std::string_view record = bytes.substr(0, 92);
        lines.push_back(TakeFields(bytes, {0, 0, 0, 0, 48, 4, 16, 0, 0}));
        std::size_t count = 1;
        for (; bytes.substr(0, 92) == record; ++count)
            bytes.remove_prefix(92);
        if (count > 1) lines.back() += ", and " + std::to_string(count - 1) + " more";
    }
    if (!bytes.empty()) lines.push_back(Quoted(bytes));
    return lines;
}
