#include "subscribe/group_file.h"

#include "text/convert.h"
#include "text/line.h"

namespace {

constexpr uint32_t kLongestName = 1024;
constexpr uint32_t kEmptyLine = 2;  // bytes of a line that holds no name, its line end included

}  // namespace

bool OpenGroupFile(GroupFile& groups, const wchar_t* folder) {
    const WideText path = JoinPath(folder, L"\\group.dat");
    groups.name.reset();
    return path && OpenDataFile(groups.file, path.get(), FileMode::kRead);
}

const wchar_t* NextGroupName(GroupFile& groups) {
    char line[kLongestName + 1];
    uint32_t taken = 0;
    groups.name.reset();
    while (ReadLine(groups.file, line, sizeof(line), false, &taken)) {
        if (line[0] == '#' || taken <= kEmptyLine) continue;
        line[taken - LineEndLength(line, taken)] = '\0';
        groups.name = ToWide(line);
        return groups.name.get();
    }
    return nullptr;
}
