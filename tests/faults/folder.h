// A data folder as bytes, without any code of the program: a group's files in every state that a start may
// find them in, and what files say.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "tests/faults/machine.h"

struct Article {
    uint32_t number;  // on the server
    std::string subject;
    uint32_t flags;  // 1 read, 2 low, 4 high
    std::string body;
};

enum class GroupIs {
    kVersion1,
    kVersion2,
    kVersion3,
    kVersion4,
    kCurrent,
    kWithoutIndex,
    kUpgradeCutOff,        // the new index has not taken its place
    kDeletionWithoutLog,   // the old log has gone
    kDeletionWithNewLog,   // the new one has taken its place
    kDeletionWithoutIndex  // the old index has gone too
};

extern const std::map<std::string, GroupIs> kStates;  // by their names in tables

using Files = std::map<std::wstring, std::string>;  // contents by name

// The log and the indexes. What a cut-off deletion drops are the read articles.
Files GroupFiles(const std::wstring& group, const std::vector<Article>& articles, GroupIs state);

// The lines that a server sends, and the whole article as a log keeps it.
std::string HeadOf(const Article& article);
std::string StoredText(const Article& article);

constexpr std::size_t kHeaderBytes = 100, kRecordBytes = 92;  // of an index

// A number as the files hold it, and the one at a place; bytes that are not there count as 0.
std::string Word(uint32_t value);
uint32_t WordAt(const std::string& bytes, std::size_t offset);

struct GroupState {
    std::map<uint32_t, std::string> articles;  // by number on the server: a digit for the flags, and the text
    std::string progress;                      // last fetched, server last and status text
    bool countsAreTrue = false;                // the header counts what the records say
};

struct FolderState {
    std::map<std::wstring, GroupState> groups;
    // The lists, the keywords and, under "HKCU\", the settings. The order of the subscriptions is not the
    // reader's, so their lines are sorted.
    Files files;
    // What must never be: a record that does not name its article, a file that is left over.
    std::vector<std::string> problems;
};

// `groups` are those that must have an index; of the articles' flags those in `flags` count.
FolderState ReadFolder(const Storage& storage, const std::vector<std::wstring>& groups, uint32_t flags);

std::string Plain(const std::wstring& name);
