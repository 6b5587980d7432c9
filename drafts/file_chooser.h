// A small modal chooser of folders and files: the device has none. The tree is filled as folders are opened.
#pragma once

#include "platform/platform.h"

constexpr int kChooserPathSize = 260;  // UTF-16 units, the terminator included

struct FileChooser {
    HIMAGELIST imageList = nullptr;  // made on first use, freed by FreeFileChooser
    wchar_t path[kChooserPathSize] = {};
    const wchar_t* result = nullptr;   // the chosen path, in the buffer above, after OK
    const wchar_t* title = nullptr;    // borrowed
    const wchar_t* pattern = nullptr;  // borrowed; null: folders are chosen
    HWND dialog = nullptr;
    HWND tree = nullptr;
};

// Runs the chooser: 1 when the user pressed OK, and `result` holds a folder's path with its trailing
// backslash or a file's path; 2 on Cancel and when the images cannot be made. With a pattern ("*.exe") a
// matching file is chosen, without one any folder.
INT_PTR RunFileChooser(FileChooser& chooser, HINSTANCE instance, HWND owner, const wchar_t* title,
                       const wchar_t* pattern);

void FreeFileChooser(FileChooser& chooser);

// The images of the chooser and of the drafts pane, 16 x 16 each; null when they cannot be made.
enum FileImage { kFolderImage = 0, kOpenFolderImage = 1, kFileImage = 2, kRootImage = 3 };
HIMAGELIST LoadFileImages(HINSTANCE instance);
