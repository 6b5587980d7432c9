// Files and heaps as platform/platform.h of this folder declares them.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <set>

#include "platform/platform.h"

namespace {

struct OpenFile {
    std::wstring path;
    bool writes = false;
    bool shares = false;
    std::size_t position = 0;
};

using Heap = std::set<void*>;

std::set<OpenFile*> openFiles;

OpenFile* FileOf(HANDLE handle) {
    const auto file = static_cast<OpenFile*>(handle);
    if (openFiles.count(file) == 0) std::abort();  // a handle that was closed, or never opened
    return file;
}

BOOL Refuse(DWORD error) {
    SetError(error);
    return 0;
}

bool IsOpenedBy(const wchar_t* path, bool (*counts)(const OpenFile&)) {
    return std::any_of(openFiles.begin(), openFiles.end(),
                       [&](const OpenFile* file) { return file->path == path && counts(*file); });
}

bool MayBeOpened(const wchar_t* path, bool writes, bool shares) {
    const bool othersForbid = IsOpenedBy(path, [](const OpenFile& file) { return !file.shares; });
    const bool othersRead = IsOpenedBy(path, [](const OpenFile&) { return true; });
    const bool othersWrite = IsOpenedBy(path, [](const OpenFile& file) { return file.writes; });
    return !othersForbid && !othersWrite && !(othersRead && (writes || !shares));
}

bool IsOpenAnywhere(const wchar_t* path) {
    return IsOpenedBy(path, [](const OpenFile&) { return true; });
}

}  // namespace

std::map<std::wstring, std::string> memoryFiles;

std::size_t OpenHandles() {
    return openFiles.size();
}

HANDLE CreateFileW(const wchar_t* path, DWORD access, DWORD sharing, void*, DWORD disposition, DWORD,
                   HANDLE) {
    const bool exists = memoryFiles.count(path) != 0;
    const bool writes = (access & GENERIC_WRITE) != 0;
    DWORD error = 0;
    if (!exists && (disposition == OPEN_EXISTING || disposition == TRUNCATE_EXISTING))
        error = kErrorFileNotFound;
    if (exists && disposition == CREATE_NEW) error = kErrorFileExists;
    if (!MayBeOpened(path, writes, sharing != 0)) error = ERROR_SHARING_VIOLATION;
    SetError(error);
    if (error != 0) return INVALID_HANDLE_VALUE;
    if (!exists || disposition == TRUNCATE_EXISTING) memoryFiles[path].clear();
    return *openFiles.insert(new OpenFile{path, writes, sharing != 0}).first;
}

BOOL ReadFile(HANDLE handle, void* destination, DWORD count, DWORD* read, void*) {
    OpenFile& file = *FileOf(handle);
    const std::string& content = memoryFiles[file.path];
    const std::size_t left = content.size() - std::min(file.position, content.size());
    *read = static_cast<DWORD>(std::min<std::size_t>(count, left));
    if (*read != 0) std::memcpy(destination, content.data() + file.position, *read);
    file.position += *read;
    return 1;
}

BOOL WriteFile(HANDLE handle, const void* source, DWORD count, DWORD* written, void*) {
    constexpr std::size_t kDiskSize = 1 << 20;  // a record far behind the file's end fills the disk
    OpenFile& file = *FileOf(handle);
    std::string& content = memoryFiles[file.path];
    if (!file.writes || file.position + count > kDiskSize) return Refuse(ERROR_DISK_FULL);
    if (content.size() < file.position + count) content.resize(file.position + count);
    content.replace(file.position, count, static_cast<const char*>(source), count);
    file.position += count;
    *written = count;
    return 1;
}

DWORD SetFilePointer(HANDLE handle, LONG distance, LONG*, DWORD) {
    FileOf(handle)->position = static_cast<DWORD>(distance);
    return static_cast<DWORD>(distance);
}

DWORD GetFileSize(HANDLE handle, DWORD* high) {
    if (high) *high = 0;
    return static_cast<DWORD>(memoryFiles[FileOf(handle)->path].size());
}

BOOL SetEndOfFile(HANDLE handle) {
    const OpenFile& file = *FileOf(handle);
    memoryFiles[file.path].resize(file.position);
    return 1;
}

BOOL CloseHandle(HANDLE handle) {
    OpenFile* file = FileOf(handle);
    openFiles.erase(file);
    delete file;
    return 1;
}

BOOL DeleteFileW(const wchar_t* path) {
    if (IsOpenAnywhere(path)) return Refuse(ERROR_SHARING_VIOLATION);
    return memoryFiles.erase(path) != 0 || Refuse(kErrorFileNotFound);
}

BOOL MoveFileW(const wchar_t* from, const wchar_t* to) {
    if (memoryFiles.count(from) == 0) return Refuse(kErrorFileNotFound);
    if (memoryFiles.count(to) != 0) return Refuse(kErrorAlreadyExists);
    if (IsOpenAnywhere(from)) return Refuse(ERROR_SHARING_VIOLATION);
    memoryFiles[to] = memoryFiles[from];
    memoryFiles.erase(from);
    return 1;
}

DWORD GetFileAttributesW(const wchar_t* path) {
    if (memoryFiles.count(path) != 0) return FILE_ATTRIBUTE_NORMAL;
    SetError(kErrorFileNotFound);
    return 0xFFFFFFFF;
}

HANDLE HeapCreate(DWORD, SIZE_T, SIZE_T) {
    return new Heap;
}

void* HeapAlloc(HANDLE heap, DWORD, SIZE_T size) {
    return *static_cast<Heap*>(heap)->insert(std::malloc(size)).first;
}

BOOL HeapFree(HANDLE heap, DWORD, void* memory) {
    if (static_cast<Heap*>(heap)->erase(memory) == 0) std::abort();
    std::free(memory);
    return 1;
}

BOOL HeapDestroy(HANDLE heap) {
    for (void* memory : *static_cast<Heap*>(heap))
        std::free(memory);
    delete static_cast<Heap*>(heap);
    return 1;
}

UINT TextCodePage() {
    return 932;
}

int MultiByteToWideChar(UINT, DWORD, const char* text, int, wchar_t* buffer, int units) {
    int count = 0;
    while (count < units && text[count] != '\0') {
        buffer[count] = static_cast<unsigned char>(text[count]);
        ++count;
    }
    buffer[count] = L'\0';
    return count + 1;
}

int WideCharToMultiByte(UINT, DWORD, const wchar_t* text, int, char* buffer, int bytes, void*, void*) {
    int count = 0;
    for (; count < bytes && text[count] != L'\0'; ++count)
        buffer[count] = static_cast<char>(text[count]);
    buffer[count] = '\0';
    return count + 1;
}
