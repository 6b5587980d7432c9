// Reads "group.dat", the subscribed groups: one name a line, CR LF. Lines that begin with '#' and empty lines
// are skipped.
#pragma once

#include "store/file.h"
#include "text/owned.h"

struct GroupFile {
    DataFile file;
    WideText name;  // the one that NextGroupName answered last
};

// Opens the file of the data folder for reading; others may read it meanwhile.
[[nodiscard]] bool OpenGroupFile(GroupFile& groups, const wchar_t* folder);

// The next name, which stands until the next call; null at the end (error 38) and on any other error.
const wchar_t* NextGroupName(GroupFile& groups);
