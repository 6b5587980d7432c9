// The kept header lines of an article and what its record says of them. The first byte chooses whether the
// lines are whole ones, as a log holds them, or whatever a server can make of a line; each line of the input
// is one.
#include <algorithm>
#include <optional>

#include "fuzz/harness.h"
#include "store/record.h"

namespace {

constexpr uint32_t kArticleStart = 1000;

// What the block holds when all lines are whole: unfolded lines back to back.
struct Unfolded {
    std::string text;
    std::optional<std::string> subject;  // of the last subject line
    bool inSubject = false;
};

bool TakeName(std::string_view& line, std::string_view name) {
    const bool found = line.substr(0, name.size()) == name;
    if (found) line.remove_prefix(name.size());
    return found;
}

void Unfold(Unfolded& block, std::string_view content) {
    const bool folded = content.find_first_of(" \t") == 0;
    if (folded) {
        content.remove_prefix(std::min(content.find_first_not_of(" \t"), content.size()));
        if (block.text.size() > 2) block.text.erase(block.text.size() - 2);
    }
    block.text += std::string(content) + "\r\n";
    if (folded && block.inSubject) *block.subject += content;
    if (folded) return;
    block.inSubject = TakeName(content, kSubjectName);
    if (block.inSubject) block.subject = content;
}

void Add(HeaderBlock& block, std::string_view line) {
    const NarrowText copy = ExactBytes(line);
    Require(AddHeaderLine(block, {copy.get(), line.size()}), "adding a line fails only for want of memory");
    Require(block.length < block.capacity && block.buffer[block.length] == '\0', "the block is terminated");
}

bool Lies(const HeaderBlock& block, uint32_t line, std::size_t nameLength) {
    return line == kNoLine || line + nameLength <= block.length;
}

void CheckPlaces(const HeaderBlock& block) {
    Require(Lies(block, block.subjectLine, kSubjectName.size()), "the subject line lies in the block");
    Require(Lies(block, block.fromLine, 1) && Lies(block, block.dateLine, 1),
            "the noted lines lie in the block");
    Require(Lies(block, block.newsgroupLine, kNewsgroupName.size()), "the newsgroup line lies in the block");
}

IndexRecord MakeRecord(const HeaderBlock& block) {
    IndexRecord record;
    FillHeadFields(record, block);
    FillSubjectRange(record, block, kArticleStart);
    Require(record.subject[kSubjectSize - 1] == '\0' && record.from[kFromSize - 1] == '\0',
            "fields end with a NUL");
    Require(record.from[0] != '\0', "a sender always has a name");
    return record;
}

// The block built anew from what it holds gives the same record: a log can be scanned again.
void CheckRecord(const HeaderBlock& block, const Unfolded& unfolded) {
    const IndexRecord record = MakeRecord(block);
    Require(std::string_view(block.buffer.get(), block.length) == unfolded.text,
            "unfolding keeps all but the folds");
    const std::string subject = unfolded.subject.value_or("");
    Require(record.subjectTextLength == subject.size(), "the subject's length is its text's");
    if (unfolded.subject) {
        const uint32_t place = record.subjectTextOffset - kArticleStart;
        Require(unfolded.text.substr(place, subject.size()) == subject,
                "the subject stands where the record says");
    }
    IndexRecord shown;
    SubjectField(shown.subject, unfolded.subject ? subject : "(none)");
    Require(std::string_view(record.subject) == shown.subject, "the list shows the start of the subject");
}

}  // namespace

void FuzzOne(std::string_view input) {
    const bool whole = TakeByte(input) % 2 == 0;
    HeaderBlock block;
    Unfolded unfolded;
    Require(StartHeaderBlock(block), "a block starts empty");
    while (!input.empty()) {
        std::string content(TakeUpTo(input, '\n'));
        if (whole && content.find_first_of(std::string_view("\r\0", 2)) != std::string::npos) continue;
        if (whole) Unfold(unfolded, content);
        Add(block, content + (whole ? "\r\n" : "\n"));
        CheckPlaces(block);
    }
    if (whole) {
        CheckRecord(block, unfolded);
    } else {
        (void)MakeRecord(block);
    }
}
