// A data folder that lives as long as one test, and the registry key of the settings kept out of its way.
#pragma once

#include <winsock2.h>

#include <windows.h>

#include <string>
#include <string_view>

// An empty folder of its own in the system's temporary folder; removed with all that is in it at the end.
// File names are relative to it. A failure to write fails the running test.
class TempFolder {
  public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    // With a backslash at the end.
    const std::wstring& Path() const { return path_; }
    std::wstring FilePath(std::wstring_view name) const { return path_ + std::wstring(name); }

    void Write(std::wstring_view name, std::string_view bytes) const;
    // The whole file; empty when it is missing.
    std::string Read(std::wstring_view name) const;
    bool Has(std::wstring_view name) const;

  private:
    std::wstring path_;
};

// Makes a test begin and end without HKEY_CURRENT_USER\Software\marrowby\Pelnor. The tests run in a Wine
// prefix of their own, so no user's settings are lost.
class RegistryGuard {
  public:
    RegistryGuard() { DeleteSettings(); }
    ~RegistryGuard() { DeleteSettings(); }
    RegistryGuard(const RegistryGuard&) = delete;
    RegistryGuard& operator=(const RegistryGuard&) = delete;

    static constexpr const wchar_t* kKey = L"Software\\marrowby\\Pelnor";

  private:
    static void DeleteSettings();
};
