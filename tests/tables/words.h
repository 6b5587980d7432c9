// The words that a table's line is made of.
#pragma once

#include <string>
#include <string_view>
#include <vector>

// Bytes in quotes, escaped as in all tables; "x":48 is filled with 0 bytes up to 48. Anything else up to a
// blank is a name or a number.
struct Word {
    std::string text;
    bool isQuoted = false;
};

std::vector<Word> WordsOf(const std::string& line);

// In quotes, so that WordsOf gives the same bytes.
std::string Quoted(std::string_view bytes);

// What stands in a file for the word: a number is four bytes, little-endian.
std::string BytesOf(const Word& word);

// An index of version 5, a line for the header and one for each record, or equal ones together; any other
// bytes are one quoted word.
std::vector<std::string> IndexLines(std::string_view bytes);
