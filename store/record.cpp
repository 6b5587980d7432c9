#include "store/record.h"

#include <cstring>

#include "text/sjis.h"

namespace {

constexpr uint32_t kLineEnd = 2;  // CR LF

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

std::string_view FirstLine(std::string_view text) {
    std::size_t length = 0;
    while (length < text.size() && !EndsText(text[length]))
        ++length;
    return text.substr(0, length);
}

// 1 to 12, or 0.
unsigned MonthOf(std::string_view text) {
    constexpr std::string_view kMonths = "JanFebMarAprMayJunJulAugSepOctNovDec";
    for (unsigned month = 0; month < 12; ++month) {
        if (text.substr(0, 3) == kMonths.substr(month * 3, 3)) return month + 1;
    }
    return 0;
}

void PutTwoDigits(char* field, unsigned value) {
    field[0] = static_cast<char>('0' + value / 10 % 10);
    field[1] = static_cast<char>('0' + value % 10);
}

constexpr std::size_t kNone = static_cast<std::size_t>(-1);

// What decides where a sender's name stands. Two-byte characters count as one character that is none of
// these.
struct SenderMarks {
    std::size_t lastOpenAngle = kNone;
    std::size_t firstOpenParenthesis = kNone;
    char lastCharacter = '\0';
};

SenderMarks FindSenderMarks(std::string_view line) {
    SenderMarks marks;
    for (std::size_t i = 0; i < line.size(); ++i) {
        marks.lastCharacter = line[i];
        if (IsLeadByte(line[i])) {
            marks.lastCharacter = '\0';
            ++i;
        } else if (line[i] == '<') {
            marks.lastOpenAngle = i;
        } else if (line[i] == '(' && marks.firstOpenParenthesis == kNone) {
            marks.firstOpenParenthesis = i;
        }
    }
    return marks;
}

// `name <address>`: the byte before the angle, normally a blank, never belongs to the name, nor do its
// quotes.
std::string_view NameBeforeAngle(std::string_view line, std::size_t angle) {
    const std::size_t quote = line.front() == '"' ? 1 : 0;
    const std::size_t around = 1 + 2 * quote;
    return angle > around ? line.substr(quote, angle - around) : std::string_view();
}

std::string_view SenderName(std::string_view line) {
    const SenderMarks marks = FindSenderMarks(line);
    if (marks.lastCharacter == '>' && marks.lastOpenAngle != kNone) {
        return NameBeforeAngle(line, marks.lastOpenAngle);
    }
    if (marks.lastCharacter == ')' && marks.firstOpenParenthesis != kNone) {
        const std::size_t start = marks.firstOpenParenthesis + 1;
        return line.substr(start, line.size() - 1 - start);
    }
    return line;
}

}  // namespace

void SubjectField(char (&field)[kSubjectSize], std::string_view text) {
    std::memset(field, 0, sizeof(field));
    CopyWholeCharacters(field, sizeof(field) - 1, text.data(), text.size());
}

void DateField(char (&field)[kDateSize], std::string_view text) {
    std::memset(field, '0', sizeof(field));
    std::size_t at = 0;
    while (at < text.size() && !IsDigit(text[at])) {
        if (EndsText(text[at++])) return;
    }
    if (at == text.size()) return;
    unsigned day = static_cast<unsigned>(text[at++] - '0');
    if (at < text.size() && IsDigit(text[at])) day = day * 10 + static_cast<unsigned>(text[at++] - '0');
    const unsigned month = at < text.size() ? MonthOf(text.substr(at + 1)) : 0;
    if (month == 0) return;
    PutTwoDigits(field, month);
    PutTwoDigits(field + 2, day);
}

void FromField(char (&field)[kFromSize], std::string_view text) {
    constexpr char kUnknown[] = "(Unknown)";
    std::memset(field, 0, sizeof(field));
    const std::string_view name = SenderName(FirstLine(text));
    if (CopyWholeCharacters(field, sizeof(field) - 1, name.data(), name.size()) == 0) {
        std::memcpy(field, kUnknown, sizeof(kUnknown));
    }
}

void FillHeadFields(IndexRecord& record, const HeaderBlock& head) {
    if (head.subjectLine == kNoLine) {
        SubjectField(record.subject, "(none)");
    } else {
        const uint32_t start = head.subjectLine + static_cast<uint32_t>(kSubjectName.size());
        SubjectField(record.subject, {head.buffer.get() + start, head.length - start});
    }
    DateField(record.date, TextAfterName(head, head.dateLine));
    FromField(record.from, TextAfterName(head, head.fromLine));
}

void FillSubjectRange(IndexRecord& record, const HeaderBlock& head, uint32_t start) {
    record.subjectTextOffset = start;
    record.subjectTextLength = 0;
    if (head.subjectLine == kNoLine) return;
    constexpr auto kNameLength = static_cast<uint32_t>(kSubjectName.size());
    record.subjectTextOffset = start + head.subjectLine + kNameLength;
    const uint32_t around = kNameLength + kLineEnd;
    record.subjectTextLength = head.subjectLength > around ? head.subjectLength - around : 0;
}
