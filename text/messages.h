// The program's texts: string-table entries and "(%d)" messages. Without a caller's buffer, the former share
// one buffer and the latter another: each call overwrites the text of the one before, so a caller that needs
// two texts copies the first. Those two are the user-interface thread's; a worker brings its own.
#pragma once

#include <cstddef>

#include "platform/platform.h"

constexpr int kTextCapacity = 1024;  // UTF-16 units of each buffer, and of a message's title or text

using TextBuffer = wchar_t[kTextCapacity];

// The module that holds the resources; set once at start-up.
void SetResourceInstance(HINSTANCE instance);
HINSTANCE ResourceInstance();

// String-table entry `id`, or null when there is none. Keeps the last error.
const wchar_t* LoadResString(UINT id);
const wchar_t* LoadResString(UINT id, TextBuffer& buffer);

// `format` with the last error for its one "%d".
const wchar_t* FormatLastError(const wchar_t* format);
const wchar_t* FormatLastError(const wchar_t* format, TextBuffer& buffer);

// `format` with one text for its "%s", cut to kTextCapacity - 1 units.
const wchar_t* FormatText(const wchar_t* format, const wchar_t* text);
const wchar_t* FormatText(const wchar_t* format, const wchar_t* text, TextBuffer& buffer);

// Copies `text` into a buffer of `capacity` units, cut to fit and always terminated.
void CopyCut(wchar_t* buffer, std::size_t capacity, const wchar_t* text);

constexpr wchar_t kProgramCaption[] = L"PELNOR";

// A message box without an owner. `id` is a "(%d)" text, which shows the last error.
void ShowLastError(UINT id, const wchar_t* caption, UINT icon = MB_ICONERROR);
