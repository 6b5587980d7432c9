#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

std::wstring NewFolderPath() {
    static unsigned count = 0;
    wchar_t temporary[MAX_PATH + 1] = {};
    GetTempPathW(MAX_PATH, temporary);
    return temporary + (L"pelnor-" + std::to_wstring(GetCurrentProcessId())) + L"-" +
           std::to_wstring(++count) + L"\\";
}

// Takes `path` with a backslash at the end. A file that is still open, or the working folder, stays.
void DeleteTree(const std::wstring& path) {
    WIN32_FIND_DATAW found;
    const HANDLE search = FindFirstFileW((path + L"*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) return;
    do {
        const std::wstring name = found.cFileName;
        if (name == L"." || name == L"..") continue;
        SetFileAttributesW((path + name).c_str(), FILE_ATTRIBUTE_NORMAL);
        if (!DeleteFileW((path + name).c_str())) DeleteTree(path + name + L"\\");
    } while (FindNextFileW(search, &found));
    FindClose(search);
    RemoveDirectoryW(path.c_str());
}

bool DeleteKeyTree(HKEY parent, const wchar_t* name) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(parent, name, 0, KEY_ALL_ACCESS, &key) != ERROR_SUCCESS) return false;
    for (bool more = true; more;) {
        wchar_t child[256];
        DWORD size = 256;
        more = RegEnumKeyExW(key, 0, child, &size, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS &&
               DeleteKeyTree(key, child);
    }
    RegCloseKey(key);
    return RegDeleteKeyW(parent, name) == ERROR_SUCCESS;
}

}  // namespace

TempFolder::TempFolder() : path_(NewFolderPath()) {
    DeleteTree(path_);  // left by a run that was killed
    EXPECT_NE(CreateDirectoryW(path_.c_str(), nullptr), 0) << "error " << GetLastError();
}

TempFolder::~TempFolder() {
    DeleteTree(path_);
    EXPECT_EQ(GetFileAttributesW(path_.c_str()), INVALID_FILE_ATTRIBUTES) << "a file is still open";
}

void TempFolder::Write(std::wstring_view name, std::string_view bytes) const {
    std::ofstream file(std::filesystem::path(FilePath(name)), std::ios::binary | std::ios::trunc);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    EXPECT_TRUE(file.flush().good()) << "could not write " << std::filesystem::path(name).string();
}

std::string TempFolder::Read(std::wstring_view name) const {
    std::ifstream file(std::filesystem::path(FilePath(name)), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

bool TempFolder::Has(std::wstring_view name) const {
    return GetFileAttributesW(FilePath(name).c_str()) != INVALID_FILE_ATTRIBUTES;
}

void RegistryGuard::DeleteSettings() {
    DeleteKeyTree(HKEY_CURRENT_USER, kKey);
}
