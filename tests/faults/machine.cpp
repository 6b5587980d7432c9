#include "tests/faults/machine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <set>
#include <vector>

#include "resources/resource.h"
#include "tests/support/imports.h"
#include "text/last_error.h"
#include "text/messages.h"

Machine machine;
std::map<std::wstring, std::string>& memoryFiles = machine.storage.files;
const std::wstring kFolder = L"N:\\news\\";

bool Fails(std::string_view call) {
    const DWORD error = machine.fault ? machine.fault(call) : 0;
    return error != 0 && Refuse(error, true);
}

namespace {

// The disk, beside what memory_disk.h has.

BOOL WINAPI MakeFolder(const wchar_t* name, SECURITY_ATTRIBUTES*) {
    if (Fails("CreateDirectoryW")) return FALSE;
    const std::wstring path = PlainPath(name);
    return memoryFiles.insert({path + L'\\', ""}).second || Refuse(ERROR_ALREADY_EXISTS, FALSE);
}

BOOL TakeFound(MemoryHandle& search, WIN32_FIND_DATAW* found) {
    if (search.found.empty()) return Refuse(ERROR_NO_MORE_FILES, FALSE);
    *found = {};
    found->dwFileAttributes = FILE_ATTRIBUTE_NORMAL;
    wcsncpy(found->cFileName, search.found.back().c_str(), MAX_PATH - 1);
    search.found.pop_back();
    return TRUE;
}

// The names of the files that fit a pattern "FOLDER\\*END".
std::vector<std::wstring> NamesThatFit(const std::wstring& pattern) {
    const std::size_t star = pattern.find(L'*');
    const std::wstring end = pattern.substr(star + 1);
    std::vector<std::wstring> names;
    for (const auto& [path, content] : memoryFiles) {
        if (path.compare(0, star, pattern, 0, star) != 0) continue;
        const std::wstring name = path.substr(star);
        const bool fits = name.size() >= end.size() && name.substr(name.size() - end.size()) == end;
        if (fits && name.find(L'\\') == name.npos) names.push_back(name);
    }
    return names;
}

HANDLE WINAPI SearchFor(const wchar_t* pattern, WIN32_FIND_DATAW* found) {
    if (Fails("FindFirstFileW")) return INVALID_HANDLE_VALUE;
    MemoryHandle search;
    search.found = NamesThatFit(PlainPath(pattern));
    if (!TakeFound(search, found)) return Refuse(ERROR_FILE_NOT_FOUND, INVALID_HANDLE_VALUE);
    return NewHandle(std::move(search));
}

BOOL WINAPI SearchOn(HANDLE search, WIN32_FIND_DATAW* found) {
    return !Fails("FindNextFileW") && TakeFound(AtHandle(search), found);
}

BOOL WINAPI Close(HANDLE handle) {
    static const auto closeReal = RealFunction<decltype(&Close)>("CloseHandle");
    return CloseMemoryHandle(handle) || closeReal(handle);
}

// The registry.

std::wstring KeyPath(HKEY key) {
    return (key == HKEY_CURRENT_USER ? L"HKCU" : AtHandle(key).path) + L'\\';
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
    return CloseMemoryHandle(key) ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
}

// The network: one connection at a time.

constexpr char kKnownHost[] = "news.example";
std::string sent;
bool broken = false, connected = false;

// A connection that has failed stays so.
bool Breaks(std::string_view call) {
    if (broken) return Refuse(WSAECONNRESET, true);
    return broken = Fails(call);
}

SOCKET WSAAPI MakeSocket(int, int, int) {
    broken = connected = false;
    if (Breaks("socket")) return INVALID_SOCKET;
    return reinterpret_cast<SOCKET>(NewHandle({}));
}

hostent* WSAAPI FindHost(const char* name) {
    static in_addr address = {{{127, 0, 0, 1}}};
    static char* list[] = {reinterpret_cast<char*>(&address), nullptr};
    static hostent host = {nullptr, nullptr, AF_INET, sizeof(address), list};
    return name == std::string(kKnownHost) ? &host : Refuse<hostent*>(WSAHOST_NOT_FOUND, nullptr);
}

int WSAAPI ConnectTo(SOCKET, const sockaddr* address, int) {
    const auto& to = *reinterpret_cast<const sockaddr_in*>(address);
    const bool listens = to.sin_addr.s_addr == htonl(INADDR_LOOPBACK) && to.sin_port == htons(119);
    if (Breaks("connect")) return SOCKET_ERROR;
    if (!listens || to.sin_family != AF_INET) return Refuse(WSAECONNREFUSED, SOCKET_ERROR);
    sent.clear();
    machine.network.says.clear();
    machine.network.ended = false;
    connected = true;
    machine.network.connect();
    return 0;
}

int WSAAPI SendBytes(SOCKET, const char* bytes, int count, int) {
    if (Breaks("send") || !connected) return SOCKET_ERROR;
    sent.append(bytes, static_cast<std::size_t>(count));
    for (std::size_t end; (end = sent.find("\r\n")) != std::string::npos; sent.erase(0, end + 2))
        machine.network.hear(sent.substr(0, end));
    return count;
}

int WSAAPI ReceiveBytes(SOCKET, char* bytes, int count, int) {
    if (Breaks("recv")) return SOCKET_ERROR;
    Network& network = machine.network;
    const std::size_t given =
        std::min({static_cast<std::size_t>(count), network.piece, network.stop, network.says.size()});
    std::memcpy(bytes, network.says.data(), given);
    network.says.erase(0, given);
    network.stop -= network.stop == std::string::npos ? 0 : given;
    if (network.stop == 0) network.stop = std::string::npos;
    return static_cast<int>(given);
}

int WSAAPI WaitForBytes(int, fd_set*, fd_set*, fd_set*, const timeval* limit) {
    if (Breaks("select")) return SOCKET_ERROR;
    if (!machine.network.says.empty() || machine.network.ended) return 1;
    machine.network.silence += limit->tv_sec;
    return 0;
}

int WSAAPI CloseSocket(SOCKET socket) {
    return CloseMemoryHandle(reinterpret_cast<HANDLE>(socket)) ? 0 : SOCKET_ERROR;
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

// What a worker shows must not go through the buffers that are the user interface's.
void RunThreads() {
    const wchar_t* const shared[] = {FormatText(LoadResString(IDS_NO_MEMORY), L""),
                                     LoadResString(IDS_NO_ANSWER)};
    const std::wstring before[] = {shared[0], shared[1]};
    for (const auto& [routine, parameter] : std::exchange(threads, {}))
        routine(parameter);
    EXPECT_TRUE(shared[0] == before[0] && shared[1] == before[1]);
}

// The user.

namespace {

std::string boxes;
std::function<void(HWND)> dialogUser;
INT_PTR dialogResult = 0;
bool refusesDialogs = false;

std::string Utf8(const wchar_t* text) {
    char bytes[2048] = "?";
    WideCharToMultiByte(CP_UTF8, 0, text ? text : L"(no text)", -1, bytes, sizeof(bytes), nullptr, nullptr);
    return bytes;
}

int WINAPI AnswerBox(HWND, const wchar_t* text, const wchar_t* caption, UINT) {
    boxes += Utf8(caption) + ": " + Utf8(text) + "\n";
    return IDOK;
}

HWND WINAPI MakeDialog(HINSTANCE instance, const DLGTEMPLATE* layout, HWND owner, DLGPROC procedure,
                       LPARAM parameter) {
    static const auto make = RealFunction<decltype(&MakeDialog)>("CreateDialogIndirectParamW", L"user32.dll");
    return refusesDialogs ? nullptr : make(instance, layout, owner, procedure, parameter);
}

// The dialog is real, but its user needs no message loop: what was posted to it comes when he is done.
INT_PTR WINAPI RunDialogForUser(HINSTANCE instance, const DLGTEMPLATE* layout, HWND owner, DLGPROC procedure,
                                LPARAM parameter) {
    dialogResult = -1;
    const HWND dialog = MakeDialog(instance, layout, owner, procedure, parameter);
    RunThreads();
    const auto user = std::exchange(dialogUser, nullptr);
    if (user && dialog) user(dialog);
    MSG message;
    while (dialog && dialogResult == -1 && PeekMessageW(&message, dialog, 0, 0, PM_REMOVE))
        DispatchMessageW(&message);
    if (dialog) DestroyWindow(dialog);
    return dialogResult;
}

BOOL WINAPI NoteDialogResult(HWND, INT_PTR result) {
    dialogResult = result;
    return TRUE;
}

HCURSOR WINAPI KeepCursor(HCURSOR) {
    return nullptr;
}

}  // namespace

std::string TakeBoxes() {
    return std::exchange(boxes, std::string());
}

void UseNextDialog(std::function<void(HWND)> user) {
    dialogUser = std::move(user);
}

void RefuseDialogs(bool refuse) {
    refusesDialogs = refuse;
}

// Memory. The linker makes these of the C library's functions, and calls of those reach what stands below.
extern "C" {
void* __real_malloc(std::size_t size);
void* __real_realloc(void* block, std::size_t size);
void __real_free(void* block);
}

// The test's own containers take theirs beside that; what they give back is none of the program's.
void* operator new(std::size_t size) {
    return __real_malloc(size);
}

namespace {

std::set<void*> held;
bool watching = false;

struct Watch {
    Watch() { watching = true; }
    ~Watch() { watching = false; }
} watch;

// An allocation that fails does not set the last error.
bool IsRefused(std::size_t size) {
    const ErrorKeeper keeper;
    machine.largestBlock = std::max(machine.largestBlock, size);
    return watching && Fails(kMemory);
}

// The set's own memory does not count.
void* Note(void* taken, void* released) {
    const ErrorKeeper keeper;
    if (!std::exchange(watching, false)) return taken;
    held.erase(released);
    if (taken) held.insert(taken);
    watching = true;
    return taken;
}

HANDLE WINAPI MakeHeap(DWORD options, SIZE_T initial, SIZE_T most) {
    static const auto make = RealFunction<decltype(&MakeHeap)>("HeapCreate");
    return IsRefused(initial) ? nullptr : Note(make(options, initial, most), nullptr);
}

void* WINAPI TakeFromHeap(HANDLE heap, DWORD options, SIZE_T size) {
    static const auto take = RealFunction<decltype(&TakeFromHeap)>("HeapAlloc");
    return IsRefused(size) ? nullptr : take(heap, options, size);
}

BOOL WINAPI DestroyHeap(HANDLE heap) {
    static const auto destroy = RealFunction<decltype(&DestroyHeap)>("HeapDestroy");
    Note(nullptr, heap);
    return destroy(heap);
}

// The test's own texts may hold the secret.
void LookForSecret(void* block) {
    if (machine.secret.empty() || !held.count(block)) return;
    std::string wide;
    for (const char byte : machine.secret)
        wide.append({byte, '\0'});
    const std::string_view bytes(static_cast<char*>(block), _msize(block));
    machine.secretsFreed += bytes.find(machine.secret) != bytes.npos || bytes.find(wide) != bytes.npos;
}

}  // namespace

extern "C" {
void* __wrap_malloc(std::size_t size) {
    void* block = IsRefused(size) ? nullptr : __real_malloc(size);
    if (block && !machine.secret.empty()) std::memset(block, 0, size);
    return block ? Note(block, nullptr) : nullptr;
}
void* __wrap_realloc(void* block, std::size_t size) {
    if (IsRefused(size)) return nullptr;
    LookForSecret(block);
    void* grown = __real_realloc(block, size);
    return grown ? Note(grown, block) : nullptr;
}
void __wrap_free(void* block) {
    LookForSecret(block);
    Note(nullptr, block);
    __real_free(block);
}
}

std::size_t HeldByProgram() {
    return OpenHandles() + held.size();
}

bool UsesNetwork(std::string_view call) {
    return call == "socket" || call == "connect" || call == "send" || call == "recv" || call == "select";
}

void Serve(std::function<std::string(const std::string& command)> reply) {
    machine.network.connect = [] { machine.network.says = "200 ready\r\n"; };
    machine.network.hear = [reply = std::move(reply)](const std::string& command) {
        machine.network.says += reply(command);
    };
}

std::string& FileOf(const std::wstring& name) {
    return memoryFiles[kFolder + name];
}

IN_PLACE_OF(CreateFileW, memory_disk::CreateFileW)
IN_PLACE_OF(ReadFile, memory_disk::ReadFile)
IN_PLACE_OF(WriteFile, memory_disk::WriteFile)
IN_PLACE_OF(SetFilePointer, memory_disk::SetFilePointer)
IN_PLACE_OF(SetEndOfFile, memory_disk::SetEndOfFile)
IN_PLACE_OF(GetFileSize, memory_disk::GetFileSize)
IN_PLACE_OF(DeleteFileW, memory_disk::DeleteFileW)
IN_PLACE_OF(MoveFileW, memory_disk::MoveFileW)
IN_PLACE_OF(CreateDirectoryW, MakeFolder)
IN_PLACE_OF(GetFileAttributesW, memory_disk::GetFileAttributesW)
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
IN_PLACE_OF(gethostbyname, FindHost)
IN_PLACE_OF(connect, ConnectTo)
IN_PLACE_OF(send, SendBytes)
IN_PLACE_OF(recv, ReceiveBytes)
IN_PLACE_OF(select, WaitForBytes)
IN_PLACE_OF(closesocket, CloseSocket)
IN_PLACE_OF(CreateThread, StartThread)
IN_PLACE_OF(HeapCreate, MakeHeap)
IN_PLACE_OF(HeapAlloc, TakeFromHeap)
IN_PLACE_OF(HeapDestroy, DestroyHeap)
IN_PLACE_OF(SetCursor, KeepCursor)
IN_PLACE_OF(MessageBoxW, AnswerBox)
IN_PLACE_OF(CreateDialogIndirectParamW, MakeDialog)
IN_PLACE_OF(DialogBoxIndirectParamW, RunDialogForUser)
IN_PLACE_OF(EndDialog, NoteDialogResult)
