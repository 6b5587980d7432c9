#include "tests/support/memory_disk.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr std::size_t kSectorSize = 512;
constexpr std::size_t kDiskSize = 1 << 20;  // what a damaged number reaches beyond it fills the disk

std::map<HANDLE, MemoryHandle> handles;

bool Exists(const std::wstring& path) {
    return memoryFiles.count(path) + memoryFiles.count(path + L'\\') != 0;
}

bool IsOpenedBy(const std::wstring& path, bool (*counts)(const MemoryHandle&)) {
    return std::any_of(handles.begin(), handles.end(), [&](const auto& handle) {
        return handle.second.path == path && counts(handle.second);
    });
}

bool IsOpen(const std::wstring& path) {
    return IsOpenedBy(path, [](const MemoryHandle&) { return true; });
}

bool MayBeOpened(const std::wstring& path, bool writes, bool shares) {
    const bool othersForbid = IsOpenedBy(path, [](const MemoryHandle& handle) { return !handle.shares; });
    const bool othersWrite = IsOpenedBy(path, [](const MemoryHandle& handle) { return handle.writes; });
    return !othersForbid && !othersWrite && !(IsOpen(path) && (writes || !shares));
}

}  // namespace

HANDLE NewHandle(MemoryHandle&& opened) {
    static std::uintptr_t last = 0x100000;  // the system's own are smaller
    const auto handle = reinterpret_cast<HANDLE>(last += 4);
    handles[handle] = std::move(opened);
    return handle;
}

MemoryHandle& AtHandle(HANDLE handle) {
    return handles.at(handle);
}

std::size_t OpenHandles() {
    return handles.size();
}

bool CloseMemoryHandle(HANDLE handle) {
    return handles.erase(handle) != 0;
}

std::wstring PlainPath(const wchar_t* path) {
    std::wstring plain;
    for (; *path; ++path) {
        if (*path != L'\\' || plain.empty() || plain.back() != L'\\') plain += *path;
    }
    return plain;
}

namespace memory_disk {

HANDLE WINAPI CreateFileW(const wchar_t* name, DWORD access, DWORD sharing, SECURITY_ATTRIBUTES*,
                          DWORD disposition, DWORD, HANDLE) {
    if (Fails("CreateFileW")) return INVALID_HANDLE_VALUE;
    const std::wstring path = PlainPath(name);
    const bool exists = Exists(path), writes = access & GENERIC_WRITE;
    if (!exists && (disposition == OPEN_EXISTING || disposition == TRUNCATE_EXISTING))
        return Refuse(ERROR_FILE_NOT_FOUND, INVALID_HANDLE_VALUE);
    if (exists && disposition == CREATE_NEW) return Refuse(ERROR_FILE_EXISTS, INVALID_HANDLE_VALUE);
    if (!MayBeOpened(path, writes, sharing != 0))
        return Refuse(ERROR_SHARING_VIOLATION, INVALID_HANDLE_VALUE);
    if (!exists || disposition == TRUNCATE_EXISTING) memoryFiles[path].clear();
    SetLastError(exists && disposition == OPEN_ALWAYS ? ERROR_ALREADY_EXISTS : 0);
    return NewHandle({path, writes, sharing != 0});
}

BOOL WINAPI ReadFile(HANDLE handle, void* destination, DWORD count, DWORD* read, OVERLAPPED*) {
    *read = 0;
    if (Fails("ReadFile")) return FALSE;
    MemoryHandle& file = AtHandle(handle);
    const std::string& content = memoryFiles.at(file.path);
    const std::size_t start = std::min(file.position, content.size());
    *read = static_cast<DWORD>(std::min<std::size_t>(count, content.size() - start));
    std::memcpy(destination, content.data() + start, *read);
    file.position = start + *read;
    return TRUE;
}

// Sector by sector, as a medium takes it: what stops a write leaves the sectors before.
BOOL WINAPI WriteFile(HANDLE handle, const void* source, DWORD count, DWORD* written, OVERLAPPED*) {
    *written = 0;
    if (Fails("WriteFile")) return FALSE;
    MemoryHandle& file = AtHandle(handle);
    std::string& content = memoryFiles.at(file.path);
    if (!file.writes) return Refuse(ERROR_ACCESS_DENIED, FALSE);
    while (*written < count) {
        if (Fails(kSector)) return FALSE;
        if (file.position >= kDiskSize) return Refuse(ERROR_DISK_FULL, FALSE);
        const std::size_t part =
            std::min<std::size_t>(count - *written, kSectorSize - file.position % kSectorSize);
        if (content.size() < file.position + part) content.resize(file.position + part);
        content.replace(file.position, part, static_cast<const char*>(source) + *written, part);
        file.position += part;
        *written += static_cast<DWORD>(part);
    }
    return TRUE;
}

DWORD WINAPI SetFilePointer(HANDLE handle, LONG distance, LONG*, DWORD) {
    if (Fails("SetFilePointer")) return INVALID_SET_FILE_POINTER;
    AtHandle(handle).position = static_cast<DWORD>(distance);
    return static_cast<DWORD>(distance);
}

BOOL WINAPI SetEndOfFile(HANDLE handle) {
    if (Fails("SetEndOfFile")) return FALSE;
    memoryFiles.at(AtHandle(handle).path).resize(AtHandle(handle).position);
    return TRUE;
}

DWORD WINAPI GetFileSize(HANDLE handle, DWORD* high) {
    if (high) *high = 0;
    if (Fails("GetFileSize")) return INVALID_FILE_SIZE;
    return static_cast<DWORD>(memoryFiles.at(AtHandle(handle).path).size());
}

BOOL WINAPI DeleteFileW(const wchar_t* name) {
    if (Fails("DeleteFileW")) return FALSE;
    const std::wstring path = PlainPath(name);
    if (IsOpen(path)) return Refuse(ERROR_SHARING_VIOLATION, FALSE);
    return memoryFiles.erase(path) != 0 || Refuse(ERROR_FILE_NOT_FOUND, FALSE);
}

BOOL WINAPI MoveFileW(const wchar_t* oldName, const wchar_t* newName) {
    if (Fails("MoveFileW")) return FALSE;
    const std::wstring from = PlainPath(oldName), to = PlainPath(newName);
    if (!Exists(from)) return Refuse(ERROR_FILE_NOT_FOUND, FALSE);
    if (Exists(to)) return Refuse(ERROR_ALREADY_EXISTS, FALSE);
    if (IsOpen(from)) return Refuse(ERROR_SHARING_VIOLATION, FALSE);
    memoryFiles[to] = memoryFiles[from];
    memoryFiles.erase(from);
    return TRUE;
}

DWORD WINAPI GetFileAttributesW(const wchar_t* name) {
    if (Fails("GetFileAttributesW")) return INVALID_FILE_ATTRIBUTES;
    const std::wstring path = PlainPath(name);
    if (!Exists(path)) return Refuse(ERROR_FILE_NOT_FOUND, INVALID_FILE_ATTRIBUTES);
    return memoryFiles.count(path) ? FILE_ATTRIBUTE_NORMAL : FILE_ATTRIBUTE_DIRECTORY;
}

}  // namespace memory_disk
