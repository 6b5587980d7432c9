// What a data folder holds, read from the bytes of its files without any code of the program.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "tests/faults/machine.h"

struct ArticleState {
    uint32_t flags = 0;
    std::string text;  // its bytes in the log
};

using Articles = std::map<uint32_t, ArticleState>;  // by number on the server

struct GroupState {
    Articles articles;
    std::string progress;        // last fetched, server last and status text
    bool countsAreTrue = false;  // the header counts what the records say
};

struct FolderState {
    std::map<std::wstring, GroupState> groups;
    // The lists, the keywords and, under "HKCU\", the settings. The order of the subscriptions is not the
    // reader's, so their lines are sorted.
    std::map<std::wstring, std::string> files;
    // What must never be: a record that does not name its article, a file that is left over.
    std::vector<std::string> problems;
};

// `groups` are those that must have an index.
FolderState ReadFolder(const Storage& storage, const std::vector<std::wstring>& groups);

// The number at a place of an index.
uint32_t WordAt(const std::string& bytes, std::size_t offset);

std::string Plain(const std::wstring& name);
