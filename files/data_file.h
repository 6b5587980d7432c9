// The file layer: every file of the store, the filters and the group files goes through it. It buffers, so a
// line or a record costs no call to the system; what was written stands on disk once FlushDataFile or
// CloseDataFile succeeded. All functions answer false with the reason in the last-error value.
#pragma once

#include <cstdint>
#include <string_view>

#include "platform/owners.h"
#include "text/owned.h"

enum class FileMode {
    kRead,               // read, others may read, must exist
    kReadAlone,          // read, no sharing, must exist
    kReadWrite,          // read and write, no sharing, created when missing
    kReadWriteExisting,  // read and write, no sharing, must exist
    kWrite,              // write, no sharing, created when missing, contents kept
    kReplace,            // read and write, no sharing, always a new empty file
    kNew,                // read and write, no sharing, must not exist
    kRewrite,            // like kReplace, but what the file held goes only once new contents are on disk
};

// One open file with one buffer. Positions and sizes are in bytes; a file is shorter than 4 GB.
struct DataFile {
    FileOwner handle;
    NarrowText buffer;
    uint32_t bufferSize = 0;
    uint32_t position = 0;        // where the next read or write happens
    uint32_t size = 0;            // of the file, unwritten bytes of the buffer included
    uint32_t systemPosition = 0;  // the handle's own position
    uint32_t windowStart = 0;     // file position of the buffer's first byte
    uint32_t windowLength = 0;    // bytes of the file that the buffer holds
    uint32_t dirtyStart = 0;      // part of the buffer that is not on disk yet; empty when start = end
    uint32_t dirtyEnd = 0;
    bool cutsAtClose = false;  // the file may still be longer than `size` on disk

    DataFile() = default;
    DataFile(const DataFile&) = delete;
    DataFile& operator=(const DataFile&) = delete;
    ~DataFile();  // closes; whoever needs to know that everything reached the disk calls CloseDataFile
};

[[nodiscard]] bool OpenDataFile(DataFile& file, const wchar_t* path, FileMode mode);

// For a short file, or the start of a long one: with a buffer of `bufferSize` bytes, and without asking for
// the size, which then counts as endless. Nothing may be written.
[[nodiscard]] bool OpenForReading(DataFile& file, const wchar_t* path, FileMode mode, uint32_t bufferSize);

inline bool IsOpen(const DataFile& file) {
    return static_cast<bool>(file.handle);
}

// Writes what is buffered and closes. Closing a closed file does nothing and succeeds. The file is closed in
// every case.
bool CloseDataFile(DataFile& file);

// Puts what is buffered on disk. After a failure the unwritten bytes are forgotten.
[[nodiscard]] bool FlushDataFile(DataFile& file);

// Reads up to `count` bytes; `got` says how many there were before the end of the file.
[[nodiscard]] bool ReadBytes(DataFile& file, void* destination, uint32_t count, uint32_t& got);

// Reads exactly `count` bytes; fewer fail with error 13.
[[nodiscard]] bool ReadExactly(DataFile& file, void* destination, uint32_t count);

[[nodiscard]] bool WriteBytes(DataFile& file, const void* source, uint32_t count);
void SeekTo(DataFile& file, uint32_t position);
void SeekToEnd(DataFile& file);

// Reads one line into `buffer` of `size` bytes and terminates it; `cut` drops its line end. `taken`, when
// given, is the number of bytes that the line has in the file. A line that does not fit with its NUL fails
// with 234, the end of the file with 38; a last line without a line end is a line.
[[nodiscard]] bool ReadLine(DataFile& file, char* buffer, uint32_t size, bool cut, uint32_t* taken = nullptr);

// The next line, line end and all, as ReadLine takes it: where it stands in the file's own buffer or, where
// it does not stand there whole, in `buffer`. It lasts until the next call.
[[nodiscard]] bool NextLine(DataFile& file, char* buffer, uint32_t size, std::string_view& line);

// Skips whole lines of fewer than `size` bytes that do not have `run` times the byte `mark` in a row: as many
// as can be told at a glance, perhaps none. Returns how many bytes they have.
uint32_t SkipLinesWithoutRun(DataFile& file, uint32_t size, char mark, std::size_t run);

bool FileExists(const wchar_t* path);
[[nodiscard]] bool DeleteDataFile(const wchar_t* path);
[[nodiscard]] bool DeleteIfThere(const wchar_t* path);  // succeeds where there is no such file
[[nodiscard]] bool RenameDataFile(const wchar_t* from, const wchar_t* to);

// `path` with `suffix` appended; null with error 8.
WideText JoinPath(const wchar_t* path, const wchar_t* suffix);
