// MIME encoded words (RFC 2047) in ISO-2022-JP with base64, the only kind that fj.* headers need.
#pragma once

#include "text/owned.h"

// Decodes the words that open exactly with "=?iso-2022-jp?B?" or "=?ISO-2022-JP?B?"; everything else is
// copied. The decoded bytes are ISO-2022-JP. `destination` holds at least strlen(source) + 1 bytes and does
// not overlap the source. A word without an end ends the line.
void DecodeEncodedWords(char* destination, const char* source);

constexpr std::size_t kEncodedWordSize = 81;  // bytes of one word's buffer, its NUL included

struct EncodedWord {
    NarrowText text;              // kEncodedWordSize bytes
    EncodedWord* next = nullptr;  // owned by the list
};

struct EncodedWordList {
    EncodedWord* first = nullptr;
    EncodedWord* last = nullptr;
};

// Appends the words that carry `jisText` (ISO-2022-JP, NUL-terminated) to the list, in order. False, with
// error 8, when memory runs out; the words made until then stay for ReleaseEncodedWords.
[[nodiscard]] bool EncodeAsWords(EncodedWordList& list, const char* jisText);

void ReleaseEncodedWords(EncodedWordList& list);

// Writes the base64 form (RFC 4648) of a NUL-terminated string, padded, and a NUL: 4 * ((length + 2) / 3) + 1
// bytes.
void Base64Encode(const char* source, char* destination);
