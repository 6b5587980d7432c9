#include "subscribe/group_file.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/temp_folder.h"

namespace {

TEST(GroupFileTest, NamesAreReadInTheFilesOrder) {
    TempFolder folder;
    const std::string x1022(1022, 'x');
    const struct {
        const char* why;
        std::string file;
        std::vector<std::string> names;
    } rows[] = {
        {"comments and empty lines are skipped", "#fj.a\r\n\r\nfj.b\r\n#\r\n\r\n", {"fj.b"}},
        {"a '#' within a name", "fj#a\r\n", {"fj#a"}},
        {"the last line has no end", "fj.a\r\nfj.b", {"fj.a", "fj.b"}},
        {"what is left of a last line is too short", "fj.a\r\nfj", {"fj.a"}},
        {"1024 bytes fit", x1022 + "\r\nfj.a\r\n", {x1022, "fj.a"}},
        {"one byte more ends the reading", "fj.a\r\nx" + x1022 + "\r\nfj.b\r\n", {"fj.a"}},
    };
    for (const auto& row : rows) {
        folder.Write(L"group.dat", row.file);
        GroupFile groups;
        ASSERT_TRUE(OpenGroupFile(groups, folder.Path().c_str())) << row.why;
        std::vector<std::string> names;
        while (const wchar_t* name = NextGroupName(groups))
            names.emplace_back(name, name + wcslen(name));
        EXPECT_EQ(names, row.names) << row.why;
    }
}

TEST(GroupFileTest, ReadersDoNotKeepEachOtherOut) {
    TempFolder folder;
    GroupFile first;
    EXPECT_FALSE(OpenGroupFile(first, folder.Path().c_str()));
    EXPECT_EQ(GetLastError(), 2u) << "not made by a reader";
    folder.Write(L"group.dat", "fj.a\r\nfj.b\r\n");
    GroupFile second;
    ASSERT_TRUE(OpenGroupFile(first, folder.Path().c_str()) && OpenGroupFile(second, folder.Path().c_str()));
    EXPECT_STREQ(NextGroupName(first), L"fj.a");
    EXPECT_STREQ(NextGroupName(second), L"fj.a");
    EXPECT_STREQ(NextGroupName(first), L"fj.b");
}

}  // namespace
