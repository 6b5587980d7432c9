// A small modal chooser of folders and files, since the device has none for folders. The tree is filled as
// folders are opened.
#pragma once

#include "platform/owners.h"

constexpr int kChooserPathSize = kPathSize;

struct FileChooser {
    ImageListOwner imageList;  // made on first use
    wchar_t path[kChooserPathSize] = {};
    const wchar_t* result = nullptr;   // the chosen path, in the buffer above, after OK
    const wchar_t* title = nullptr;    // borrowed
    const wchar_t* pattern = nullptr;  // borrowed; null: folders are chosen
    HWND dialog = nullptr;
    HWND tree = nullptr;
};

// Runs the chooser: IDOK when the user pressed OK, and `result` holds a folder's path with its trailing
// backslash or a file's path, with its drive where there are drives; IDCANCEL on Cancel and when the images
// cannot be made. With a pattern ("*.exe") a matching file is chosen, without one any folder.
INT_PTR RunFileChooser(FileChooser& chooser, HINSTANCE instance, HWND owner, const wchar_t* title,
                       const wchar_t* pattern);

// Frees the images.
void FreeFileChooser(FileChooser& chooser);
