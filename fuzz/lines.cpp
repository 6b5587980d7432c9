// Lines from a server or a file: where each ends, the dots that a server doubles, the numbers of a reply, and
// what the record of an article says when they are its head. The first byte chooses the buffers' sizes and
// whether the head's lines are whole ones, as a log holds them, or whatever a server can make of a line.
#include <algorithm>
#include <optional>

#include "fuzz/harness.h"
#include "nntp/reply.h"
#include "store/record.h"
#include "text/line.h"
#include "text/sjis.h"

namespace {

constexpr std::string_view kLineEnds("\r\n\0", 3);
constexpr uint32_t kArticleStart = 1000;

// A line of the stream as a reader that sees all of it at once would find it.
struct Found {
    std::string_view bytes;
    LineState state = LineState::kOpen;
};

Found FindLine(std::string_view stream, std::size_t capacity) {
    const std::size_t cr = stream.find('\r');
    const std::size_t lf = cr == std::string_view::npos ? cr : stream.find('\n', cr);
    if (lf != std::string_view::npos && lf < capacity)
        return {stream.substr(0, lf + 1), LineState::kComplete};
    if (stream.size() > capacity) return {stream.substr(0, capacity), LineState::kFull};
    return {stream, LineState::kOpen};
}

// The same bytes through the assembler, in a buffer of exactly the promised size and pieces of at most
// `piece` bytes.
void CheckFinished(std::string_view stream, std::size_t capacity, std::size_t piece, const Found& found,
                   bool cut) {
    const NarrowText buffer = NewArray<char>(capacity + 1);
    LineAssembler line{buffer.get(), capacity};
    LineState state = LineState::kOpen;
    for (std::size_t added = 0; !stream.empty() && state == LineState::kOpen; stream.remove_prefix(added))
        state = AddToLine(line, stream.data(), std::min(piece, stream.size()), added);
    Require(state == found.state, "the line ends at the LF behind its first CR, or at the capacity");
    Require(std::string_view(buffer.get(), line.length) == found.bytes,
            "a line holds exactly the stream's bytes");
    FinishLine(line, cut);
    const std::string_view expected = cut ? WithoutLineEnd(found.bytes) : found.bytes;
    Require(line.length == expected.size(), "cutting takes the line end and nothing else");
    Require(buffer[expected.size()] == '\0', "a finished line is terminated");
}

// Doubling a leading dot on the way out and taking one off on the way in is no change.
void CheckDots(const Found& found) {
    const std::string stuffed = (found.bytes.front() == '.' ? "." : "") + std::string(found.bytes);
    const NarrowText line = ExactBytes(stuffed + '\0');
    Require(!IsFinalDot(line.get()), "a stuffed line is never the end of the reply");
    const char* unstuffed = Unstuffed(line.get());
    const std::size_t length = stuffed.size() - static_cast<std::size_t>(unstuffed - line.get());
    Require(std::string_view(unstuffed, length) == found.bytes, "unstuffing gives the line that was stuffed");
    Require(IsFinalDot(ExactText(found.bytes).get()) == (found.bytes == ".\r\n"),
            "the reply ends at a lone dot only");
}

// Digits, then blanks. False for any other byte before a CR.
bool TakeNumber(std::string_view& line, uint32_t& number) {
    number = 0;
    for (; !line.empty() && line[0] >= '0' && line[0] <= '9'; line.remove_prefix(1))
        number = number * 10 + static_cast<uint32_t>(line[0] - '0');
    if (!line.empty() && line[0] != ' ' && line[0] != '\r') return false;
    line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
    return true;
}

void CheckReply(std::string_view text) {
    const NarrowText line = ExactText(text);
    text = line.get();
    GroupReply reply, model;
    uint32_t status = 0;
    const bool isReply = TakeNumber(text, status) && TakeNumber(text, model.count) &&
                         TakeNumber(text, model.first) && TakeNumber(text, model.last);
    Require(ParseGroupReply(line.get(), reply) == isReply,
            "a reply is read when its four fields are numbers");
    Require(
        !isReply || (reply.count == model.count && reply.first == model.first && reply.last == model.last),
        "the numbers are those of the line, modulo 2^32");
}

// What is passed by at a glance is what a reader line by line would have passed by.
void CheckSkipped(std::string_view stream, std::size_t capacity) {
    const std::string run(1 + capacity % 5, stream.back());
    stream =
        stream.substr(0, LinesWithoutRun(stream.data(), stream.size(), capacity, run.front(), run.size()));
    while (!stream.empty()) {
        const Found found = FindLine(stream, capacity);
        Require(found.state == LineState::kComplete, "only whole lines are passed by, none too long");
        Require(found.bytes.find(run) == std::string_view::npos, "no line with the run is passed by");
        stream.remove_prefix(found.bytes.size());
    }
}

void CheckStream(std::string_view stream, std::size_t capacity) {
    if (!stream.empty()) CheckSkipped(stream, capacity);
    while (!stream.empty()) {
        const Found found = FindLine(stream, capacity);
        const std::size_t plain = PlainLineLength(stream.data(), stream.size());
        Require(plain == 0 || plain > found.bytes.size() ||
                    (found.state == LineState::kComplete && plain == found.bytes.size()),
                "a plain line is a line");
        CheckFinished(stream, capacity, stream.size(), found, false);
        CheckFinished(stream, capacity, 1 + capacity % 7, found, true);
        CheckReply(found.bytes);
        if (found.state != LineState::kComplete) break;
        CheckFinished(stream, capacity * 2, stream.size(), found, false);
        CheckDots(found);
        stream.remove_prefix(found.bytes.size());
    }
}

// The text's start up to its line end, as far as whole characters fit.
std::string_view WholeStart(std::string_view text, std::size_t limit) {
    text = text.substr(0, text.find_first_of(kLineEnds));
    std::size_t end = 0;
    while (end < text.size()) {
        const std::size_t next = end + (IsLeadByte(text[end]) ? 2 : 1);
        if (next > limit || next > text.size()) break;
        end = next;
    }
    return text.substr(0, end);
}

template <std::size_t kSize>
std::string FieldOf(std::string_view text, void (*fill)(char (&)[kSize], std::string_view)) {
    char field[kSize];
    const NarrowText source = ExactBytes(text);
    fill(field, {source.get(), text.size()});
    return {field, kSize};
}

std::string Padded(std::string_view text, std::size_t size) {
    std::string padded(text);
    padded.resize(size);
    return padded;
}

// The marks of a sender's line, with two-byte characters blotted out so that none of their bytes counts as
// one.
std::string MarksOf(std::string line) {
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (!IsLeadByte(line[i])) continue;
        line[i] = 'x';
        if (i + 1 < line.size()) line[++i] = 'x';
    }
    return line;
}

std::string SenderName(const std::string& line) {
    const std::string marks = line.empty() ? "x" : MarksOf(line);
    const std::size_t angle = marks.rfind('<');
    const std::size_t parenthesis = marks.find('(');
    if (marks.back() == '>' && angle != std::string::npos) {
        const std::size_t quotes = line.front() == '"' ? 1 : 0;
        return angle > 1 + 2 * quotes ? line.substr(quotes, angle - 1 - 2 * quotes) : "";
    }
    if (marks.back() == ')' && parenthesis != std::string::npos)
        return line.substr(parenthesis + 1, line.size() - parenthesis - 2);
    return line;
}

std::string ShownSender(std::string_view text) {
    const std::string name = SenderName(std::string(text.substr(0, text.find_first_of(kLineEnds))));
    const std::string_view start = WholeStart(name, kFromSize - 1);
    return Padded(start.empty() ? "(Unknown)" : start, kFromSize);
}

void CheckFields(std::string_view text, std::size_t limit) {
    const NarrowText source = ExactBytes(text);
    const NarrowText field = NewArray<char>(limit);
    const std::size_t copied = CopyWholeCharacters(field.get(), limit, source.get(), text.size());
    Require(std::string_view(field.get(), copied) == WholeStart(text, limit),
            "as many whole characters as fit");
    Require(FieldOf(text, SubjectField) == Padded(WholeStart(text, kSubjectSize - 1), kSubjectSize),
            "a subject is the text's start");
    Require(FieldOf(text, DateField).find_first_not_of("0123456789") == std::string::npos,
            "a date is digits");
    Require(FieldOf(text, FromField) == ShownSender(text), "a name stands where its marks say");
}

// What a header block holds when all lines are whole: unfolded lines back to back, and the last of each name.
struct Unfolded {
    struct Named {
        std::string_view name;
        std::optional<std::string> text;
    };
    std::string text;
    Named fields[3] = {{kSubjectName, {}}, {kNewsgroupName, {}}, {"From: ", {}}};
    Named* last = nullptr;
};

void Unfold(Unfolded& block, std::string_view content) {
    const bool isFolded = content.find_first_of(" \t") == 0;
    if (isFolded) {
        content.remove_prefix(std::min(content.find_first_not_of(" \t"), content.size()));
        if (block.text.size() > 2) block.text.erase(block.text.size() - 2);
    }
    block.text += std::string(content) + "\r\n";
    if (isFolded && block.last) *block.last->text += content;
    if (isFolded) return;
    block.last = nullptr;
    for (Unfolded::Named& field : block.fields) {
        if (content.substr(0, field.name.size()) != field.name) continue;
        block.last = &field;
        field.text = content.substr(field.name.size());
    }
}

void Add(HeaderBlock& block, std::string_view line) {
    const NarrowText copy = ExactBytes(line);
    Require(AddHeaderLine(block, {copy.get(), line.size()}), "adding a line fails only for want of memory");
    Require(block.length < block.capacity && block.buffer[block.length] == '\0', "the block is terminated");
    for (const uint32_t place : {block.subjectLine, block.newsgroupLine, block.fromLine, block.dateLine})
        Require(place == kNoLine || place < block.length, "the noted lines are in the block");
}

// The block built anew from what it holds gives the same record: a log can be scanned again.
void CheckRecord(const HeaderBlock& block, const Unfolded& unfolded, const IndexRecord& record) {
    const auto& [subject, newsgroup, from] = unfolded.fields;
    const std::string text = subject.text.value_or("");
    Require(std::string_view(block.buffer.get(), block.length) == unfolded.text,
            "unfolding keeps all but the folds");
    Require(record.subjectTextLength == text.size(), "the subject's length is its text's");
    Require(
        !subject.text || unfolded.text.substr(record.subjectTextOffset - kArticleStart, text.size()) == text,
        "the subject stands where the record says");
    Require(std::string(record.subject, kSubjectSize) ==
                Padded(subject.text ? WholeStart(text, kSubjectSize - 1) : "(none)", kSubjectSize),
            "the list shows the start of the subject");
    Require(!newsgroup.text || block.newsgroupLength == newsgroup.name.size() + newsgroup.text->size() + 2,
            "the newsgroup line has its length");
    Require(!from.text || unfolded.text.substr(block.fromLine, from.name.size()) != from.name ||
                std::string(record.from, kFromSize) == ShownSender(*from.text),
            "the list shows the sender's name");
}

void CheckHead(std::string_view input, bool isWhole) {
    HeaderBlock block;
    Unfolded unfolded;
    Require(StartHeaderBlock(block), "a block starts empty");
    while (!input.empty()) {
        const std::string content(TakeUpTo(input, '\n'));
        if (isWhole && content.find_first_of(kLineEnds) != std::string::npos) continue;
        Unfold(unfolded, content);
        Add(block, content + (isWhole ? "\r\n" : "\n"));
    }
    IndexRecord record;
    FillHeadFields(record, block);
    FillSubjectRange(record, block, kArticleStart);
    Require(record.subject[kSubjectSize - 1] == '\0' && record.from[kFromSize - 1] == '\0' &&
                record.from[0] != '\0',
            "fields end with a NUL, and a sender always has a name");
    if (isWhole) CheckRecord(block, unfolded, record);
}

}  // namespace

void FuzzOne(std::string_view input) {
    const uint8_t choice = TakeByte(input);
    CheckStream(input, choice + std::size_t{1});
    CheckFields(input, choice);
    CheckHead(input, choice % 2 == 0);
}
