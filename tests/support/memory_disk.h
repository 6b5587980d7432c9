// The system's calls to the file system, over files that live in memory: for the loops, and for the fuzzed
// store, which is built natively. Sharing is kept as Windows keeps it. Ends the program when it uses a handle
// that is not open.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "platform/platform.h"

// The suite defines these: the contents by path, a folder's path ending in a backslash; and whether a call
// fails, with the last error. Each call asks with its name before it does anything, and with kSector before
// each sector that it writes.
extern std::map<std::wstring, std::string>& memoryFiles;
bool Fails(std::string_view call);
constexpr std::string_view kSector = "sector";

struct MemoryHandle {
    std::wstring path = {};  // two backslashes in a row are one
    bool writes = false;
    bool shares = false;
    std::size_t position = 0;
    std::vector<std::wstring> found = {};  // by a search, the next one last
};
HANDLE NewHandle(MemoryHandle&& opened);
MemoryHandle& AtHandle(HANDLE handle);
std::size_t OpenHandles();
bool CloseMemoryHandle(HANDLE handle);  // false when it is none

std::wstring PlainPath(const wchar_t* path);

// Answers `result` with the error.
template <class Result>
Result Refuse(DWORD error, Result result) {
    SetLastError(error);
    return result;
}

namespace memory_disk {

HANDLE WINAPI CreateFileW(const wchar_t* path, DWORD access, DWORD sharing, SECURITY_ATTRIBUTES*,
                          DWORD disposition, DWORD, HANDLE);
BOOL WINAPI ReadFile(HANDLE file, void* destination, DWORD count, DWORD* read, OVERLAPPED*);
BOOL WINAPI WriteFile(HANDLE file, const void* source, DWORD count, DWORD* written, OVERLAPPED*);
DWORD WINAPI SetFilePointer(HANDLE file, LONG distance, LONG* high, DWORD);
DWORD WINAPI GetFileSize(HANDLE file, DWORD* high);
BOOL WINAPI SetEndOfFile(HANDLE file);
BOOL WINAPI DeleteFileW(const wchar_t* path);
BOOL WINAPI MoveFileW(const wchar_t* from, const wchar_t* to);
DWORD WINAPI GetFileAttributesW(const wchar_t* path);

}  // namespace memory_disk
