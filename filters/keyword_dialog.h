// Edits one group's keywords. User-interface thread only.
#pragma once

#include "platform/platform.h"

struct KeywordDialogState {
    const wchar_t* filterPath = nullptr;       // the ".flt" file; borrowed
    const wchar_t* proposedKeyword = nullptr;  // offered as a new keyword; borrowed, may be null
    HWND dialog = nullptr;
    unsigned loadError = 0;  // why the list does not hold the whole file; 0 when it does
};

// Runs the dialog modally: 1 when the file was replaced (OK), else 2. A file that could not be read whole is
// not replaced, but for lines behind one of 1024 bytes or more, which are matched with nothing. Until the new
// file is complete the old one stands.
INT_PTR RunKeywordDialog(KeywordDialogState& state, HINSTANCE instance, HWND owner, const wchar_t* filterPath,
                         const wchar_t* proposedKeyword);
