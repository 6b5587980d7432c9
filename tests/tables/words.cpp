#include "tests/tables/words.h"

#include <algorithm>
#include <cstdint>
#include <regex>

#include "tests/support/text_table.h"

namespace {

constexpr std::size_t kLongRun = 20;

std::string EscapedByte(char byte) {
    if (byte == '\r') return "\\r";
    if (byte == '\n') return "\\n";
    if (byte == '"' || byte == '\\' || byte == '{') return {'\\', byte};
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

std::vector<Word> WordsOf(const std::string& line) {
    static const std::regex kWord(R"_(("((?:\\.|[^"\\])*)"(?::(\d+))?)|\S+)_");
    std::vector<Word> words;
    for (std::sregex_iterator found(line.begin(), line.end(), kWord), end; found != end; ++found) {
        const std::smatch& word = *found;
        words.push_back({word[1].matched ? Unescaped(word[2]) : word.str(), word[1].matched});
        if (word[3].matched) words.back().text.resize(std::stoul(word[3]));
    }
    return words;
}

std::string Quoted(std::string_view bytes) {
    std::string quoted = "\"";
    while (!bytes.empty()) {
        const std::string byte = EscapedByte(bytes[0]);
        const std::size_t run = std::min(bytes.find_first_not_of(bytes[0]), bytes.size());
        quoted += run < kLongRun ? byte : '{' + byte + '*' + std::to_string(run) + '}';
        bytes.remove_prefix(run < kLongRun ? 1 : run);
    }
    return quoted + '"';
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
