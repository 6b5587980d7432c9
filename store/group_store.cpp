#include "store/group_store.h"

#include "text/convert.h"
#include "text/last_error.h"

namespace {

WideText GroupPath(const wchar_t* folder, const wchar_t* group, const wchar_t* extension) {
    const WideText name = JoinPath(folder, group);
    return name ? JoinPath(name.get(), extension) : nullptr;
}

bool OpenNamed(DataFile& file, const WideText& path) {
    if (!path) return Fail(kErrorInvalidArgument);
    return OpenDataFile(file, path.get(), FileMode::kReadWrite);
}

bool IsDeviceUnit(wchar_t unit, wchar_t pattern) {
    if (pattern == L'#') return unit >= L'1' && unit <= L'9';
    return unit == pattern || (unit >= L'A' && unit <= L'Z' && unit - L'A' + L'a' == pattern);
}

// "nul.idx" opens a device on a desktop: what stands before the first dot must not be the name of one.
bool IsDevice(const wchar_t* group) {
    constexpr const wchar_t* kDevices[] = {L"con", L"prn", L"aux", L"nul", L"com#", L"lpt#"};
    for (const wchar_t* device : kDevices) {
        std::size_t length = 0;
        while (device[length] != L'\0' && IsDeviceUnit(group[length], device[length]))
            ++length;
        const bool isWhole = group[length] == L'\0' || group[length] == L'.';
        if (device[length] == L'\0' && isWhole) return true;
    }
    return false;
}

// Whether a name of so many units has room for the longest of its group's files.
bool Fits(std::size_t nameLength, std::size_t folderLength) {
    constexpr std::size_t kExtension = 5;  // ".idx~"
    constexpr std::size_t kLongestName = 255, kLongestPath = 259;
    return nameLength + kExtension <= kLongestName && folderLength + nameLength + kExtension <= kLongestPath;
}

}  // namespace

bool IsFileName(const wchar_t* group, std::size_t folderLength) {
    constexpr wchar_t kForbidden[] = L"\\/:*?\"<>|";
    if (*group == L'\0' || wcscmp(group, L".") == 0 || wcscmp(group, L"..") == 0) return false;
    if (IsDevice(group) || !Fits(wcslen(group), folderLength)) return false;
    for (; *group; ++group) {
        if (*group < L' ' || *group == 0x7F || wcschr(kForbidden, *group)) return false;
    }
    return true;
}

bool SetNames(GroupStore& store, const wchar_t* folder, const wchar_t* group) {
    store.indexPath.reset();
    store.logPath.reset();
    store.filterPath.reset();
    if (!IsFileName(group, wcslen(folder))) return Fail(kErrorInvalidArgument);
    store.indexPath = GroupPath(folder, group, L".idx");
    store.logPath = GroupPath(folder, group, L".log");
    store.filterPath = GroupPath(folder, group, L".flt");
    store.header.lastFetched = store.header.serverLast = store.header.unreadCount = 0;
    return store.indexPath && store.logPath && store.filterPath;
}

void Reset(GroupStore& store) {
    CloseDataFile(store.index);
    store.statusText.reset();
    store.header = IndexHeader();
}

const wchar_t* StatusText(const GroupStore& store) {
    return store.statusText ? store.statusText.get() : L"";
}

bool SetStatusText(GroupStore& store, const wchar_t* text) {
    WideText copy = CopyText(text);
    if (!copy) return false;
    store.statusText = std::move(copy);
    return true;
}

bool OpenIndex(GroupStore& store) {
    return OpenNamed(store.index, store.indexPath);
}
bool OpenLog(GroupStore& store) {
    return OpenNamed(store.log, store.logPath);
}
