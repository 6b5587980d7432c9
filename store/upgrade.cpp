// Versions 2 to 4 are shorter forms of version 5: header and record end earlier,
// so both are read into the version 5 shapes. Version 1 has a text header and no records.
#include "store/upgrade.h"

#include <cstring>

#include "store/group_changes.h"
#include "store/log.h"
#include "text/convert.h"
#include "text/decimal.h"
#include "text/last_error.h"

namespace {

struct Layout {
    uint32_t headerSize;
    uint32_t recordSize;
};

constexpr Layout kLayouts[] = {{0, 0}, {0, 0}, {88, 64}, {92, 64}, {92, 84}, {100, 92}};  // by version
constexpr uint32_t kTextVersion = 1;
constexpr uint32_t kLargestVersionWord = 500;  // digits of a text header read as more
constexpr uint32_t kVersionWithUnread = 3;
constexpr uint32_t kVersionWithHead = 4;
constexpr uint32_t kVersionWithSubjectRange = 5;

WideText TemporaryPath(const GroupStore& store) {
    return JoinPath(store.indexPath.get(), L"~");
}

// There may be no old index.
bool ReplaceIndex(const GroupStore& store, const wchar_t* temporary) {
    return DeleteIfThere(store.indexPath.get()) && RenameDataFile(temporary, store.indexPath.get());
}

void DropTemporary(const wchar_t* temporary) {
    const ErrorKeeper keeper;
    (void)DeleteDataFile(temporary);
}

// One step from a version to the next.
struct Conversion {
    uint32_t from = 0;
    DataFile oldIndex;
    DataFile newIndex;
    DataFile log;
    LogScanner scanner;
    bool logEnded = false;
    IndexHeader header;
    RecordCounts counts;
};

// The n-th article of the log belongs to the n-th record. A log that ends early leaves the rest without a
// head.
bool NextHead(Conversion& conversion) {
    if (!conversion.logEnded) {
        const ScanResult result = NextArticle(conversion.scanner);
        if (result == ScanResult::kFailed) return false;
        conversion.logEnded = result == ScanResult::kEnd;
    }
    return !conversion.logEnded || StartHeaderBlock(conversion.scanner.head);
}

bool FillNewFields(Conversion& conversion, IndexRecord& record) {
    const uint32_t version = conversion.from + 1;
    if (version < kVersionWithHead) return true;
    if (!NextHead(conversion)) return false;
    const HeaderBlock& head = conversion.scanner.head;
    if (version == kVersionWithHead) {
        FillHeadFields(record, head);
    } else {
        FillSubjectRange(record, head, conversion.logEnded ? record.logOffset : conversion.scanner.start);
    }
    return true;
}

// Only what the old header did not count yet.
void FillNewCounts(Conversion& conversion) {
    const uint32_t version = conversion.from + 1;
    IndexHeader& header = conversion.header;
    if (version == kVersionWithUnread) header.unreadCount = conversion.counts.unreadCount;
    if (version != kVersionWithSubjectRange) return;
    header.highCount = conversion.counts.highCount;
    header.lowCount = conversion.counts.lowCount;
}

bool ConvertRecords(Conversion& conversion) {
    const Layout& oldLayout = kLayouts[conversion.from];
    const Layout& newLayout = kLayouts[conversion.from + 1];
    SeekTo(conversion.newIndex, newLayout.headerSize);
    for (uint32_t number = 0; number < conversion.header.recordCount; ++number) {
        IndexRecord record;
        if (!ReadExactly(conversion.oldIndex, &record, oldLayout.recordSize)) return false;
        if (!FillNewFields(conversion, record)) return false;
        if (!WriteBytes(conversion.newIndex, &record, newLayout.recordSize)) return false;
        CountRecord(conversion.counts, record);
    }
    return true;
}

bool WriteNewIndex(Conversion& conversion, GroupStore& store, const wchar_t* temporary) {
    if (!OpenDataFile(conversion.oldIndex, store.indexPath.get(), FileMode::kRead)) return false;
    if (!OpenDataFile(conversion.log, store.logPath.get(), FileMode::kReadWrite)) return false;
    if (!OpenDataFile(conversion.newIndex, temporary, FileMode::kReplace)) return false;
    conversion.scanner.log = &conversion.log;
    if (!ReadExactly(conversion.oldIndex, &conversion.header, kLayouts[conversion.from].headerSize))
        return false;
    if (!ConvertRecords(conversion)) return false;
    FillNewCounts(conversion);
    conversion.header.version = conversion.from + 1;
    SeekTo(conversion.newIndex, 0);
    return WriteBytes(conversion.newIndex, &conversion.header, kLayouts[conversion.from + 1].headerSize) &&
           CloseDataFile(conversion.newIndex);
}

bool ConvertOneStep(GroupStore& store, uint32_t from) {
    const WideText temporary = TemporaryPath(store);
    std::unique_ptr<Conversion> conversion(new (std::nothrow) Conversion);
    if (!temporary || !conversion) return Fail(kErrorNoMemory);
    conversion->from = from;
    const bool written = WriteNewIndex(*conversion, store, temporary.get());
    const unsigned error = GetError();
    conversion.reset();
    if (written) return ReplaceIndex(store, temporary.get());
    DropTemporary(temporary.get());
    return Fail(error);
}

// Whether a file is an index of its version from the first byte to the last. Error 13 when it is not; any
// other when it cannot be known.
bool IsWholeIndex(const wchar_t* path) {
    DataFile file;
    IndexHeader header;
    if (!OpenDataFile(file, path, FileMode::kRead) ||
        !ReadExactly(file, &header.version, sizeof(header.version))) {
        return false;
    }
    if (header.version < kVersionWithUnread || header.version > kIndexVersion) return Fail(kErrorInvalidData);
    const Layout& layout = kLayouts[header.version];
    SeekTo(file, 0);
    if (!ReadExactly(file, &header, layout.headerSize)) return false;
    const uint64_t size = layout.headerSize + static_cast<uint64_t>(header.recordCount) * layout.recordSize;
    return file.size == size || Fail(kErrorInvalidData);
}

uint32_t NumberOf(const char* line) {
    return TakeDecimal(line);
}

// Line 1 last fetched, line 2 status text, lines 3 and 4 server last and reserved. A line that is missing
// reads as 0 or as an empty text.
bool ReadTextHeader(GroupStore& store) {
    DataFile file;
    char lines[4][kLineSize] = {};
    if (!OpenDataFile(file, store.indexPath.get(), FileMode::kRead)) return false;
    for (char(&line)[kLineSize] : lines) {
        if (!ReadLine(file, line, kLineSize, true)) {
            if (GetError() != kErrorEndOfFile) return false;
            line[0] = '\0';
        }
    }
    store.header.lastFetched = NumberOf(lines[0]);
    store.statusText = ToWide(lines[1]);
    store.header.serverLast = NumberOf(lines[2]);
    store.header.reserved = NumberOf(lines[3]);
    return store.statusText != nullptr;
}

// Under the temporary name, and with the header last: what was cut off while it grew cannot be taken for
// whole.
bool RebuildAside(GroupStore& store, WideText& temporary) {
    if (!DeleteIfThere(temporary.get())) return false;
    store.indexPath.swap(temporary);
    const bool rebuilt = RebuildFromLog(store);
    store.indexPath.swap(temporary);
    return rebuilt;
}

// A line that is too long will be so the next time: the articles before it need not wait for it.
bool RebuildInPlace(GroupStore& store, WideText& temporary) {
    const bool rebuilt = RebuildAside(store, temporary);
    const unsigned error = GetError();
    if (rebuilt || (error == kErrorMoreData && IsWholeIndex(temporary.get()))) {
        return ReplaceIndex(store, temporary.get()) && (rebuilt || Fail(error));
    }
    DropTemporary(temporary.get());
    return Fail(error);
}

bool ConvertTextIndex(GroupStore& store) {
    Reset(store);
    WideText temporary = TemporaryPath(store);
    return temporary && ReadTextHeader(store) && RebuildInPlace(store, temporary);
}

bool MakeMissingIndex(GroupStore& store) {
    const CutOffUpgrade upgrade = FinishUpgrade(store);
    return upgrade == CutOffUpgrade::kTaken || (upgrade == CutOffUpgrade::kNone && MakeIndex(store));
}

}  // namespace

CutOffUpgrade FinishUpgrade(const GroupStore& store) {
    const WideText temporary = TemporaryPath(store);
    if (!temporary) return CutOffUpgrade::kFailed;
    if (IsWholeIndex(temporary.get())) {
        const bool renamed = RenameDataFile(temporary.get(), store.indexPath.get());
        return renamed ? CutOffUpgrade::kTaken : CutOffUpgrade::kFailed;
    }
    if (GetError() == kErrorFileNotFound) return CutOffUpgrade::kNone;
    if (GetError() != kErrorInvalidData) return CutOffUpgrade::kFailed;
    DropTemporary(temporary.get());
    return CutOffUpgrade::kNone;
}

bool MakeIndex(GroupStore& store) {
    Reset(store);
    WideText temporary = TemporaryPath(store);
    return temporary && RebuildInPlace(store, temporary);
}

bool UpgradeIndex(GroupStore& store, uint32_t version) {
    if (version == kTextVersion) return ConvertTextIndex(store);
    for (; version < kIndexVersion; ++version) {
        if (!ConvertOneStep(store, version)) return false;
    }
    return true;
}

bool ProbeVersion(GroupStore& store, uint32_t& version) {
    if (!store.indexPath) return Fail(kErrorInvalidArgument);
    DataFile file;
    const auto mode = FileMode::kReadWriteExisting;
    if (!OpenForReading(file, store.indexPath.get(), mode, sizeof(version))) return false;
    if (!ReadExactly(file, &version, sizeof(version))) return false;
    if (version > kLargestVersionWord) version = kTextVersion;
    return true;
}

IndexState BringUpToDate(GroupStore& store) {
    uint32_t version = 0;
    bool probed = ProbeVersion(store, version);
    if (!probed && GetError() == kErrorFileNotFound) {
        probed = MakeMissingIndex(store) && ProbeVersion(store, version);
    }
    if (!probed) return IndexState::kFailed;
    if (version == 0 || version > kIndexVersion) {
        SetError(kErrorInvalidData);
        return IndexState::kUnknownVersion;
    }
    if (version == kIndexVersion) return IndexState::kReady;
    return UpgradeIndex(store, version) ? IndexState::kReady : IndexState::kFailed;
}
