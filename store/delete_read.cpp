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

bool MakeNewFiles(Rewrite& rewrite, const TemporaryPaths& paths) {
    return OpenDataFile(rewrite.newIndex, paths.index.get(), FileMode::kReplace) &&
           OpenDataFile(rewrite.newLog, paths.log.get(), FileMode::kReplace);
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
    if (!ReadStandingHeader(store) || !WriteHeaderTo(rewrite.newIndex, store)) return false;
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

bool DeleteOld(const WideText& path) {
    return !FileExists(path.get()) || DeleteDataFile(path.get());
}

// The old log is gone. Where a step fails, what is there lets the next FinishDeletion go on with that step.
bool TakePlaces(const TemporaryPaths& paths, const GroupStore& store) {
    if (FileExists(paths.log.get()) && !RenameDataFile(paths.log.get(), store.logPath.get())) return false;
    return DeleteOld(store.indexPath) && RenameDataFile(paths.index.get(), store.indexPath.get());
}

// The new index is lost or damaged, and the old one names places in the old log: without either, an index is
// made anew from the new log.
bool DropIndexes(const TemporaryPaths& paths, const GroupStore& store) {
    if (!DeleteOld(store.indexPath)) return false;
    if (FileExists(paths.log.get()) && !RenameDataFile(paths.log.get(), store.logPath.get())) return false;
    return DeleteOld(paths.index);
}

// Whether the new index is complete and describes a log of exactly `logSize` bytes. Error 13 when it is not;
// any other error when it cannot be known.
bool DescribesLog(const wchar_t* indexPath, uint32_t logSize) {
    DataFile index;
    IndexHeader header;
    if (!OpenDataFile(index, indexPath, FileMode::kRead) || !ReadExactly(index, &header, kHeaderSize))
        return false;
    const uint64_t size = kHeaderSize + static_cast<uint64_t>(header.recordCount) * kRecordSize;
    if (header.version != kIndexVersion || index.size != size) return Fail(kErrorInvalidData);
    uint32_t end = 0;
    for (uint32_t number = 0; number < header.recordCount; ++number) {
        IndexRecord record;
        if (!ReadExactly(index, &record, kRecordSize)) return false;
        if (record.logOffset != end || record.logLength > logSize - end) return Fail(kErrorInvalidData);
        end += record.logLength;
    }
    return end == logSize || Fail(kErrorInvalidData);
}

bool EndsArticle(DataFile& log, const IndexRecord& record) {
    constexpr uint32_t kEndLength = sizeof(kSeparator) - 1;
    char end[kEndLength];
    if (!LiesInLog(log, record) || record.logLength < kEndLength) return Fail(kErrorInvalidData);
    SeekTo(log, record.logOffset + record.logLength - kEndLength);
    if (!ReadExactly(log, end, kEndLength)) return false;
    return std::memcmp(end, kSeparator, kEndLength) == 0 || Fail(kErrorInvalidData);
}

// Whether every record names a place in the log that ends as articles do. Error 13 when not: then the log is
// newer than the index. Any other error when it cannot be known.
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

bool FitsLog(const wchar_t* indexPath, const wchar_t* logPath) {
    DataFile log;
    return OpenDataFile(log, logPath, FileMode::kRead) && DescribesLog(indexPath, log.size);
}

}  // namespace

bool DeleteRead(GroupStore& store) {
    TemporaryPaths paths;
    const std::unique_ptr<Rewrite> rewrite(new (std::nothrow) Rewrite);
    if (!rewrite) return Fail(kErrorNoMemory);
    // Without a log nothing is touched: a new one that could not take its place yet may be all there is.
    if (!MakePaths(store, paths) || !FinishDeletion(store) || !OpenOldLog(*rewrite, store)) return false;
    const bool written = MakeNewFiles(*rewrite, paths) && WriteNewFiles(*rewrite, store);
    const unsigned error = GetError();
    const bool closed = CloseFiles(*rewrite, store);
    if (!written || !closed) {
        const unsigned closeError = GetError();
        RemoveTemporaries(paths);
        return Fail(written ? closeError : error);
    }
    // A new index beside the old log would name the wrong articles: the log goes first, or nothing does.
    if (!DeleteOld(store.logPath)) {
        RemoveTemporaries(paths);
        return false;
    }
    // The articles are safe: what does not succeed here is made up for before the group is used again.
    (void)TakePlaces(paths, store);
    return true;
}

bool FinishDeletion(const GroupStore& store) {
    TemporaryPaths paths;
    if (!MakePaths(store, paths)) return false;
    const bool newLog = FileExists(paths.log.get());
    const bool newIndex = FileExists(paths.index.get());
    if (!newLog && !newIndex) return true;
    // The old log still stands, or there is none at all.
    if (newLog == FileExists(store.logPath.get())) {
        RemoveTemporaries(paths);
        return true;
    }
    const wchar_t* log = newLog ? paths.log.get() : store.logPath.get();
    if (newIndex && FitsLog(paths.index.get(), log)) return TakePlaces(paths, store);
    // Files that could not be read now may be all that is left of the articles.
    if (newIndex && GetError() != kErrorInvalidData) return false;
    if (newLog) return DropIndexes(paths, store);
    if (NamesArticles(store.indexPath.get(), log)) {
        RemoveTemporaries(paths);
        return true;
    }
    const bool isNewerLog = GetError() == kErrorInvalidData || GetError() == kErrorFileNotFound;
    return isNewerLog && DropIndexes(paths, store);
}
