#include "tests/support/text_table.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <fstream>
#include <map>
#include <regex>
#include <sstream>

namespace {

using Lines = std::vector<std::string>;
constexpr std::size_t kLongest = 300;  // text that is shown

std::string WithArguments(std::string line, std::istringstream words) {
    std::string argument;
    for (int number = 1; words >> argument; ++number) {
        const std::string name = "$" + std::to_string(number);
        for (std::size_t at; (at = line.find(name)) != std::string::npos;)
            line.replace(at, name.size(), argument);
    }
    return line;
}

void AddLine(Lines& lines, const std::map<std::string, Lines>& definitions, const std::string& line) {
    const std::size_t end = std::min(line.find(' '), line.size());
    const auto definition = definitions.find(line.substr(0, end));
    if (definition == definitions.end()) {
        lines.push_back(line);
        return;
    }
    for (const std::string& part : definition->second)
        AddLine(lines, definitions, WithArguments(part, std::istringstream(line.substr(end))));
}

std::string Converted(const std::string& text, UINT from, UINT to) {
    std::wstring wide(text.size(), L'\0');
    std::string bytes(text.size() * 3, '\0');
    wide.resize(static_cast<std::size_t>(MultiByteToWideChar(
        from, 0, text.data(), static_cast<int>(text.size()), wide.data(), static_cast<int>(wide.size()))));
    bytes.resize(static_cast<std::size_t>(
        WideCharToMultiByte(to, 0, wide.data(), static_cast<int>(wide.size()), bytes.data(),
                            static_cast<int>(bytes.size()), nullptr, nullptr)));
    return bytes;
}

}  // namespace

std::vector<TableRow> ReadTable(const std::string& name) {
    std::ifstream file(PELNOR_TESTS + name);
    std::map<std::string, Lines> definitions;
    std::vector<TableRow> rows;
    Lines unused, *lines = &unused, *definition = nullptr;
    for (std::string line; std::getline(file, line);) {
        if (line.empty()) lines = &unused;
        if (line.empty()) definition = nullptr;
        if (line.empty() || line[0] == '#') continue;
        if (definition) {
            definition->push_back(line);
        } else if (line.rfind("def ", 0) == 0) {
            definition = &definitions[line.substr(4)];
        } else if (line.rfind("== ", 0) == 0) {
            rows.push_back({line.substr(3), {}, ""});
            lines = &rows.back().lines;
        } else if (line.rfind("= ", 0) == 0) {
            rows.back().expected += line.substr(2) + "\n";
        } else {
            AddLine(*lines, definitions, line);
        }
    }
    EXPECT_TRUE(!rows.empty() && unused.empty()) << "no table: " << name;
    return rows;
}

void CheckOutcome(const TableRow& row, const std::string& outcome) {
    if (outcome == row.expected) return;
    const std::string shown = std::regex_replace(outcome, std::regex("(^|\n)(?!$)"), "$1= ");
    ADD_FAILURE() << "== " << row.sentence << "\n" << shown << "due:\n" << row.expected;
}

std::string Unescaped(const std::string& text) {
    static const std::regex kMark(R"(\{([^{}*]+)\*(\d+)\}|\\x([0-9A-Fa-f]{2})|\\(.))");
    std::string bytes, rest = text;
    for (std::smatch found; std::regex_search(rest, found, kMark); rest = found.suffix()) {
        bytes += found.prefix();
        const std::string repeated = found[1].matched ? Unescaped(found[1]) : "";
        for (int i = found[1].matched ? std::stoi(found[2]) : 0; i > 0; --i)
            bytes += repeated;
        if (found[3].matched) bytes += static_cast<char>(std::stoi(found[3], nullptr, 16));
        if (found[4].matched) bytes += found[4] == "r" ? "\r" : found[4] == "n" ? "\n" : found[4].str();
    }
    return bytes + rest;
}

std::string Escaped(const std::string& text) {
    std::ostringstream escaped;
    for (std::size_t i = 0, next; i < text.size(); i = next) {
        const char byte = text[i];
        const std::string control = byte == '\r'   ? "\\r"
                                    : byte == '\n' ? "\\n"
                                                   : "\\x0" + std::to_string(byte);
        const std::string shown = byte >= 0 && byte < ' ' ? control : std::string(1, byte);
        next = std::min(text.find_first_not_of(byte, i), text.size());
        if (next - i >= 20) {
            escaped << '{' << shown << '*' << next - i << '}';
        } else {
            escaped << shown;
            next = i + 1;
        }
    }
    const std::string whole = escaped.str();
    return whole.size() <= kLongest ? whole : whole.substr(0, 60) + "... " + std::to_string(text.size());
}

std::string FromSjis(const std::string& text) {
    return Converted(text, 932, CP_UTF8);
}
std::string ToSjis(const std::string& text) {
    return Converted(text, CP_UTF8, 932);
}

void Outcomes::Add(const std::string& outcome) {
    if (ranges_.empty() || ranges_.back().outcome != outcome) ranges_.push_back({count_, count_, outcome});
    ranges_.back().last = count_++;
}

std::string Outcomes::Text() const {
    std::ostringstream text;
    for (const Range& range : ranges_) {
        text << range.first;
        if (range.last > range.first) text << '-' << range.last;
        text << " " << range.outcome;
    }
    return text.str();
}
