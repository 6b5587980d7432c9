// Edits one group's keywords. User-interface thread only.
#pragma once

#include "files/kept_bytes.h"
#include "platform/platform.h"

struct KeywordDialogState {
    const wchar_t* filterPath = nullptr;       // the ".flt" file; borrowed
    const wchar_t* proposedKeyword = nullptr;  // offered as a new keyword; borrowed, may be null
    HWND dialog = nullptr;
    KeptBytes rest;          // the file from its first line of 1024 bytes or more on; written last
    unsigned loadError = 0;  // why the load failed; 0 when list and rest hold the whole file
};

// Runs the dialog modally: IDOK when the file was replaced, else IDCANCEL. A file that was not read to
// its end is not replaced, and the old file stays until the new one is complete. The filter stops at a line
// that is too long, so such lines are written last.
INT_PTR RunKeywordDialog(KeywordDialogState& state, HINSTANCE instance, HWND owner, const wchar_t* filterPath,
                         const wchar_t* proposedKeyword);
