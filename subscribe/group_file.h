// Reads "group.dat", the subscribed groups: one name a line, CR LF. Skips lines that begin with '#', empty
// and overlong ones, and names that cannot be the names of files in the data folder.
#pragma once

#include <cstddef>

#include "files/data_file.h"
#include "files/kept_bytes.h"
#include "text/owned.h"

constexpr uint32_t kLongestGroupLine = 1024;  // bytes, line end included; buffers have one spare byte

// A buffer for one line of "group.dat", "active.dat" or "category.dat".
using GroupLine = char[kLongestGroupLine + 1];

// Reads one line as ReadLine does, but skips lines that are too long for the buffer, their ends included;
// `kept`, when given, stores them. Fails at the end of the file (38) and with any other error.
[[nodiscard]] bool ReadGroupLine(DataFile& file, GroupLine& line, bool cut, uint32_t* taken = nullptr,
                                 KeptBytes* kept = nullptr);

struct GroupFile {
    DataFile file;
    std::size_t folderLength = 0;  // units of the data folder's path
    WideText name;                 // the one that NextGroupName returned last
};

// Opens the file of the data folder, whose path ends in a backslash, for reading; others may read it
// meanwhile.
[[nodiscard]] bool OpenGroupFile(GroupFile& groups, const wchar_t* folder);

// The next name, valid until the next call; null at the end (error 38) and on any other error.
const wchar_t* NextGroupName(GroupFile& groups);
