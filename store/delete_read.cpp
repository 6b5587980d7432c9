#include "store/delete_read.h"

#include <wchar.h>

#include <cstring>

#include "store/index.h"
#include "store/log.h"
#include "text/convert.h"
#include "text/last_error.h"

namespace {

constexpr uint32_t kFirstCopySize = 1024;
constexpr uint32_t kHeaderSize = sizeof(IndexHeader);
constexpr uint32_t kRecordSize = sizeof(IndexRecord);

// The index path with "idx" replaced.
WideText TemporaryPath(const GroupStore& store, const wchar_t* extension) {
    WideText path = CopyText(store.indexPath.get());
    if (path) std::memcpy(path.get() + wcslen(path.get()) - 3, extension, 3 * sizeof(wchar_t));
    return path;
}

struct TemporaryPaths {
    WideText index;
    WideText log;
};

bool MakePaths(const GroupStore& store, TemporaryPaths& paths) {
    if (!store.indexPath) return Fail(kErrorInvalidArgument);
    paths.index = TemporaryPath(store, L"id~");
    paths.log = TemporaryPath(store, L"lo~");
    return paths.index && paths.log;
}

// The files of one rewrite.
struct Rewrite {
    DataFile oldLog;
    DataFile newIndex;
    DataFile newLog;
    NarrowText copyBuffer;
    uint32_t copyCapacity = 0;
    uint32_t kept = 0;
    RecordCounts keptCounts;
};

bool OpenOldLog(Rewrite& rewrite, const GroupStore& store) {
    return OpenDataFile(rewrite.oldLog, store.logPath.get(), FileMode::kReadAlone);
}

// Files of these names may be all that is left of the articles, after a deletion that has not taken its
// places yet: they stay, and this fails.
bool MakeNewFiles(Rewrite& rewrite, const TemporaryPaths& paths) {
    if (!OpenDataFile(rewrite.newIndex, paths.index.get(), FileMode::kNew)) return false;
    if (OpenDataFile(rewrite.newLog, paths.log.get(), FileMode::kNew)) return true;
    const ErrorKeeper keeper;
    CloseDataFile(rewrite.newIndex);
    (void)DeleteDataFile(paths.index.get());
    return false;
}

bool GrowCopyBuffer(Rewrite& rewrite, uint32_t size) {
    if (size <= rewrite.copyCapacity) return true;
    rewrite.copyCapacity = 0;
    rewrite.copyBuffer = NewArray<char>(size);
    if (!rewrite.copyBuffer) return Fail(kErrorNoMemory);
    rewrite.copyCapacity = size;
    return true;
}

bool LiesInLog(const DataFile& log, const IndexRecord& record) {
    return record.logOffset <= log.size && record.logLength <= log.size - record.logOffset;
}

bool KeepRecord(Rewrite& rewrite, IndexRecord record) {
    if (!LiesInLog(rewrite.oldLog, record)) return Fail(kErrorInvalidData);
    if (!GrowCopyBuffer(rewrite, record.logLength)) return false;
    SeekTo(rewrite.oldLog, record.logOffset);
    if (!ReadExactly(rewrite.oldLog, rewrite.copyBuffer.get(), record.logLength)) return false;
    record.subjectTextOffset += rewrite.newLog.position - record.logOffset;
    record.logOffset = rewrite.newLog.position;
    if (!WriteBytes(rewrite.newLog, rewrite.copyBuffer.get(), record.logLength)) return false;
    if (!WriteBytes(rewrite.newIndex, &record, kRecordSize)) return false;
    ++rewrite.kept;
    CountRecord(rewrite.keptCounts, record);
    return true;
}

bool KeepUnread(Rewrite& rewrite, GroupStore& store) {
    if (!OpenIndex(store) || !GrowCopyBuffer(rewrite, kFirstCopySize)) return false;
    for (uint32_t number = 0; number < store.recordCount; ++number) {
        IndexRecord record;
        if (!ReadRecord(store, record, number)) return false;
        if (!IsRead(record) && !KeepRecord(rewrite, record)) return false;
    }
    return true;
}

// The new index is whole on disk before any old file goes, and the new log before the new index says so.
bool WriteNewFiles(Rewrite& rewrite, GroupStore& store) {
    if (!ReadHeader(store) || !WriteHeaderTo(rewrite.newIndex, store)) return false;
    SeekTo(rewrite.newIndex, kHeaderSize);
    if (!KeepUnread(rewrite, store)) return false;
    store.recordCount = rewrite.kept;
    store.highCount = rewrite.keptCounts.highCount;
    store.lowCount = rewrite.keptCounts.lowCount;
    store.savedPosition = 0;
    return FlushDataFile(rewrite.newLog) && WriteHeaderTo(rewrite.newIndex, store);
}

bool CloseFiles(Rewrite& rewrite, GroupStore& store) {
    CloseDataFile(store.index);
    CloseDataFile(rewrite.oldLog);
    const bool logClosed = CloseDataFile(rewrite.newLog);
    return CloseDataFile(rewrite.newIndex) && logClosed;
}

void RemoveTemporaries(const TemporaryPaths& paths) {
    const ErrorKeeper keeper;
    (void)DeleteDataFile(paths.log.get());
    (void)DeleteDataFile(paths.index.get());
}

// The old log is gone: the new one takes its place, unless it has it already, and the old index goes, even if
// the new log cannot follow. A group without an index is used by nobody until a start has finished this.
bool TakeLogsPlace(const TemporaryPaths& paths, const GroupStore& store, bool newLogWaits) {
    const bool taken = !newLogWaits || RenameDataFile(paths.log.get(), store.logPath.get());
    const unsigned error = GetError();
    return DeleteIfThere(store.indexPath.get()) && (taken || Fail(error));
}

bool TakePlaces(const TemporaryPaths& paths, const GroupStore& store, bool newLogWaits) {
    return TakeLogsPlace(paths, store, newLogWaits) &&
           RenameDataFile(paths.index.get(), store.indexPath.get());
}

// The new index is lost or damaged, and the old one names places in the old log: without either, an index is
// made anew from the new log.
bool DropIndexes(const TemporaryPaths& paths, const GroupStore& store, bool newLogWaits) {
    return TakeLogsPlace(paths, store, newLogWaits) && DeleteIfThere(paths.index.get());
}

bool EndsArticle(DataFile& log, const IndexRecord& record) {
    constexpr uint32_t kEndLength = sizeof(kSeparator) - 1;
    char end[kEndLength];
    if (!LiesInLog(log, record) || record.logLength < kEndLength) return Fail(kErrorInvalidData);
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

bool DeleteRead(GroupStore& store) {
    TemporaryPaths paths;
    const std::unique_ptr<Rewrite> rewrite(new (std::nothrow) Rewrite);
    if (!rewrite) return Fail(kErrorNoMemory);
    if (!MakePaths(store, paths) || !OpenOldLog(*rewrite, store) || !MakeNewFiles(*rewrite, paths))
        return false;
    const bool written = WriteNewFiles(*rewrite, store);
    const unsigned error = GetError();
    const bool closed = CloseFiles(*rewrite, store);
    if (!written || !closed) {
        const unsigned closeError = GetError();
        RemoveTemporaries(paths);
        return Fail(written ? closeError : error);
    }
    // A new index beside the old log would name the wrong articles: the log goes first, or nothing does.
    if (!DeleteIfThere(store.logPath.get())) {
        RemoveTemporaries(paths);
        return false;
    }
    // The articles are safe: what does not succeed here is made up for by the next start.
    (void)TakePlaces(paths, store, true);
    return true;
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
