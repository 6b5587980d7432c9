#include "store/cut_off_deletion.h"

#include <wchar.h>

#include <cstring>

#include "store/log.h"
#include "text/convert.h"
#include "text/last_error.h"

namespace {

// The index path with "idx" replaced.
WideText TemporaryPath(const GroupStore& store, const wchar_t* extension) {
    WideText path = CopyText(store.indexPath.get());
    if (path) std::memcpy(path.get() + wcslen(path.get()) - 3, extension, 3 * sizeof(wchar_t));
    return path;
}

// ".id~" or ".lo~", in the case that the file system likes.
bool IsOfDeletion(const wchar_t* name) {
    const std::size_t length = wcslen(name);
    if (length < 4 || name[length - 4] != L'.' || name[length - 1] != L'~') return false;
    const int first = name[length - 3] | 0x20, second = name[length - 2] | 0x20;
    return (first == 'i' && second == 'd') || (first == 'l' && second == 'o');
}

// The error of a search that has found all there is.
bool IsEndOfList(unsigned error) {
    return error == kErrorFileNotFound || error == ERROR_NO_MORE_FILES;
}

// The old log is gone: the new one takes its place, unless it has it already, and the old index goes, even if
// the new log cannot follow. Nothing uses a group without an index until a start has finished this.
bool TakeLogsPlace(const TemporaryPaths& paths, const GroupStore& store, bool newLogWaits) {
    const bool taken = !newLogWaits || RenameDataFile(paths.log.get(), store.logPath.get());
    const unsigned error = GetError();
    return DeleteIfThere(store.indexPath.get()) && (taken || Fail(error));
}

// The new index is lost or damaged, and the old one names places in the old log: without either, an index is
// made anew from the new log.
bool DropIndexes(const TemporaryPaths& paths, const GroupStore& store, bool newLogWaits) {
    return TakeLogsPlace(paths, store, newLogWaits) && DeleteIfThere(paths.index.get());
}

bool EndsArticle(DataFile& log, const IndexRecord& record) {
    constexpr uint32_t kEndLength = sizeof(kSeparator) - 1;
    char end[kEndLength];
    if (!IsInLog(log, record) || record.logLength < kEndLength) return Fail(kErrorInvalidData);
    SeekTo(log, record.logOffset + record.logLength - kEndLength);
    if (!ReadExactly(log, end, kEndLength)) return false;
    return std::memcmp(end, kSeparator, kEndLength) == 0 || Fail(kErrorInvalidData);
}

// Whether the new index is complete and describes a log, which may have grown since. Error 13 when it is not;
// any other error when it cannot be known.
bool DescribesLog(const wchar_t* indexPath, DataFile& log) {
    DataFile index;
    IndexHeader header;
    IndexRecord record;
    if (!OpenDataFile(index, indexPath, FileMode::kRead) || !ReadExactly(index, &header, kHeaderSize))
        return false;
    const uint64_t size = kHeaderSize + static_cast<uint64_t>(header.recordCount) * kRecordSize;
    if (header.version != kIndexVersion || index.size != size) return Fail(kErrorInvalidData);
    uint32_t end = 0;
    for (uint32_t number = 0; number < header.recordCount; ++number) {
        if (!ReadExactly(index, &record, kRecordSize)) return false;
        if (record.logOffset != end || record.logLength > log.size - end) return Fail(kErrorInvalidData);
        end += record.logLength;
    }
    return end == log.size || EndsArticle(log, record);
}

// Whether every record names a place in the log that ends as articles do. Error 13 when not: then the log is
// newer than the index. Error 2 when either is missing, any other when it cannot be known.
bool NamesArticles(const wchar_t* indexPath, const wchar_t* logPath) {
    DataFile index;
    DataFile log;
    IndexHeader header;
    const bool opened =
        OpenDataFile(index, indexPath, FileMode::kRead) && OpenDataFile(log, logPath, FileMode::kRead);
    if (!opened || !ReadExactly(index, &header, kHeaderSize)) return false;
    if (header.version != kIndexVersion) return true;  // none that a deletion began with
    for (uint32_t number = 0; number < header.recordCount; ++number) {
        IndexRecord record;
        if (!ReadExactly(index, &record, kRecordSize) || !EndsArticle(log, record)) return false;
    }
    return true;
}

bool FitsLog(const WideText& indexPath, const WideText& logPath) {
    DataFile log;
    return OpenDataFile(log, logPath.get(), FileMode::kRead) && DescribesLog(indexPath.get(), log);
}

// False when it cannot be known.
bool IsThere(const WideText& path, bool& there) {
    DataFile file;
    there = OpenDataFile(file, path.get(), FileMode::kRead);
    return there || GetError() == kErrorFileNotFound;
}

// After another error the file may be all that is left of the articles.
bool IsMissingOrDamaged(unsigned error) {
    return error == kErrorFileNotFound || error == kErrorInvalidData;
}

}  // namespace

bool MakePaths(const GroupStore& store, TemporaryPaths& paths) {
    if (!store.indexPath) return Fail(kErrorInvalidArgument);
    paths.index = TemporaryPath(store, L"id~");
    paths.log = TemporaryPath(store, L"lo~");
    return paths.index && paths.log;
}

void RemoveTemporaries(const TemporaryPaths& paths) {
    const ErrorKeeper keeper;
    (void)DeleteDataFile(paths.log.get());
    (void)DeleteDataFile(paths.index.get());
}

bool TakePlaces(const TemporaryPaths& paths, const GroupStore& store, bool newLogWaits) {
    return TakeLogsPlace(paths, store, newLogWaits) &&
           RenameDataFile(paths.index.get(), store.indexPath.get());
}

bool MayHoldCutOffDeletion(const wchar_t* folder) {
    const WideText pattern = JoinPath(folder, L"*~");
    if (!pattern) return true;
    FoundFile found;
    const FindOwner find(FindFirst(pattern.get(), found));
    for (bool more = static_cast<bool>(find); more; more = FindNext(find.Get(), found)) {
        if (IsOfDeletion(found.cFileName)) return true;
    }
    return !IsEndOfList(GetError());
}

bool FinishDeletion(const GroupStore& store) {
    TemporaryPaths paths;
    bool newLog = false, newIndex = false, log = false;
    const bool known = MakePaths(store, paths) && IsThere(paths.log, newLog) &&
                       IsThere(paths.index, newIndex) && IsThere(store.logPath, log);
    if (!known || (!newLog && !newIndex)) return known;
    if (NamesArticles(store.indexPath.get(), store.logPath.get())) {
        RemoveTemporaries(paths);
        return true;
    }
    if (!IsMissingOrDamaged(GetError())) return false;
    if (FitsLog(paths.index, newLog ? paths.log : store.logPath)) {
        return (!newLog || DeleteIfThere(store.logPath.get())) && TakePlaces(paths, store, newLog);
    }
    if (!IsMissingOrDamaged(GetError())) return false;
    // Neither index describes a log. The old files stand, unless only one log is there, which may be the new.
    if (newLog != log) return DropIndexes(paths, store, newLog);
    RemoveTemporaries(paths);
    return true;
}
