// Edits one group's keywords. User-interface thread only.
#pragma once

#include "platform/platform.h"
#include "files/kept_bytes.h"

struct KeywordDialogState {
    const wchar_t* filterPath = nullptr;       // the ".flt" file; borrowed
    const wchar_t* proposedKeyword = nullptr;  // offered as a new keyword; borrowed, may be null
    HWND dialog = nullptr;
    KeptBytes rest;          // of the file, from a line of 1024 bytes or more on: stays at its end
    unsigned loadError = 0;  // why list and rest do not hold the whole file; 0 when they do
};

// Runs the dialog modally: 1 when the file was replaced (OK), else 2. A file that could not be read whole is
// not replaced. Until the new file is complete the old one stands. What the filter does not read of it, since
// a line is too long, stands behind what it reads.
INT_PTR RunKeywordDialog(KeywordDialogState& state, HINSTANCE instance, HWND owner, const wchar_t* filterPath,
                         const wchar_t* proposedKeyword);
