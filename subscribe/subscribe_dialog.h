// Lets the user choose the groups to read: categories from "category.dat", their groups from "active.dat",
// and the chosen ones into "group.dat". User-interface thread only.
#pragma once

#include "files/kept_bytes.h"
#include "platform/owners.h"
#include "store/string_set.h"

struct SubscribeState {
    HWND dialog = nullptr;
    // Paths and settings are borrowed; user and password may be null.
    const wchar_t* activePath = nullptr;
    const wchar_t* categoryPath = nullptr;
    const wchar_t* groupPath = nullptr;
    const wchar_t* server = nullptr;
    uint32_t port = 0;
    const char* user = nullptr;
    const char* password = nullptr;
    HINSTANCE instance = nullptr;
    ImageListOwner imageList;     // the marks; released when the dialog has closed
    StringSet subscriptions;      // the chosen names, as they are in the file
    KeptBytes overlongLines;      // of the file; written back as they were
    bool listsCategories = true;  // else the groups of one category
    unsigned loadError = 0;       // why the set does not hold the whole file; 0 when it does
};

// Runs the dialog modally: IDOK when it was closed with OK, whether or not "group.dat" could be written, else
// IDCANCEL.
INT_PTR RunSubscribeDialog(SubscribeState& state, HINSTANCE instance, HWND parent);
