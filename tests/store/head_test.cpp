// What the index keeps of an article's head.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "store/record.h"

namespace {

std::string Text(const HeaderBlock& block) {
    return {block.buffer.get(), block.length};
}

// What the block noted: a name, where it stands and how long it is.
std::string Notes(const HeaderBlock& block) {
    std::string notes;
    const auto note = [&notes](const char* name, uint32_t value, uint32_t length) {
        if (value != kNoLine) notes += name + std::to_string(value);
        if (length != 0) notes += "+" + std::to_string(length);
    };
    note(" subject ", block.subjectLine, block.subjectLength);
    note(" from ", block.fromLine, 0);
    note(" date ", block.dateLine, 0);
    note(" number ", block.sequence, 0);
    note(" newsgroup ", block.newsgroupLine, block.newsgroupLength);
    return notes;
}

TEST(HeaderBlockTest, LinesAreNotedAndJoined) {
    const struct {
        const char* why;
        std::vector<const char*> lines;
        const char* text;
        const char* notes;
    } rows[] = {
        {"names in other letters", {"subject: b\r\n", "FROM: a\r\n"}, "subject: b\r\nFROM: a\r\n", ""},
        {"a subject without its blank", {"Subject:b\r\n"}, "Subject:b\r\n", ""},
        {"two folds", {"Subject: b\r\n", " c\r\n", "\t d\r\n"}, "Subject: bcd\r\n", " subject 0+14"},
        {"a fold comes first", {" x\r\n", "From: a\r\n"}, "x\r\nFrom: a\r\n", " from 3"},
        {"the singular counts", {"Newsgroup: fj\r\n", " ,a\r\n"}, "Newsgroup: fj,a\r\n", " newsgroup 0+17"},
        {"a number ends at a blank", {"X-Local-Seq: 12 3\r\n"}, "X-Local-Seq: 12 3\r\n", " number 12"},
    };
    for (const auto& row : rows) {
        HeaderBlock block;
        ASSERT_TRUE(StartHeaderBlock(block));
        for (const char* line : row.lines)
            ASSERT_TRUE(AddHeaderLine(block, line));
        EXPECT_STREQ(block.buffer.get(), row.text) << row.why;
        EXPECT_EQ(Text(block), row.text) << row.why;
        EXPECT_EQ(Notes(block), row.notes) << row.why;
    }
}

TEST(RecordTest, DatesGiveMonthAndDay) {
    const struct {
        const char* why;
        const char* text;
        const char* expected;
    } rows[] = {
        {"one digit", "Thu, 5 Mar 1998 10:00:00 +0900\r\n", "0305"},
        {"two digits", "Thu, 05 Mar 1998\r\n", "0305"},
        {"the first month", "1 Jan\r\n", "0101"},
        {"any byte between day and month", "12-Oct-98\r\n", "1012"},
        {"month before day", "Mar 5 1998\r\n", "0000"},
        {"small letters", "5 mar 1998\r\n", "0000"},
        {"two blanks before the month", "5  Mar 1998\r\n", "0000"},
        {"three digits", "123 Mar\r\n", "0000"},
        {"no digit in the line", "today\r\n5 Mar\r\n", "0000"},
        {"the line ends behind the day", "5\r\nMar\r\n", "0000"},
    };
    for (const auto& row : rows) {
        char field[kDateSize];
        DateField(field, row.text);
        EXPECT_EQ(std::string(field, 4), row.expected) << row.why;
    }
}

TEST(RecordTest, SendersGiveAName) {
    const struct {
        const char* why;
        const char* text;
        const char* expected;
    } rows[] = {
        {"name and address", "Taro Yamada <t@a.jp>\r\n", "Taro Yamada"},
        {"a quoted name", "\"Taro Yamada\" <t@a.jp>\r\n", "Taro Yamada"},
        {"a name in parentheses", "t@a.jp (Taro Yamada)\r\n", "Taro Yamada"},
        {"parentheses within", "t@a.jp (Taro (Lab))\r\n", "Taro (Lab)"},
        {"a bare address, cut", "taro.yamada@a.b.c.jp\r\n", "taro.yamada@a.b"},
        {"written against the angle, a byte goes", "Taro<t@a.jp>\r\n", "Tar"},
        {"an angle without its opening is the address", "t@a.jp>\r\n", "t@a.jp>"},
        {"empty quotes", "\"\" <t@a.jp>\r\n", "(Unknown)"},
        {"the line's end ends the name", "t@a.jp\r\nDate: (x)", "t@a.jp"},
        {"the cut falls inside a character", "abcdefghijklmn\x93\xFA <t@a.jp>\r\n", "abcdefghijklmn"},
        {"half a character takes the bracket behind it", "\x89(z (Taro)\r\n", "Taro"},
        {"and so does one at the end", "\x93\xFA\x81)\r\n", "\x93\xFA\x81)"},
    };
    for (const auto& row : rows) {
        char field[kFromSize];
        FromField(field, row.text);
        EXPECT_EQ(std::string(field, 16),
                  std::string(row.expected) + std::string(16 - strlen(row.expected), '\0'))
            << row.why;
    }
}

TEST(RecordTest, SubjectsAreCutToTheirField) {
    const std::string x46(46, 'x');
    const struct {
        const char* why;
        std::string text;
        std::string expected;
    } rows[] = {
        {"47 bytes", x46 + "yz\r\n", x46 + "y"},
        {"a character across the cut", x46 + "\x93\xFA\r\n", x46},
        {"an empty subject stays empty", "\r\n", ""},
    };
    for (const auto& row : rows) {
        char field[kSubjectSize];
        SubjectField(field, row.text);
        EXPECT_EQ(std::string(field, 48), row.expected + std::string(48 - row.expected.size(), '\0'))
            << row.why;
    }
}

}  // namespace
