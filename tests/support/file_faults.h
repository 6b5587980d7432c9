// Counts the program's calls to the file system, and lets one fail. A suite that does so gets these calls'
// entries of the import table from here; the program is compiled as it always is.
#pragma once

#include <winsock2.h>

#include <windows.h>

// CreateFileW; ReadFile; WriteFile and SetEndOfFile; DeleteFileW; MoveFileW.
enum class FileCall { kAny, kOpen, kRead, kWrite, kDelete, kRename };

// While this stands, on any thread. One at a time.
class FileCalls {
  public:
    // The `failing`-th call of this kind fails with `error`; 0: none does.
    explicit FileCalls(FileCall kind, DWORD error = 0, int failing = 1);
    ~FileCalls();
    FileCalls(const FileCalls&) = delete;
    FileCalls& operator=(const FileCalls&) = delete;

    // Calls of the kind so far.
    int Count() const;
};
