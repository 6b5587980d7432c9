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
        {"nothing", {}, "", ""},
        {"two lines", {"From: a\r\n", "Subject: b\r\n"}, "From: a\r\nSubject: b\r\n", " subject 9+12 from 0"},
        {"names in other letters", {"subject: b\r\n", "FROM: a\r\n"}, "subject: b\r\nFROM: a\r\n", ""},
        {"a subject without its blank", {"Subject:b\r\n"}, "Subject:b\r\n", ""},
        {"the later", {"Subject: b\r\n", "Subject: c\r\n"}, "Subject: b\r\nSubject: c\r\n", " subject 12+12"},
        {"two folds", {"Subject: b\r\n", " c\r\n", "\t d\r\n"}, "Subject: bcd\r\n", " subject 0+14"},
        {"not its fold",
         {"Subject: b\r\n", "To: c\r\n", " d\r\n"},
         "Subject: b\r\nTo: cd\r\n",
         " subject 0+12"},
        {"a fold of blanks alone", {"Subject: b\r\n", "  \r\n"}, "Subject: b\r\n", " subject 0+12"},
        {"a fold comes first", {" x\r\n", "From: a\r\n"}, "x\r\nFrom: a\r\n", " from 3"},
        {"the standard header has another name", {"Newsgroups: fj\r\n"}, "Newsgroups: fj\r\n", ""},
        {"the singular counts", {"Newsgroup: fj\r\n", " ,a\r\n"}, "Newsgroup: fj,a\r\n", " newsgroup 0+17"},
        {"a large number",
         {"X-Local-Seq: 4294967294\r\n"},
         "X-Local-Seq: 4294967294\r\n",
         " number 4294967294"},
        {"a number ends at a blank", {"X-Local-Seq: 12 3\r\n"}, "X-Local-Seq: 12 3\r\n", " number 12"},
        {"no number", {"X-Local-Seq: 12x\r\n"}, "X-Local-Seq: 12x\r\n", ""},
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

TEST(HeaderBlockTest, GrowsByItsLinesAndStartsAnew) {
    HeaderBlock block;
    ASSERT_TRUE(StartHeaderBlock(block));
    EXPECT_EQ(block.capacity, 2048u);
    std::string expected = "References: <0>";
    ASSERT_TRUE(AddHeaderLine(block, expected + "\r\n"));
    for (int i = 0; i < 40; ++i) {
        const std::string reference(static_cast<std::size_t>(i * 13 % 1000), 'r');
        expected += "<" + reference + ">";
        ASSERT_TRUE(AddHeaderLine(block, "\t<" + reference + ">\r\n"));
        ASSERT_EQ(Text(block), expected + "\r\n");
        ASSERT_EQ(block.capacity % 2048, 0u);
    }
    ASSERT_TRUE(AddHeaderLine(block, "Date: " + std::string(1015, 'd') + "\r\n"));
    EXPECT_EQ(block.dateLine, expected.size() + 2);
    ASSERT_TRUE(StartHeaderBlock(block));
    EXPECT_EQ(block.capacity, 2048u);
    EXPECT_EQ(Text(block), "");
    EXPECT_EQ(block.dateLine, kNoLine) << "the next article has nothing of the one before";
}

TEST(RecordTest, DatesGiveMonthAndDay) {
    const struct {
        const char* why;
        const char* text;
        const char* expected;
    } rows[] = {
        {"one digit", "Thu, 5 Mar 1998 10:00:00 +0900\r\n", "0305"},
        {"two digits", "Thu, 05 Mar 1998\r\n", "0305"},
        {"without the day's name", "31 Dec 1999\r\n", "1231"},
        {"the first month", "1 Jan\r\n", "0101"},
        {"any byte between day and month", "12-Oct-98\r\n", "1012"},
        {"month before day", "Mar 5 1998\r\n", "0000"},
        {"small letters", "5 mar 1998\r\n", "0000"},
        {"two blanks before the month", "5  Mar 1998\r\n", "0000"},
        {"three digits", "123 Mar\r\n", "0000"},
        {"no digit in the line", "today\r\n5 Mar\r\n", "0000"},
        {"the line ends behind the day", "5\r\nMar\r\n", "0000"},
        {"the text ends behind the day", "5", "0000"},
        {"empty", "", "0000"},
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
        {"a bare address of 15 bytes", "yamada@abcde.jp\r\n", "yamada@abcde.jp"},
        {"written against the angle, a byte goes", "Taro<t@a.jp>\r\n", "Tar"},
        {"quoted and against the angle, both go", "\"Taro\"<t@a.jp>\r\n", "Tar"},
        {"two angles: the last counts", "a <b> <t@a.jp>\r\n", "a <b>"},
        {"an angle without its opening is the address", "t@a.jp>\r\n", "t@a.jp>"},
        {"text behind the angle: no form", "Taro <t@a> x\r\n", "Taro <t@a> x"},
        {"no name before the angle", "<t@a.jp>\r\n", "(Unknown)"},
        {"empty quotes", "\"\" <t@a.jp>\r\n", "(Unknown)"},
        {"empty parentheses", "t@a.jp ()\r\n", "(Unknown)"},
        {"nothing", "\r\n", "(Unknown)"},
        {"no line", "", "(Unknown)"},
        {"the line's end ends the name", "t@a.jp\r\nDate: (x)", "t@a.jp"},
        {"the cut falls inside a character", "abcdefghijklmn\x93\xFA <t@a.jp>\r\n", "abcdefghijklmn"},
        {"the cut falls behind a character", "abcdefghijklm\x93\xFAz <t@a.jp>\r\n", "abcdefghijklm\x93\xFA"},
        {"a character against the angle goes whole", "\x93\xFA\x96{<t@a.jp>\r\n", "\x93\xFA"},
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
        {"short", "Re: a\r\nDate: b", "Re: a"},
        {"47 bytes", x46 + "yz\r\n", x46 + "y"},
        {"a character across the cut", x46 + "\x93\xFA\r\n", x46},
        {"a character up to the cut", x46.substr(1) + "\x93\xFA\r\n", x46.substr(1) + "\x93\xFA"},
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
