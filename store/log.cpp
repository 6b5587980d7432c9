#include "store/log.h"

#include <cstring>

#include "text/convert.h"
#include "text/last_error.h"

namespace {

constexpr std::size_t kLineEnd = 2;  // CR LF

bool IsWithin(uint32_t offset, uint32_t length, uint32_t size) {
    return offset <= size && length <= size - offset;
}

NarrowText ReadPart(DataFile& log, uint32_t offset, uint32_t length) {
    if (!IsWithin(offset, length, log.size)) {
        SetError(kErrorInvalidData);
        return nullptr;
    }
    NarrowText text = NewArray<char>(static_cast<std::size_t>(length) + 1);
    if (!text) return nullptr;
    SeekTo(log, offset);
    if (!ReadExactly(log, text.get(), length)) return nullptr;
    text[length] = '\0';
    return text;
}

bool OpenLogForReading(DataFile& log, const GroupStore& store) {
    if (!store.logPath) return Fail(kErrorInvalidArgument);
    return OpenDataFile(log, store.logPath.get(), FileMode::kRead);
}

bool TakeLine(LogScanner& scanner, std::string_view& line) {
    if (!NextLine(*scanner.log, scanner.line, kLineSize, line)) return false;
    scanner.count += static_cast<uint32_t>(line.size());
    return true;
}

bool ScanHead(LogScanner& scanner) {
    std::string_view line;
    if (!StartHeaderBlock(scanner.head)) return false;
    while (TakeLine(scanner, line)) {
        if (StartsWith(line, "\r\n")) return true;
        if (!AddHeaderLine(scanner.head, line)) return false;
    }
    return false;
}

bool ScanBody(LogScanner& scanner) {
    constexpr std::string_view kWanted = kSeparator;
    std::string_view line;
    do {
        scanner.count +=
            SkipLinesWithoutRun(*scanner.log, kLineSize, kWanted.front(), kWanted.size() - kLineEnd);
        if (!TakeLine(scanner, line)) return false;
    } while (line != kWanted);
    return true;
}

}  // namespace

bool IsInLog(const DataFile& log, const IndexRecord& record) {
    return IsWithin(record.logOffset, record.logLength, log.size);
}

WideText ReadArticle(const GroupStore& store, uint32_t offset, uint32_t length) {
    DataFile log;
    if (!OpenLogForReading(log, store)) return nullptr;
    const NarrowText text = ReadPart(log, offset, length);
    return text ? ToWide(text.get()) : nullptr;
}

WideText ReadSubjectText(const GroupStore& store, const IndexRecord& record) {
    DataFile log;
    if (!OpenLogForReading(log, store)) return nullptr;
    const NarrowText text = ReadSubjectText(log, record);
    return text ? ToWide(text.get()) : nullptr;
}

NarrowText ReadSubjectText(DataFile& log, const IndexRecord& record) {
    const uint32_t start = record.subjectTextOffset - record.logOffset;
    const bool isOwn = record.subjectTextOffset >= record.logOffset &&
                       IsWithin(start, record.subjectTextLength, record.logLength);
    if (isOwn) return ReadPart(log, record.subjectTextOffset, record.subjectTextLength);
    SetError(kErrorInvalidData);
    return nullptr;
}

bool ReadHeaderBlock(DataFile& file, HeaderBlock& head) {
    std::unique_ptr<LogScanner> scanner(new (std::nothrow) LogScanner);
    if (!scanner) return Fail(kErrorNoMemory);
    scanner->log = &file;
    const bool read = ScanHead(*scanner) || GetError() == kErrorEndOfFile;
    head = std::move(scanner->head);
    return read;
}

ScanResult NextArticle(LogScanner& scanner) {
    scanner.start = scanner.count;
    const bool complete = ScanHead(scanner) && ScanBody(scanner);
    if (!complete) return GetError() == kErrorEndOfFile ? ScanResult::kEnd : ScanResult::kFailed;
    scanner.end = scanner.count;
    return ScanResult::kArticle;
}
