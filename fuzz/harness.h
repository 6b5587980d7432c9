// What the fuzz targets share. A target is one file that defines FuzzOne; the sanitizers watch the program's
// code while it runs, and Require judges what came out of it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "text/owned.h"

void FuzzOne(std::string_view input);

// Ends the process unless `holds`: the fuzzer keeps the input and reports a finding named `what`.
void Require(bool holds, const char* what);

// Copies of exactly the text's size, so that the sanitizer sees the first byte read behind it.
NarrowText ExactBytes(std::string_view text);  // no NUL behind
NarrowText ExactText(std::string_view text);   // up to the text's first NUL, and a NUL

// The leading bytes of an input choose, the rest is material. 0 when nothing is left.
uint8_t TakeByte(std::string_view& input);

// Takes up to and without `end`, which is dropped; the whole rest when there is none.
std::string_view TakeUpTo(std::string_view& input, char end);

// Without the CR LF, or the LF alone, that it may end with.
std::string_view WithoutLineEnd(std::string_view line);

// The characters of `material` as well-formed Shift_JIS: what cannot begin or end a character is left out.
// Every two-byte character has a place in JIS X 0208's table.
std::string WholeCharacters(std::string_view material);
