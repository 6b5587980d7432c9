// What the disk in memory leaves to the suite.
#include "platform/platform.h"

namespace {

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
