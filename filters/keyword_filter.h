// One group's keywords and the priority that they give a subject.
//
// The ".flt" file is 8-bit text, one keyword a line: "+ " (high) or "- " (low), the keyword, CR LF. Keywords
// of normal priority are not written; a missing file is an empty filter.
#pragma once

#include <cstdint>
#include <string_view>

#include "text/owned.h"

struct DataFile;

// Bytes of a line with its CR LF and a NUL, and of the keyword in it. A longer line is not read.
constexpr uint32_t kKeywordLineSize = 512;
constexpr uint32_t kLongestKeyword = kKeywordLineSize - sizeof("+ \r\n");

struct KeywordNode {
    NarrowText keyword;
    KeywordNode* next = nullptr;  // owned by the filter
};

struct KeywordFilter {
    KeywordNode* high = nullptr;  // newest first, so in the reverse of the file's order
    KeywordNode* low = nullptr;

    KeywordFilter() = default;
    KeywordFilter(const KeywordFilter&) = delete;
    KeywordFilter& operator=(const KeywordFilter&) = delete;
    ~KeywordFilter();
};

void ClearKeywordFilter(KeywordFilter& filter);

// Adds one line of the file (without its line end) at the head of its list; lines shorter than two bytes are
// skipped. A first byte '+' means high, any other low. Error 8.
[[nodiscard]] bool AddKeywordLine(KeywordFilter& filter, std::string_view line);

// Opens the file for reading. Error 2 when there is none. Where a save was cut off between the removal of the
// old file and the naming of the new one ("~" appended), the new one gets its name first.
[[nodiscard]] bool OpenKeywordFile(DataFile& file, const wchar_t* path);

// Empties the filter and loads the file. A missing file is no failure, nor is a line over 511 bytes, which
// ends the reading. Fails when the file cannot be opened for another reason, and with error 8.
[[nodiscard]] bool LoadKeywordFilter(KeywordFilter& filter, const wchar_t* path);

// 2 high, 1 low, 0 normal. A keyword matches when the shorter of the two texts stands somewhere in the
// longer, byte for byte; high wins over low. An empty keyword or subject matches.
uint32_t MatchKeywordFilter(const KeywordFilter& filter, std::string_view subject);
