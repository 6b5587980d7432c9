// A group's files in every state that a start may find them in, put together here and not by the program.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

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

using Files = std::map<std::wstring, std::string>;  // contents by name

// The log and the indexes. What a cut-off deletion drops are the read articles.
Files GroupFiles(const std::wstring& group, const std::vector<Article>& articles, GroupIs state);

// A number as the files hold it.
std::string Word(uint32_t value);

// What a deletion keeps.
std::vector<Article> Unread(std::vector<Article> articles);

// The lines that a server sends, and the whole article as a log keeps it.
std::string HeadOf(const Article& article);
std::string StoredText(const Article& article);
