#include "files/data_file.h"

#include <wchar.h>
#include <cstring>

#include "text/last_error.h"
#include "text/line.h"

namespace {

constexpr uint32_t kBufferSize = 16384;
constexpr uint32_t kLargestPosition = 0xFFFFFFFF;

struct OpenArguments {
    DWORD access;
    DWORD sharing;
    DWORD disposition;
};

OpenArguments ArgumentsOf(FileMode mode) {
    switch (mode) {
        case FileMode::kRead:
            return {GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING};
        case FileMode::kReadAlone:
            return {GENERIC_READ, 0, OPEN_EXISTING};
        case FileMode::kReadWrite:
            return {GENERIC_READ | GENERIC_WRITE, 0, OPEN_ALWAYS};
        case FileMode::kReadWriteExisting:
            return {GENERIC_READ | GENERIC_WRITE, 0, OPEN_EXISTING};
        case FileMode::kRewrite:
            return {GENERIC_READ | GENERIC_WRITE, 0, OPEN_ALWAYS};
        case FileMode::kWrite:
            return {GENERIC_WRITE, 0, OPEN_ALWAYS};
        case FileMode::kNew:
            return {GENERIC_READ | GENERIC_WRITE, 0, CREATE_NEW};
        case FileMode::kReplace:
            break;
    }
    return {GENERIC_READ | GENERIC_WRITE, 0, CREATE_ALWAYS};
}

// CREATE_ALWAYS refuses to replace a hidden file; emptying it does not.
HANDLE OpenNewOrEmptied(const wchar_t* path, const OpenArguments& arguments) {
    const HANDLE handle = CreateFileW(path, arguments.access, arguments.sharing, nullptr, CREATE_NEW,
                                      FILE_ATTRIBUTE_NORMAL, nullptr);
    const bool exists = handle == INVALID_HANDLE_VALUE &&
                        (GetError() == kErrorFileExists || GetError() == kErrorAlreadyExists);
    if (!exists) return handle;
    return CreateFileW(path, arguments.access, arguments.sharing, nullptr, TRUNCATE_EXISTING,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
}

HANDLE OpenHandle(const wchar_t* path, const OpenArguments& arguments) {
    if (arguments.disposition == CREATE_ALWAYS) return OpenNewOrEmptied(path, arguments);
    return CreateFileW(path, arguments.access, arguments.sharing, nullptr, arguments.disposition,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
}

bool MoveSystemPosition(DataFile& file, uint32_t position) {
    if (file.systemPosition == position) return true;
    LONG high = 0;  // given so that the low half counts as unsigned
    const DWORD moved = SetFilePointer(file.handle.Get(), static_cast<LONG>(position), &high, FILE_BEGIN);
    if (moved != position) return false;
    file.systemPosition = position;
    return true;
}

bool SystemRead(DataFile& file, uint32_t position, void* destination, uint32_t count, uint32_t& got) {
    got = 0;
    if (!MoveSystemPosition(file, position)) return false;
    DWORD read = 0;
    if (!ReadFile(file.handle.Get(), destination, count, &read, nullptr)) {
        file.systemPosition = kLargestPosition;
        return false;
    }
    got = read;
    file.systemPosition += read;
    return true;
}

bool SystemWrite(DataFile& file, uint32_t position, const void* source, uint32_t count) {
    if (!MoveSystemPosition(file, position)) return false;
    DWORD written = 0;
    const BOOL done = WriteFile(file.handle.Get(), source, count, &written, nullptr);
    file.systemPosition = done ? position + written : kLargestPosition;
    if (!done) return false;
    return written == count || Fail(ERROR_DISK_FULL);
}

// What stands behind the new contents.
bool CutRest(DataFile& file) {
    if (!file.cutsAtClose) return true;
    return MoveSystemPosition(file, file.size) && SetEndOfFile(file.handle.Get());
}

void DropWindow(DataFile& file) {
    file.windowStart = file.windowLength = file.dirtyStart = file.dirtyEnd = 0;
}

bool InWindow(const DataFile& file) {
    return file.position >= file.windowStart && file.position - file.windowStart < file.windowLength;
}

// What the buffer holds from the file's position on.
std::string_view RestOfWindow(const DataFile& file) {
    if (!InWindow(file)) return {};
    const uint32_t offset = file.position - file.windowStart;
    return {file.buffer.get() + offset, file.windowLength - offset};
}

// The next write continues what the buffer holds, or overwrites a part of it.
bool WriteFitsWindow(const DataFile& file) {
    if (file.windowLength == 0 || file.position < file.windowStart) return false;
    const uint32_t offset = file.position - file.windowStart;
    return offset <= file.windowLength && offset < file.bufferSize;
}

uint32_t Smaller(uint32_t a, uint32_t b) {
    return a < b ? a : b;
}

bool FillWindow(DataFile& file) {
    if (!FlushDataFile(file)) return false;
    DropWindow(file);
    uint32_t got = 0;
    if (!SystemRead(file, file.position, file.buffer.get(), file.bufferSize, got)) return false;
    file.windowStart = file.position;
    file.windowLength = got;
    return true;
}

uint32_t CopyFromWindow(DataFile& file, char* destination, uint32_t count) {
    const uint32_t offset = file.position - file.windowStart;
    const uint32_t part = Smaller(count, file.windowLength - offset);
    std::memcpy(destination, file.buffer.get() + offset, part);
    file.position += part;
    return part;
}

uint32_t CopyToWindow(DataFile& file, const char* source, uint32_t count) {
    const uint32_t offset = file.position - file.windowStart;
    const uint32_t part = Smaller(count, file.bufferSize - offset);
    std::memcpy(file.buffer.get() + offset, source, part);
    const bool clean = file.dirtyStart == file.dirtyEnd;
    file.dirtyStart = clean ? offset : Smaller(file.dirtyStart, offset);
    if (clean || file.dirtyEnd < offset + part) file.dirtyEnd = offset + part;
    if (file.windowLength < offset + part) file.windowLength = offset + part;
    file.position += part;
    if (file.size < file.position) file.size = file.position;
    return part;
}

}  // namespace

DataFile::~DataFile() {
    const ErrorKeeper keeper;
    CloseDataFile(*this);
}

bool OpenDataFile(DataFile& file, const wchar_t* path, FileMode mode) {
    if (!OpenForReading(file, path, mode, kBufferSize)) return false;
    DWORD high = 0;
    const DWORD size = GetFileSize(file.handle.Get(), &high);
    if (high == 0 && size != kLargestPosition) {
        file.cutsAtClose = mode == FileMode::kRewrite;
        file.size = file.cutsAtClose ? 0 : size;
        return true;
    }
    file.handle.Reset();
    return high != 0 ? Fail(kErrorInvalidData) : false;  // else it could not be asked for
}

bool OpenForReading(DataFile& file, const wchar_t* path, FileMode mode, uint32_t bufferSize) {
    CloseDataFile(file);
    file.buffer = NewArray<char>(bufferSize);
    if (!file.buffer) return false;
    file.bufferSize = bufferSize;
    file.handle.Reset(OpenHandle(path, ArgumentsOf(mode)));
    file.position = file.systemPosition = 0;
    file.size = kLargestPosition;
    file.cutsAtClose = false;
    DropWindow(file);
    return IsOpen(file);
}

bool CloseDataFile(DataFile& file) {
    if (!IsOpen(file)) return true;
    const bool flushed = FlushDataFile(file) && CutRest(file);
    file.handle.Reset();
    file.buffer.reset();
    return flushed;
}

bool FlushDataFile(DataFile& file) {
    if (file.dirtyStart == file.dirtyEnd) return true;
    const uint32_t start = file.dirtyStart;
    const uint32_t count = file.dirtyEnd - start;
    file.dirtyStart = file.dirtyEnd = 0;
    if (SystemWrite(file, file.windowStart + start, file.buffer.get() + start, count)) return true;
    const ErrorKeeper keeper;
    DropWindow(file);
    file.size = GetFileSize(file.handle.Get(), nullptr);
    return false;
}

bool ReadBytes(DataFile& file, void* destination, uint32_t count, uint32_t& got) {
    auto out = static_cast<char*>(destination);
    got = 0;
    while (got < count) {
        if (!InWindow(file)) {
            if (count - got >= file.bufferSize) {
                uint32_t part = 0;
                if (!FlushDataFile(file) || !SystemRead(file, file.position, out + got, count - got, part))
                    return false;
                file.position += part;
                got += part;
                return true;
            }
            if (!FillWindow(file)) return false;
            if (file.windowLength == 0) return true;
        }
        got += CopyFromWindow(file, out + got, count - got);
    }
    return true;
}

bool ReadExactly(DataFile& file, void* destination, uint32_t count) {
    uint32_t got = 0;
    if (!ReadBytes(file, destination, count, got)) return false;
    return got == count || Fail(kErrorInvalidData);
}

bool WriteBytes(DataFile& file, const void* source, uint32_t count) {
    auto in = static_cast<const char*>(source);
    if (count > kLargestPosition - file.position) return Fail(ERROR_DISK_FULL);
    while (count > 0) {
        if (!WriteFitsWindow(file)) {
            if (!FlushDataFile(file)) return false;
            DropWindow(file);
            file.windowStart = file.position;
        }
        const uint32_t part = CopyToWindow(file, in, count);
        in += part;
        count -= part;
    }
    return true;
}

void SeekTo(DataFile& file, uint32_t position) {
    file.position = position;
}
void SeekToEnd(DataFile& file) {
    file.position = file.size;
}

bool ReadLine(DataFile& file, char* buffer, uint32_t size, bool cut, uint32_t* taken) {
    LineAssembler line{buffer, size - 1};
    LineState state = LineState::kOpen;
    while (state == LineState::kOpen) {
        if (!InWindow(file) && !FillWindow(file)) return false;
        if (file.windowLength == 0) break;
        const uint32_t offset = file.position - file.windowStart;
        std::size_t added = 0;
        state = AddToLine(line, file.buffer.get() + offset, file.windowLength - offset, added);
        file.position += static_cast<uint32_t>(added);
    }
    if (state == LineState::kFull) return Fail(kErrorMoreData);
    if (line.length == 0) return Fail(kErrorEndOfFile);
    if (taken) *taken = static_cast<uint32_t>(line.length);
    FinishLine(line, cut);
    return true;
}

bool NextLine(DataFile& file, char* buffer, uint32_t size, std::string_view& line) {
    const std::string_view rest = RestOfWindow(file);
    const std::size_t plain = PlainLineLength(rest.data(), rest.size());
    if (plain > 0 && plain < size) {
        line = rest.substr(0, plain);
        file.position += static_cast<uint32_t>(plain);
        return true;
    }
    uint32_t length = 0;
    if (!ReadLine(file, buffer, size, false, &length)) return false;
    line = {buffer, length};
    return true;
}

uint32_t SkipLinesWithoutRun(DataFile& file, uint32_t size, char mark, std::size_t run) {
    const std::string_view rest = RestOfWindow(file);
    const auto skipped =
        static_cast<uint32_t>(LinesWithoutRun(rest.data(), rest.size(), size - 1, mark, run));
    file.position += skipped;
    return skipped;
}

bool FileExists(const wchar_t* path) {
    return GetFileAttributesW(path) != 0xFFFFFFFF;
}

bool DeleteDataFile(const wchar_t* path) {
    return DeleteFileW(path);
}

bool DeleteIfThere(const wchar_t* path) {
    return DeleteDataFile(path) || GetError() == kErrorFileNotFound;
}

bool RenameDataFile(const wchar_t* from, const wchar_t* to) {
    return MoveFileW(from, to);
}

WideText JoinPath(const wchar_t* path, const wchar_t* suffix) {
    const std::size_t length = wcslen(path);
    const std::size_t suffixLength = wcslen(suffix);
    WideText joined = NewArray<wchar_t>(length + suffixLength + 1);
    if (!joined) return nullptr;
    std::memcpy(joined.get(), path, length * sizeof(wchar_t));
    std::memcpy(joined.get() + length, suffix, (suffixLength + 1) * sizeof(wchar_t));
    return joined;
}
