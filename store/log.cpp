#include "store/log.h"

#include <cstring>

#include "store/index.h"
#include "text/convert.h"
#include "text/decimal.h"
#include "text/last_error.h"

namespace {

constexpr char kEmptyLine[] = "\r\n";

bool WriteText(DataFile& file, std::string_view text) {
    return WriteBytes(file, text.data(), static_cast<uint32_t>(text.size()));
}

// "X-Local-Seq: n" CR LF.
bool AddSequenceLine(HeaderBlock& head, uint32_t number) {
    char line[kSequenceName.size() + 1 + kMostDigits + 2];
    std::size_t length = kSequenceName.size();
    std::memcpy(line, kSequenceName.data(), length);
    line[length++] = ' ';
    length += WriteDecimal(line + length, number);
    line[length++] = '\r';
    line[length++] = '\n';
    return AddHeaderLine(head, {line, length});
}

bool LiesWithin(uint32_t offset, uint32_t length, uint32_t size) {
    return offset <= size && length <= size - offset;
}

NarrowText ReadPart(DataFile& log, uint32_t offset, uint32_t length) {
    if (!LiesWithin(offset, length, log.size)) {
        SetError(kErrorInvalidData);
        return nullptr;
    }
    NarrowText text = NewArray<char>(static_cast<std::size_t>(length) + 1);
    if (!text) {
        SetError(kErrorNoMemory);
        return nullptr;
    }
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
    uint32_t taken = 0;
    if (!ReadLine(*scanner.log, scanner.line, kLineSize, false, &taken)) return false;
    scanner.count += taken;
    line = std::string_view(scanner.line, taken);
    return true;
}

bool ScanHead(LogScanner& scanner) {
    std::string_view line;
    if (!StartHeaderBlock(scanner.head)) return false;
    while (TakeLine(scanner, line)) {
        if (StartsWith(line, kEmptyLine)) return true;
        if (!AddHeaderLine(scanner.head, line)) return false;
    }
    return false;
}

bool ScanBody(LogScanner& scanner) {
    uint32_t taken = 0;
    if (!SkipPastLine(*scanner.log, kSeparator, scanner.line, kLineSize, taken)) return false;
    scanner.count += taken;
    return true;
}

}  // namespace

bool BeginArticle(ArticleWriter& writer, uint32_t number) {
    if (!StartHeaderBlock(writer.head)) return false;
    if (!writer.filterLoaded && !LoadKeywordFilter(writer.filter, writer.store->filterPath.get()))
        return false;
    writer.filterLoaded = true;
    writer.articleNumber = number;
    SeekToEnd(writer.store->log);
    writer.start = writer.store->log.position;
    return true;
}

bool FinishHead(ArticleWriter& writer) {
    if (!AddSequenceLine(writer.head, writer.articleNumber)) return false;
    return WriteText(writer.store->log, {writer.head.buffer.get(), writer.head.length}) &&
           WriteText(writer.store->log, kEmptyLine);
}

bool WriteBodyLine(ArticleWriter& writer, std::string_view line) {
    return WriteText(writer.store->log, line);
}

bool FinishBody(ArticleWriter& writer) {
    return FlushDataFile(writer.store->log);
}

bool FinishArticle(ArticleWriter& writer) {
    DataFile& log = writer.store->log;
    if (!WriteText(log, kSeparator) || !FlushDataFile(log)) return false;
    return AppendRecord(*writer.store, writer.start, log.position, writer.head, writer.filter) &&
           FlushDataFile(writer.store->index);
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
                       LiesWithin(start, record.subjectTextLength, record.logLength);
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
