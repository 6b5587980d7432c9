// Where 8-bit Shift_JIS text may be cut.
#pragma once

#include <cstddef>

// The first byte of a two-byte character: 0x81 to 0x9F or 0xE0 to 0xFC, which one flipped bit puts side by
// side.
inline bool IsLeadByte(char c) {
    return static_cast<unsigned char>((c ^ 0x20) - 0xA1) < 0x3C;
}

// What ends a text or a line of it: CR, LF or NUL.
inline bool EndsText(char c) {
    return c == '\r' || c == '\n' || c == '\0';
}

// Copies the characters of text[0..length) to `field`, whole characters only, at most `limit` bytes. It stops
// at CR, LF or NUL; a lead byte is copied only together with its trail byte. Returns the number of bytes
// copied; no NUL is added.
std::size_t CopyWholeCharacters(char* field, std::size_t limit, const char* text, std::size_t length);
