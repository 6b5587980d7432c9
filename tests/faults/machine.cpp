#include "tests/faults/machine.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <set>
#include <vector>

#include "tests/support/imports.h"
#include "tests/support/memory_watch.h"

Machine machine;
const std::wstring kFolder = L"N:\\news\\";

namespace {

constexpr std::size_t kSectorSize = 512;
constexpr std::size_t kDiskSize =
    1 << 20;                       // of a file; what a damaged number reaches beyond it fills the disk
constexpr int kLongestRead = 700;  // bytes that one recv gives
constexpr char kGreeting[] = "200 ready\r\n";

struct Handle {
    std::wstring path;  // of a file or a key
    bool writes = false;
    bool shares = false;
    std::size_t position = 0;
    std::vector<std::wstring> found = {};  // by a search, the next one last
};
std::map<HANDLE, Handle> handles;

HANDLE NewHandle(Handle&& opened) {
    static std::uintptr_t last = 0x100000;  // the system's own are smaller
    const auto handle = reinterpret_cast<HANDLE>(last += 4);
    handles[handle] = std::move(opened);
    return handle;
}

template <class Result>
Result Refuse(DWORD error, Result result) {
    SetLastError(error);
    return result;
}

bool Fails(std::string_view call) {
    const DWORD error = machine.fault ? machine.fault(call) : 0;
    return error != 0 && Refuse(error, true);
}

// The disk.

// Two backslashes in a row are one.
std::wstring Plain(const wchar_t* path) {
    std::wstring plain;
    for (; *path; ++path) {
        if (*path != L'\\' || plain.empty() || plain.back() != L'\\') plain += *path;
    }
    return plain;
}

bool Exists(const std::wstring& path) {
    return machine.storage.files.count(path) + machine.storage.files.count(path + L'\\') != 0;
}

bool IsOpenedBy(const std::wstring& path, bool (*counts)(const Handle&)) {
    return std::any_of(handles.begin(), handles.end(), [&](const auto& handle) {
        return handle.second.path == path && counts(handle.second);
    });
}

bool IsOpen(const std::wstring& path) {
    return IsOpenedBy(path, [](const Handle&) { return true; });
}

bool MayBeOpened(const std::wstring& path, bool writes, bool shares) {
    const bool othersForbid = IsOpenedBy(path, [](const Handle& handle) { return !handle.shares; });
    const bool othersWrite = IsOpenedBy(path, [](const Handle& handle) { return handle.writes; });
    return !othersForbid && !othersWrite && !(IsOpen(path) && (writes || !shares));
}

HANDLE WINAPI OpenFileAt(const wchar_t* name, DWORD access, DWORD sharing, SECURITY_ATTRIBUTES*,
                         DWORD disposition, DWORD, HANDLE) {
    if (Fails("CreateFileW")) return INVALID_HANDLE_VALUE;
    const std::wstring path = Plain(name);
    const bool exists = Exists(path), writes = access & GENERIC_WRITE;
    if (!exists && (disposition == OPEN_EXISTING || disposition == TRUNCATE_EXISTING))
        return Refuse(ERROR_FILE_NOT_FOUND, INVALID_HANDLE_VALUE);
    if (exists && disposition == CREATE_NEW) return Refuse(ERROR_FILE_EXISTS, INVALID_HANDLE_VALUE);
    if (!MayBeOpened(path, writes, sharing != 0))
        return Refuse(ERROR_SHARING_VIOLATION, INVALID_HANDLE_VALUE);
    if (!exists || disposition == TRUNCATE_EXISTING) machine.storage.files[path].clear();
    SetLastError(exists && disposition == OPEN_ALWAYS ? ERROR_ALREADY_EXISTS : 0);
    return NewHandle({path, writes, sharing != 0});
}

BOOL WINAPI ReadFrom(HANDLE handle, void* destination, DWORD count, DWORD* read, OVERLAPPED*) {
    *read = 0;
    if (Fails("ReadFile")) return FALSE;
    Handle& file = handles.at(handle);
    const std::string& content = machine.storage.files.at(file.path);
    const std::size_t start = std::min(file.position, content.size());
    *read = static_cast<DWORD>(std::min<std::size_t>(count, content.size() - start));
    std::memcpy(destination, content.data() + start, *read);
    file.position = start + *read;
    return TRUE;
}

// Sector by sector, as a medium takes it: what stops a write leaves the sectors before.
BOOL WINAPI WriteTo(HANDLE handle, const void* source, DWORD count, DWORD* written, OVERLAPPED*) {
    *written = 0;
    if (Fails("WriteFile")) return FALSE;
    Handle& file = handles.at(handle);
    std::string& content = machine.storage.files.at(file.path);
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

DWORD WINAPI MovePosition(HANDLE handle, LONG distance, LONG*, DWORD) {
    if (Fails("SetFilePointer")) return INVALID_SET_FILE_POINTER;
    handles.at(handle).position = static_cast<DWORD>(distance);
    return static_cast<DWORD>(distance);
}

BOOL WINAPI CutAtPosition(HANDLE handle) {
    if (Fails("SetEndOfFile")) return FALSE;
    machine.storage.files.at(handles.at(handle).path).resize(handles.at(handle).position);
    return TRUE;
}

DWORD WINAPI SizeOf(HANDLE handle, DWORD* high) {
    if (high) *high = 0;
    if (Fails("GetFileSize")) return INVALID_FILE_SIZE;
    return static_cast<DWORD>(machine.storage.files.at(handles.at(handle).path).size());
}

BOOL WINAPI DeleteAt(const wchar_t* name) {
    if (Fails("DeleteFileW")) return FALSE;
    const std::wstring path = Plain(name);
    if (IsOpen(path)) return Refuse(ERROR_SHARING_VIOLATION, FALSE);
    return machine.storage.files.erase(path) != 0 || Refuse(ERROR_FILE_NOT_FOUND, FALSE);
}

BOOL WINAPI Rename(const wchar_t* oldName, const wchar_t* newName) {
    if (Fails("MoveFileW")) return FALSE;
    const std::wstring from = Plain(oldName), to = Plain(newName);
    if (!Exists(from)) return Refuse(ERROR_FILE_NOT_FOUND, FALSE);
    if (Exists(to)) return Refuse(ERROR_ALREADY_EXISTS, FALSE);
    if (IsOpen(from)) return Refuse(ERROR_SHARING_VIOLATION, FALSE);
    machine.storage.files[to] = machine.storage.files[from];
    machine.storage.files.erase(from);
    return TRUE;
}

BOOL WINAPI MakeFolder(const wchar_t* name, SECURITY_ATTRIBUTES*) {
    if (Fails("CreateDirectoryW")) return FALSE;
    const std::wstring path = Plain(name);
    if (Exists(path)) return Refuse(ERROR_ALREADY_EXISTS, FALSE);
    machine.storage.files[path + L'\\'];
    return TRUE;
}

DWORD WINAPI AttributesOf(const wchar_t* name) {
    if (Fails("GetFileAttributesW")) return INVALID_FILE_ATTRIBUTES;
    const std::wstring path = Plain(name);
    if (!Exists(path)) return Refuse(ERROR_FILE_NOT_FOUND, INVALID_FILE_ATTRIBUTES);
    return machine.storage.files.count(path) ? FILE_ATTRIBUTE_NORMAL : FILE_ATTRIBUTE_DIRECTORY;
}

BOOL TakeFound(Handle& search, WIN32_FIND_DATAW* found) {
    if (search.found.empty()) return Refuse(ERROR_NO_MORE_FILES, FALSE);
    std::wstring name = search.found.back();
    search.found.pop_back();
    *found = {};
    found->dwFileAttributes = name.back() == L'\\' ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_NORMAL;
    if (name.back() == L'\\') name.pop_back();
    wcsncpy(found->cFileName, name.c_str(), MAX_PATH - 1);
    return TRUE;
}

// What a pattern of at most one star fits, below the pattern's folder and not deeper.
std::vector<std::wstring> NamesThatFit(const std::wstring& pattern) {
    const std::size_t star = pattern.find(L'*'), folderEnd = pattern.rfind(L'\\') + 1;
    const std::wstring start = pattern.substr(0, star);
    const std::wstring end = star == pattern.npos ? L"" : pattern.substr(star + 1);
    std::vector<std::wstring> names;
    for (const auto& [path, content] : machine.storage.files) {
        const std::wstring plain = path.substr(0, path.size() - (path.back() == L'\\'));
        const bool fits = plain.size() >= start.size() + end.size() &&
                          plain.compare(0, start.size(), start) == 0 &&
                          plain.compare(plain.size() - end.size(), end.size(), end) == 0 &&
                          (star != pattern.npos || plain == pattern);
        if (fits && plain.size() > folderEnd && plain.find(L'\\', folderEnd) == plain.npos)
            names.push_back(path.substr(folderEnd));
    }
    return names;
}

HANDLE WINAPI SearchFor(const wchar_t* pattern, WIN32_FIND_DATAW* found) {
    if (Fails("FindFirstFileW")) return INVALID_HANDLE_VALUE;
    Handle search;
    search.found = NamesThatFit(Plain(pattern));
    if (!TakeFound(search, found)) return Refuse(ERROR_FILE_NOT_FOUND, INVALID_HANDLE_VALUE);
    return NewHandle(std::move(search));
}

BOOL WINAPI SearchOn(HANDLE search, WIN32_FIND_DATAW* found) {
    return !Fails("FindNextFileW") && TakeFound(handles.at(search), found);
}

BOOL WINAPI Close(HANDLE handle) {
    static const auto closeReal = RealFunction<decltype(&Close)>("CloseHandle");
    return handles.erase(handle) != 0 || closeReal(handle);
}

// The registry.

std::wstring KeyPath(HKEY key) {
    const auto found = handles.find(key);
    return (found == handles.end() ? L"HKCU" : found->second.path) + L'\\';
}

LSTATUS WINAPI OpenKeyAt(HKEY parent, const wchar_t* path, DWORD, wchar_t*, DWORD, REGSAM,
                         SECURITY_ATTRIBUTES*, HKEY* key, DWORD*) {
    if (Fails("RegCreateKeyExW")) return static_cast<LSTATUS>(GetLastError());
    *key = static_cast<HKEY>(NewHandle({KeyPath(parent) + path}));
    return ERROR_SUCCESS;
}

LSTATUS WINAPI ReadValue(HKEY key, const wchar_t* name, DWORD*, DWORD* type, BYTE* data, DWORD* size) {
    if (Fails("RegQueryValueExW")) return static_cast<LSTATUS>(GetLastError());
    const auto value = machine.storage.values.find(KeyPath(key) + name);
    if (value == machine.storage.values.end()) return ERROR_FILE_NOT_FOUND;
    const std::string& bytes = value->second.second;
    const DWORD room = *size;
    *size = static_cast<DWORD>(bytes.size());
    if (type) *type = value->second.first;
    if (data && room < bytes.size()) return ERROR_MORE_DATA;
    if (data) std::memcpy(data, bytes.data(), bytes.size());
    return ERROR_SUCCESS;
}

LSTATUS WINAPI WriteValue(HKEY key, const wchar_t* name, DWORD, DWORD type, const BYTE* data, DWORD size) {
    if (Fails("RegSetValueExW")) return static_cast<LSTATUS>(GetLastError());
    machine.storage.values[KeyPath(key) + name] = {type, std::string(data, data + size)};
    return ERROR_SUCCESS;
}

LSTATUS WINAPI DeleteValueOf(HKEY key, const wchar_t* name) {
    if (Fails("RegDeleteValueW")) return static_cast<LSTATUS>(GetLastError());
    return machine.storage.values.erase(KeyPath(key) + name) != 0 ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND;
}

LSTATUS WINAPI CloseKey(HKEY key) {
    return handles.erase(key) != 0 ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
}

// The network: one connection at a time, to a server that is asked in place.

std::string sent, received;
bool broken = false;

// A connection that has failed stays so.
bool Breaks(std::string_view call) {
    if (broken) return Refuse(WSAECONNRESET, true);
    return broken = Fails(call);
}

SOCKET WSAAPI MakeSocket(int, int, int) {
    broken = false;
    if (Breaks("socket")) return INVALID_SOCKET;
    return reinterpret_cast<SOCKET>(NewHandle({}));
}

int WSAAPI ConnectTo(SOCKET, const sockaddr*, int) {
    if (Breaks("connect")) return SOCKET_ERROR;
    sent.clear();
    received = kGreeting;
    return 0;
}

int WSAAPI SendBytes(SOCKET, const char* bytes, int count, int) {
    if (Breaks("send")) return SOCKET_ERROR;
    sent.append(bytes, static_cast<std::size_t>(count));
    for (std::size_t end; (end = sent.find("\r\n")) != std::string::npos; sent.erase(0, end + 2))
        received += machine.server(sent.substr(0, end));
    return count;
}

int WSAAPI ReceiveBytes(SOCKET, char* bytes, int count, int) {
    if (Breaks("recv")) return SOCKET_ERROR;
    const int given = std::min({count, kLongestRead, static_cast<int>(received.size())});
    std::memcpy(bytes, received.data(), static_cast<std::size_t>(given));
    received.erase(0, static_cast<std::size_t>(given));
    return given;
}

int WSAAPI WaitForBytes(int, fd_set*, fd_set*, fd_set*, const timeval*) {
    return Breaks("select") ? SOCKET_ERROR : 1;
}

int WSAAPI SetOption(SOCKET, int, int, const char*, int) {
    return Breaks("setsockopt") ? SOCKET_ERROR : 0;
}

int WSAAPI CloseSocket(SOCKET socket) {
    return handles.erase(reinterpret_cast<HANDLE>(socket)) != 0 ? 0 : SOCKET_ERROR;
}

// Threads.

std::vector<std::pair<LPTHREAD_START_ROUTINE, void*>> threads;

// GoogleTest's own threads begin suspended, and live.
HANDLE WINAPI StartThread(SECURITY_ATTRIBUTES* security, SIZE_T stack, LPTHREAD_START_ROUTINE routine,
                          void* parameter, DWORD flags, DWORD* id) {
    static const auto startReal = RealFunction<decltype(&StartThread)>("CreateThread");
    if (flags & CREATE_SUSPENDED) return startReal(security, stack, routine, parameter, flags, id);
    if (Fails("CreateThread")) return nullptr;
    threads.emplace_back(routine, parameter);
    return NewHandle({});
}

}  // namespace

void RunThreads() {
    for (const auto& [routine, parameter] : std::exchange(threads, {}))
        routine(parameter);
}

// Memory.

namespace {

template <class T>
struct UnwatchedAllocator {
    using value_type = T;
    UnwatchedAllocator() = default;
    template <class U>
    UnwatchedAllocator(const UnwatchedAllocator<U>&) {}
    T* allocate(std::size_t count) { return static_cast<T*>(TakeUnwatched(count * sizeof(T))); }
    void deallocate(T* memory, std::size_t) { ReleaseUnwatched(memory); }
    bool operator==(const UnwatchedAllocator&) const { return true; }
    bool operator!=(const UnwatchedAllocator&) const { return false; }
};

// By address, since the test's containers release through the program's operators too.
std::set<void*, std::less<void*>, UnwatchedAllocator<void*>> held;

constexpr MemoryWatch kWatch = {
    [](std::size_t size) {
        machine.largestBlock = std::max(machine.largestBlock, size);
        return !Fails(kMemory);
    },
    [](void* memory, bool) { held.insert(memory); },
    [](void* memory) { held.erase(memory); },
};

struct Watching {
    Watching() { memoryWatch = &kWatch; }
    ~Watching() { memoryWatch = nullptr; }
} watching;

}  // namespace

std::size_t HeldByProgram() {
    return handles.size() + held.size();
}

bool UsesNetwork(std::string_view call) {
    return call == "socket" || call == "connect" || call == "send" || call == "recv" || call == "select" ||
           call == "setsockopt";
}

std::string& FileOf(const std::wstring& name) {
    return machine.storage.files[kFolder + name];
}

IN_PLACE_OF(CreateFileW, OpenFileAt)
IN_PLACE_OF(ReadFile, ReadFrom)
IN_PLACE_OF(WriteFile, WriteTo)
IN_PLACE_OF(SetFilePointer, MovePosition)
IN_PLACE_OF(SetEndOfFile, CutAtPosition)
IN_PLACE_OF(GetFileSize, SizeOf)
IN_PLACE_OF(DeleteFileW, DeleteAt)
IN_PLACE_OF(MoveFileW, Rename)
IN_PLACE_OF(CreateDirectoryW, MakeFolder)
IN_PLACE_OF(GetFileAttributesW, AttributesOf)
IN_PLACE_OF(FindFirstFileW, SearchFor)
IN_PLACE_OF(FindNextFileW, SearchOn)
IN_PLACE_OF(FindClose, Close)
IN_PLACE_OF(CloseHandle, Close)
IN_PLACE_OF(RegCreateKeyExW, OpenKeyAt)
IN_PLACE_OF(RegQueryValueExW, ReadValue)
IN_PLACE_OF(RegSetValueExW, WriteValue)
IN_PLACE_OF(RegDeleteValueW, DeleteValueOf)
IN_PLACE_OF(RegCloseKey, CloseKey)
IN_PLACE_OF(socket, MakeSocket)
IN_PLACE_OF(connect, ConnectTo)
IN_PLACE_OF(send, SendBytes)
IN_PLACE_OF(recv, ReceiveBytes)
IN_PLACE_OF(select, WaitForBytes)
IN_PLACE_OF(setsockopt, SetOption)
IN_PLACE_OF(closesocket, CloseSocket)
IN_PLACE_OF(CreateThread, StartThread)
