#include "store/article_writer.h"

#include <cstring>

#include "store/index.h"
#include "store/log.h"
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

// `subject` runs from behind "Subject: " to the line end, which counts.
uint32_t PriorityOfSubject(const KeywordFilter& filter, const NarrowText& line) {
    const std::size_t length = std::strlen(line.get());
    const std::size_t skipped = length < kSubjectName.size() ? length : kSubjectName.size();
    return MatchKeywordFilter(filter, line.get() + skipped);
}

bool ReadSubjectLine(DataFile& log, uint32_t start, const HeaderBlock& head, NarrowText& line) {
    const uint32_t length = head.subjectLine == kNoLine ? 0 : head.subjectLength;
    line = NewArray<char>(static_cast<std::size_t>(length) + 1);
    if (!line) return false;
    line[length] = '\0';
    if (length == 0) return true;
    const uint32_t position = log.position;
    SeekTo(log, start + head.subjectLine);
    const bool read = ReadExactly(log, line.get(), length);
    SeekTo(log, position);
    return read;
}

// Most groups have no keywords, and need no look at the subject.
bool FindPriority(GroupStore& store, uint32_t start, const HeaderBlock& head, const KeywordFilter& filter,
                  uint32_t& priority) {
    priority = kPriorityNormal;
    if (!filter.high && !filter.low) return true;
    NarrowText line;
    if (!ReadSubjectLine(store.log, start, head, line)) return false;
    priority = PriorityOfSubject(filter, line);
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

bool AppendRecord(GroupStore& store, uint32_t start, uint32_t end, const HeaderBlock& head,
                  const KeywordFilter& filter) {
    uint32_t priority = 0;
    if (!FindPriority(store, start, head, filter, priority)) return false;
    IndexRecord record;
    record.articleNumber = head.sequence;
    record.logOffset = start;
    record.logLength = end - start;
    FillHeadFields(record, head);
    FillSubjectRange(record, head, start);
    SetPriority(record, priority);
    if (!WriteRecord(store, record, store.header.recordCount)) return false;
    ++store.header.recordCount;
    CountRecord(store.header, record);
    return true;
}
