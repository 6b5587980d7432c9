// ISO-2022-JP (RFC 1468) to Shift_JIS and back, without the platform's code pages.
#pragma once

#include "text/owned.h"

// Converts one NUL-terminated line. `destination` holds at least strlen(source) + 1 bytes and does not
// overlap the source; the result is never longer than the source and is NUL-terminated. Every line starts in
// single-byte mode. Malformed input is copied through, never refused.
void LineFromJis(const char* source, char* destination);

// The same for the text before the first NUL or `end`, a control byte that is no ESC: moves `text` there.
// Returns the end of the result, which is not terminated.
char* TextFromJis(const char*& text, char* destination, char end);

// Converts a NUL-terminated Shift_JIS text; the result always ends with ESC ( B. Null, with error 8, when
// memory runs out.
NarrowText TextToJis(const char* text);
