// One article's kept header lines (RFC 1036), collected before they are written and while a log is scanned.
// Knows no platform.
#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

#include "text/owned.h"

constexpr uint32_t kNoLine = 0xFFFFFFFF;    // offset of a line that the block does not hold
constexpr uint32_t kNoNumber = 0xFFFFFFFF;  // a sequence line without a readable number

// Offsets count from the buffer's start; lengths include the CR LF and joined continuations. When a name
// occurs twice the later line counts.
struct HeaderBlock {
    NarrowText buffer;      // the lines, each with its line end, back to back, NUL-terminated
    uint32_t length = 0;    // bytes written
    uint32_t capacity = 0;  // bytes allocated
    uint32_t subjectLine = kNoLine;
    uint32_t fromLine = kNoLine;
    uint32_t dateLine = kNoLine;
    uint32_t sequence = kNoNumber;
    uint32_t newsgroupLine = kNoLine;
    uint32_t subjectLength = 0;
    uint32_t newsgroupLength = 0;
    bool inSubject = false;    // the last line added was the subject line
    bool inNewsgroup = false;  // the last line added was the newsgroup line
};

constexpr std::string_view kSubjectName = "Subject: ";
constexpr std::string_view kNewsgroupName = "Newsgroup: ";
constexpr std::string_view kSequenceName = "X-Local-Seq:";
constexpr std::string_view kDateName = "Date:";
constexpr std::string_view kFromName = "From:";

// Empties the block and gives it its first 2048 bytes; error 8.
[[nodiscard]] bool StartHeaderBlock(HeaderBlock& block);

// Adds one line with its line end. A line that begins with a blank or a tab is joined to the line before:
// that line's end and the blanks vanish. Error 8 when the block cannot grow; it then holds what it held.
[[nodiscard]] bool AddHeaderLine(HeaderBlock& block, std::string_view line);

// The text of the From or Date line at `lineOffset`: what follows "From: " or "Date: ", up to the end of the
// block. Empty when there is no such line.
std::string_view TextAfterName(const HeaderBlock& block, uint32_t lineOffset);

inline bool IsContinuation(std::string_view line) {
    return !line.empty() && (line.front() == ' ' || line.front() == '\t');
}

// Most lines differ in their first byte, for which a call would be much. A name has one.
inline bool StartsWith(std::string_view line, std::string_view name) {
    return line.size() >= name.size() && line.front() == name.front() &&
           std::memcmp(line.data(), name.data(), name.size()) == 0;
}
