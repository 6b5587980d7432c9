// Groups to measure with, and plain files to hold them against.
#pragma once

#include <cstdint>
#include <string>

#include "store/group_store.h"

// A folder for one run in the system's temporary folder; removed at the end with all that is in it.
class BenchFolder {
  public:
    BenchFolder();
    ~BenchFolder();
    BenchFolder(const BenchFolder&) = delete;
    BenchFolder& operator=(const BenchFolder&) = delete;

    // With a backslash at the end.
    const wchar_t* Path() const { return path_.c_str(); }
    std::wstring File(const wchar_t* name) const { return path_ + name; }

  private:
    std::wstring path_;
};

// Stores `articles` articles of `bodyLines` Japanese lines as a download does, every tenth of high and every
// tenth of low priority, and marks every second one read.
void MakeGroup(GroupStore& store, const BenchFolder& folder, const wchar_t* name, uint32_t articles,
               uint32_t bodyLines);

// The least that the platform can do, in steps of the file layer's buffer: reads a file from end to end,
// writes back what it reads, copies it, reads `count` bytes at `offset`, or writes over the first `count`
// bytes.
void PlainRead(const wchar_t* path);
void PlainRewrite(const wchar_t* path);
void PlainCopy(const wchar_t* from, const wchar_t* to);
void PlainReadAt(const wchar_t* path, uint32_t offset, uint32_t count);
void PlainOverwrite(const wchar_t* path, uint32_t count);

// Makes the file anew with these bytes.
void WriteText(const wchar_t* path, const std::string& text);

void CopyWhole(const wchar_t* from, const wchar_t* to);
