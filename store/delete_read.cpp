#include "store/delete_read.h"

#include <wchar.h>

#include <cstring>

#include "store/cut_off_deletion.h"
#include "store/index.h"
#include "store/log.h"
#include "text/convert.h"
#include "text/last_error.h"

namespace {

constexpr uint32_t kFirstCopySize = 1024;

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
    if (!rewrite.copyBuffer) return false;
    rewrite.copyCapacity = size;
    return true;
}

bool KeepRecord(Rewrite& rewrite, IndexRecord record) {
    if (!IsInLog(rewrite.oldLog, record)) return Fail(kErrorInvalidData);
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
    for (uint32_t number = 0; number < store.header.recordCount; ++number) {
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
    store.header.recordCount = rewrite.kept;
    store.header.highCount = rewrite.keptCounts.highCount;
    store.header.lowCount = rewrite.keptCounts.lowCount;
    store.header.savedPosition = 0;
    return FlushDataFile(rewrite.newLog) && WriteHeaderTo(rewrite.newIndex, store);
}

bool CloseFiles(Rewrite& rewrite, GroupStore& store) {
    CloseDataFile(store.index);
    CloseDataFile(rewrite.oldLog);
    const bool logClosed = CloseDataFile(rewrite.newLog);
    return CloseDataFile(rewrite.newIndex) && logClosed;
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
