// The handle on one group's files: its index (".idx"), log (".log") and keyword filter (".flt") in the data
// folder, and the values of the index header. One thread uses one store; files are opened per operation
// without sharing.
#pragma once

#include <cstddef>
#include <cstdint>

#include "files/data_file.h"
#include "store/record.h"
#include "text/owned.h"

struct GroupStore {
    DataFile index;
    DataFile log;
    WideText indexPath;  // null until the names are set
    WideText logPath;
    WideText filterPath;
    IndexHeader header;   // but for its status text, which is
    WideText statusText;  // null reads as the empty text
};

// Builds the three paths from the data folder (with its trailing backslash) and the group's name, and zeroes
// last fetched, server last and unread count. Opens nothing. Error 87 for a name that can be no file name in
// this folder, 8 when memory runs out.
[[nodiscard]] bool SetNames(GroupStore& store, const wchar_t* folder, const wchar_t* group);

// Whether a group of this name can keep files in a folder whose path, with its trailing backslash, has so
// many units: not empty, ".", "..", and without \ / : * ? " < > | and control characters, no name of a
// Windows device ("con", "lpt1" and so on, also before a dot), and short enough for the longest of its files.
bool IsFileName(const wchar_t* group, std::size_t folderLength);

// Frees the status text, closes the index and zeroes every header value. The paths stay.
void Reset(GroupStore& store);

const wchar_t* StatusText(const GroupStore& store);
[[nodiscard]] bool SetStatusText(GroupStore& store, const wchar_t* text);  // keeps a copy; error 8

// Opens for reading and writing without sharing, creating the file when it is missing. Error 87 without
// names.
[[nodiscard]] bool OpenIndex(GroupStore& store);
[[nodiscard]] bool OpenLog(GroupStore& store);
