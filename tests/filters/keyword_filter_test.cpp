#include "filters/keyword_filter.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/file_faults.h"
#include "tests/support/temp_folder.h"

namespace {

std::vector<std::string> Keywords(const KeywordNode* node) {
    std::vector<std::string> keywords;
    for (; node; node = node->next)
        keywords.emplace_back(node->keyword.get());
    return keywords;
}

using Texts = std::vector<std::string>;

TEST(KeywordFilterTest, FilesGiveTwoLists) {
    TempFolder folder;
    const std::string x509(509, 'x');
    const struct {
        const char* why;
        std::string file;
        Texts high;
        Texts low;
    } rows[] = {
        {"the last line comes first", "+ a\r\n- b\r\n+ c\r\n- d\r\n", {"c", "a"}, {"d", "b"}},
        {"any other mark is low", "x abc\r\n", {}, {"abc"}},
        {"the second byte goes, whatever it is", "+-abc\r\n", {"abc"}, {}},
        {"a single byte is no keyword", "+\r\n\r\n- a\r\n", {}, {"a"}},
        {"two bytes are an empty keyword", "+ \r\n", {""}, {}},
        {"blanks belong to the keyword", "+  a b \r\n", {" a b "}, {}},
        {"511 bytes with the line end fit", "+ " + x509.substr(2) + "\r\n+ a\r\n", {"a", x509.substr(2)}, {}},
        {"one byte more ends the reading", "+ a\r\n+ " + x509.substr(1) + "\r\n+ b\r\n", {"a"}, {}},
    };
    const std::wstring path = folder.FilePath(L"fj.test.flt");
    KeywordFilter filter;
    for (const auto& row : rows) {
        folder.Write(L"fj.test.flt", row.file);
        EXPECT_TRUE(LoadKeywordFilter(filter, path.c_str())) << row.why;
        EXPECT_EQ(Keywords(filter.high), row.high) << row.why;
        EXPECT_EQ(Keywords(filter.low), row.low) << row.why;
    }
    {
        const FileCalls calls(FileCall::kOpen, ERROR_ACCESS_DENIED);
        EXPECT_FALSE(LoadKeywordFilter(filter, path.c_str()));
        EXPECT_EQ(GetLastError(), DWORD{ERROR_ACCESS_DENIED});
        EXPECT_EQ(filter.low, nullptr) << "emptied before the file is opened";
    }
    ASSERT_TRUE(AddKeywordLine(filter, "+ a"));
    EXPECT_TRUE(LoadKeywordFilter(filter, folder.FilePath(L"missing.flt").c_str()));
    EXPECT_EQ(filter.high, nullptr) << "a missing file is an empty filter";
    EXPECT_FALSE(LoadKeywordFilter(filter, folder.FilePath(L"missing\\a.flt").c_str()));
    EXPECT_EQ(GetLastError(), 3u) << "a missing folder is not";
}

TEST(KeywordFilterTest, SubjectsAreMatchedBothWays) {
    const struct {
        const char* why;
        Texts lines;
        const char* subject;
        uint32_t priority;
    } rows[] = {
        {"the keyword in the subject", {"+ fj"}, "Re: fj.comp question", 2},
        {"the subject in the keyword", {"+ fj"}, "f", 2},
        {"equal lengths must be equal", {"+ ab"}, "ba", 0},
        {"letters differ in case", {"+ FJ"}, "fj", 0},
        {"high wins over low", {"- fj", "+ fj"}, "fj", 2},
        {"an empty keyword matches", {"- "}, "fj", 1},
        {"bytes, not characters: a match across two characters", {"+ \x96{\x8C"}, "\x93\x96{\x8C\xEA", 2},
    };
    for (const auto& row : rows) {
        KeywordFilter filter;
        for (const std::string& line : row.lines)
            ASSERT_TRUE(AddKeywordLine(filter, line));
        EXPECT_EQ(MatchKeywordFilter(filter, row.subject), row.priority) << row.why;
    }
}

}  // namespace
