// What the disk in memory leaves to the suite, and the calls that need no more than a few words.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <set>

#include "platform/platform.h"

namespace {

using Heap = std::set<void*>;

std::map<std::wstring, std::string> files;

}  // namespace

std::map<std::wstring, std::string>& memoryFiles = files;

bool Fails(std::string_view) {
    return false;
}

BOOL CloseHandle(HANDLE handle) {
    if (!CloseMemoryHandle(handle)) std::abort();
    return 1;
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
    const auto count = std::min(static_cast<int>(std::strlen(text)), units);
    std::transform(text, text + count, buffer, [](char byte) { return static_cast<unsigned char>(byte); });
    buffer[count] = L'\0';
    return count + 1;
}

int WideCharToMultiByte(UINT, DWORD, const wchar_t* text, int, char* buffer, int bytes, void*, void*) {
    const auto count = std::min(static_cast<int>(std::wcslen(text)), bytes);
    std::transform(text, text + count, buffer, [](wchar_t unit) { return static_cast<char>(unit); });
    buffer[count] = '\0';
    return count + 1;
}
