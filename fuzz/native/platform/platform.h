// The calls of Windows that the store and the conversation with a server make, over files that live in memory
// and sockets that the target plays: found before the program's own header where these are built natively.
// Sharing is kept as Windows keeps it; texts are converted byte by byte.
#pragma once

#include <sys/select.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <set>

#include "text/last_error.h"

using BOOL = int;
using DWORD = uint32_t;
using LONG = int32_t;
using UINT = unsigned;
using SIZE_T = std::size_t;
using SECURITY_ATTRIBUTES = void;
using OVERLAPPED = void;
typedef void *HANDLE, *HKEY, *HWND, *HFONT, *HDC, *HBITMAP, *HGDIOBJ, *HIMAGELIST, *HMENU, *HHOOK, *HINSTANCE;
#define WINAPI

inline const HANDLE INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(~uintptr_t{0});

constexpr DWORD GENERIC_READ = 0x80000000, GENERIC_WRITE = 0x40000000;
constexpr DWORD FILE_SHARE_READ = 1;
constexpr DWORD CREATE_NEW = 1, CREATE_ALWAYS = 2, OPEN_EXISTING = 3, OPEN_ALWAYS = 4, TRUNCATE_EXISTING = 5;
constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80, FILE_ATTRIBUTE_DIRECTORY = 0x10, FILE_BEGIN = 0;
constexpr DWORD INVALID_SET_FILE_POINTER = ~DWORD{0}, INVALID_FILE_SIZE = ~DWORD{0},
                INVALID_FILE_ATTRIBUTES = ~DWORD{0};
constexpr DWORD ERROR_FILE_NOT_FOUND = 2, ERROR_ACCESS_DENIED = 5, ERROR_SHARING_VIOLATION = 32,
                ERROR_FILE_EXISTS = 80, ERROR_DISK_FULL = 112, ERROR_ALREADY_EXISTS = 183;
constexpr BOOL FALSE = 0, TRUE = 1;
constexpr DWORD ERROR_NOT_ENOUGH_MEMORY = kErrorNoMemory;

inline DWORD GetLastError() {
    return GetError();
}
inline void SetLastError(DWORD error) {
    SetError(error);
}

BOOL CloseHandle(HANDLE file);

// A heap is the set of its blocks.
using MemoryHeap = std::set<void*>;
inline HANDLE HeapCreate(DWORD, SIZE_T, SIZE_T) {
    return new MemoryHeap;
}
inline void* HeapAlloc(HANDLE heap, DWORD, SIZE_T size) {
    return *static_cast<MemoryHeap*>(heap)->insert(std::malloc(size)).first;
}
inline BOOL HeapFree(HANDLE heap, DWORD, void* memory) {
    if (static_cast<MemoryHeap*>(heap)->erase(memory) == 0) std::abort();
    std::free(memory);
    return 1;
}
inline BOOL HeapDestroy(HANDLE heap) {
    for (void* memory : *static_cast<MemoryHeap*>(heap))
        std::free(memory);
    delete static_cast<MemoryHeap*>(heap);
    return 1;
}

inline UINT TextCodePage() {
    return 932;
}
template <class To, class From>
int CopyUnits(To* to, int room, const From* from) {
    int count = 0;
    for (; count < room && from[count] != 0; ++count)
        to[count] = static_cast<To>(static_cast<std::make_unsigned_t<char>>(from[count]));
    to[count] = 0;
    return count + 1;
}
inline int MultiByteToWideChar(UINT, DWORD, const char* text, int, wchar_t* buffer, int units) {
    return CopyUnits(buffer, units, text);
}
inline int WideCharToMultiByte(UINT, DWORD, const wchar_t* text, int, char* buffer, int bytes, void*, void*) {
    return CopyUnits(buffer, bytes, text);
}

// A listing of the folder finds nothing here.
constexpr DWORD ERROR_NO_MORE_FILES = 18;
struct FoundFile {
    wchar_t cFileName[260];
};
inline HANDLE FindFirst(const wchar_t*, FoundFile&) {
    SetError(kErrorFileNotFound);
    return INVALID_HANDLE_VALUE;
}
inline bool FindNext(HANDLE, FoundFile&) {
    return false;
}

// Sockets. The system's own `fd_set` has another shape.
using SOCKET = uintptr_t;
constexpr SOCKET INVALID_SOCKET = ~SOCKET{0};
constexpr int SOCKET_ERROR = -1;
constexpr int AF_INET = 2, SOCK_STREAM = 1;
constexpr uint32_t INADDR_NONE = ~uint32_t{0};
struct in_addr {
    uint32_t s_addr;
};
struct sockaddr {
    char bytes[16];
};
struct sockaddr_in {
    int16_t sin_family;
    uint16_t sin_port;
    in_addr sin_addr;
    char sin_zero[8];
};
struct hostent {
    char** h_addr_list;
};
struct SocketSet {
    unsigned fd_count;
    SOCKET fd_array[1];
};
#define fd_set SocketSet

SOCKET socket(int family, int type, int protocol);
int connect(SOCKET, const sockaddr*, int size);
int send(SOCKET, const char* bytes, int count, int);
int recv(SOCKET, char* bytes, int count, int);
int select(int, SocketSet* readable, SocketSet*, SocketSet*, timeval* limit);
int closesocket(SOCKET);
int WSACleanup();
hostent* gethostbyname(const char* name);
inline uint32_t inet_addr(const char*) {
    return 0x0100007F;
}
inline uint16_t htons(uint16_t port) {
    return port;
}

// Windows, for headers that name them.
struct MSG;
constexpr UINT MB_ICONERROR = 16;
int wsprintfW(wchar_t* text, const wchar_t* format, ...);

// Named by the owners, never called here.
inline BOOL FindClose(HANDLE) {
    return 1;
}
BOOL SetEvent(HANDLE);
BOOL DestroyWindow(HWND);
LONG RegCloseKey(HKEY);
BOOL DeleteObject(HANDLE);
BOOL DeleteDC(HDC);
HDC GetDC(HWND);
int ReleaseDC(HWND, HDC);
HGDIOBJ SelectObject(HDC, HGDIOBJ);
BOOL ImageList_Destroy(HIMAGELIST);
BOOL DestroyMenu(HMENU);
BOOL UnhookWindowsHookEx(HHOOK);

namespace memory_disk {}
using namespace memory_disk;
#include "tests/support/memory_disk.h"
