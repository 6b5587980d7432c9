#include "subscribe/group_file.h"

#include <wchar.h>

#include <cstring>

#include "store/group_store.h"
#include "text/convert.h"
#include "text/last_error.h"
#include "text/line.h"

namespace {

constexpr uint32_t kNamesAtOnce = 2048;  // bytes of the list that are read at a time
constexpr uint32_t kEmptyLine = 2;       // bytes of a line that holds no name, its line end included

// Skips the rest of a line whose first bytes fill the buffer. As in all lines, an LF ends it once a CR was
// seen.
bool SkipLine(DataFile& file, const GroupLine& line) {
    bool seenCr = std::memchr(line, '\r', kLongestGroupLine) != nullptr;
    char byte = '\0';
    uint32_t got = 1;
    while (got == 1 && !(seenCr && byte == '\n')) {
        if (!ReadBytes(file, &byte, 1, got)) return false;
        seenCr = seenCr || byte == '\r';
    }
    return true;
}

// Whether the line can be a group's name.
bool IsName(const GroupLine& line, uint32_t length) {
    return line[0] != '#' && length > kEmptyLine;
}

}  // namespace

bool ReadGroupLine(DataFile& file, GroupLine& line, bool cut, uint32_t* taken, KeptBytes* kept) {
    for (;;) {
        const uint32_t start = file.position;
        if (ReadLine(file, line, sizeof(line), cut, taken)) return true;
        if (GetError() != kErrorMoreData || !SkipLine(file, line)) return false;
        if (kept && !KeepBytesFrom(file, start, *kept)) return false;
    }
}

bool OpenGroupFile(GroupFile& groups, const wchar_t* folder) {
    const WideText path = JoinPath(folder, L"\\group.dat");
    groups.name.reset();
    groups.folderLength = wcslen(folder);
    return path && OpenForReading(groups.file, path.get(), FileMode::kRead, kNamesAtOnce);
}

const wchar_t* NextGroupName(GroupFile& groups) {
    GroupLine line;
    uint32_t taken = 0;
    groups.name.reset();
    while (ReadGroupLine(groups.file, line, false, &taken)) {
        if (!IsName(line, taken)) continue;
        line[taken - LineEndLength(line, taken)] = '\0';
        WideText name = ToWide(line);
        if (name && !IsFileName(name.get(), groups.folderLength)) continue;
        groups.name = std::move(name);
        return groups.name.get();
    }
    return nullptr;
}
