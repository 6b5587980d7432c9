// Converts between the stored 8-bit text and the UTF-16 of the user interface. 8-bit text is in code page 932
// wherever that is installed and in the system's code page elsewhere, so that a data folder reads the same on
// every machine.
#pragma once

#include "text/owned.h"

// Both convert a whole NUL-terminated text into a new one that the caller owns. Null, with error 8, when
// memory runs out.
WideText ToWide(const char* text);
NarrowText ToNarrow(const wchar_t* text);

// A new copy; null, with error 8, when memory runs out.
WideText CopyText(const wchar_t* text);
NarrowText CopyText(const char* text);
