// Lets a test make the program's calls to the file system fail. A suite that sets a fault gets these calls'
// entries of the import table from here; the program is compiled as it always is.
#pragma once

#include <winsock2.h>

#include <windows.h>

// CreateFileW; ReadFile; WriteFile and SetEndOfFile; DeleteFileW; MoveFileW.
enum class FileCall { kOpen, kRead, kWrite, kDelete, kRename };

// Asked before each call, on the calling thread: 0 lets it happen, an error number makes it fail.
using FileFault = DWORD (*)(FileCall call);

// Null: every call happens.
void SetFileFault(FileFault fault);
