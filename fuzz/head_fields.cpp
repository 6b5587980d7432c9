// The fields of a record that are read from a head's text. The first byte chooses a limit, the next two a
// date; the rest is the text.
#include "fuzz/harness.h"
#include "store/record.h"
#include "text/sjis.h"

namespace {

constexpr std::string_view kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                        "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

// The text's start up to its line end, as far as whole characters fit.
std::string_view WholeStart(std::string_view text, std::size_t limit) {
    text = text.substr(0, text.find_first_of(std::string_view("\r\n\0", 3)));
    std::size_t end = 0;
    while (end < text.size()) {
        const std::size_t next = end + (IsLeadByte(text[end]) ? 2 : 1);
        if (next > limit || next > text.size()) break;
        end = next;
    }
    return text.substr(0, end);
}

void CheckCopy(std::string_view text, std::size_t limit) {
    const NarrowText source = ExactBytes(text);
    const NarrowText field = NewArray<char>(limit);
    const std::size_t copied = CopyWholeCharacters(field.get(), limit, source.get(), text.size());
    Require(std::string_view(field.get(), copied) == WholeStart(text, limit),
            "as many whole characters as fit");
}

std::string SubjectOf(std::string_view text) {
    char field[kSubjectSize];
    const NarrowText source = ExactBytes(text);
    SubjectField(field, {source.get(), text.size()});
    Require(field[kSubjectSize - 1] == '\0', "a subject ends with a NUL");
    return field;
}

std::string FromOf(std::string_view text) {
    char field[kFromSize];
    const NarrowText source = ExactBytes(text);
    FromField(field, {source.get(), text.size()});
    Require(field[0] != '\0' && field[kFromSize - 1] == '\0',
            "a sender's name is never empty and ends with a NUL");
    return field;
}

std::string DateOf(std::string_view text) {
    char field[kDateSize];
    const NarrowText source = ExactBytes(text);
    DateField(field, {source.get(), text.size()});
    return {field, kDateSize};
}

void CheckSubject(std::string_view text) {
    const std::string subject = SubjectOf(text);
    Require(subject == WholeStart(text, kSubjectSize - 1), "a subject is the text's start");
    Require(SubjectOf(subject) == subject, "a subject that was cut is not cut again");
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
    const std::string marks = MarksOf(line);
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

std::string Shown(const std::string& name) {
    const std::string_view start = WholeStart(name, kFromSize - 1);
    return start.empty() ? "(Unknown)" : std::string(start);
}

// Any line gives the name that its marks say; the usual forms give exactly the name.
void CheckSender(std::string_view text) {
    const std::string line(text.substr(0, text.find_first_of(std::string_view("\r\n\0", 3))));
    Require(FromOf(text) == Shown(line.empty() ? line : SenderName(line)),
            "a name stands where its marks say");
    const std::string name = WholeCharacters(text.substr(0, 40));
    if (name.find_first_of("<>()\"") != std::string::npos) return;
    const std::string shown = Shown(name);
    Require(FromOf(name + " <a@b.example>\r\n") == shown, "a name before an address in angles");
    Require(FromOf('"' + name + "\" <a@b.example>") == shown, "the same in quotes");
    Require(FromOf("a@b.example (" + name + ")\r\n") == shown, "a name behind an address, in parentheses");
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

void CheckDate(std::string_view text, unsigned day, unsigned month) {
    const std::string any = DateOf(text);
    for (const char c : any)
        Require(IsDigit(c), "a date is digits");
    const int number = (any[0] - '0') * 10 + any[1] - '0';
    Require(number <= 12 && (number > 0 || any == "0000"), "a month, or no date at all");
    Require(number == 0 || text.find(kMonths[number - 1]) != std::string_view::npos,
            "a month that the text names");
    const std::string written = std::to_string(day) + " " + std::string(kMonths[month - 1]) + " 2000";
    const std::string digits = std::to_string(100 * month + day + 10000).substr(1);
    Require(DateOf("Sat, " + written + "\r\n") == digits && DateOf(written) == digits,
            "the usual form of a date");
}

}  // namespace

void FuzzOne(std::string_view input) {
    const std::size_t limit = TakeByte(input);
    const unsigned day = TakeByte(input) % 31 + 1u;
    const unsigned month = TakeByte(input) % 12 + 1u;
    CheckCopy(input, limit);
    CheckSubject(input);
    CheckSender(input);
    CheckDate(input, day, month);
}
