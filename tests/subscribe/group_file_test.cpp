#include "subscribe/group_file.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "store/group_store.h"
#include "tests/support/temp_folder.h"

namespace {

TEST(GroupFileTest, NamesAreReadInTheFilesOrder) {
    TempFolder folder;
    const std::string x1023(1023, 'x');
    const std::string fits(259 - 5 - folder.Path().size(), 'x');  // with ".idx~" behind it
    const struct {
        const char* why;
        std::string file;
        std::vector<std::string> names;
    } rows[] = {
        {"comments and empty lines are skipped", "#fj.a\r\n\r\nfj.b\r\n#\r\n\r\n", {"fj.b"}},
        {"a '#' within a name", "fj#a\r\n", {"fj#a"}},
        {"the last line has no end", "fj.a\r\nfj.b", {"fj.a", "fj.b"}},
        {"what is left of a last line is too short", "fj.a\r\nfj", {"fj.a"}},
        {"lines over 1024 bytes are passed over",
         "fj.a\r\n" + x1023 + "\r\nfj.b\r\n" + x1023 + x1023,
         {"fj.a", "fj.b"}},
        {"an LF ends them where a CR was before",
         "\r" + x1023 + "x\nfj.a\r\n" + x1023 + "\n\r\nfj.b\r\n",
         {"fj.a", "fj.b"}},
        {"a name costs only its own group where no file can have it",
         "fj/a\r\nfj.b\r\nnul\r\n..\r\n",
         {"fj.b"}},
        {"so does one that has no room in the folder",
         fits + "\r\nx" + fits + "\r\nfj.b\r\n",
         {fits, "fj.b"}},
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

TEST(GroupFileTest, ANameHasRoomForItsLongestFile) {
    const std::wstring x251(251, L'x');
    EXPECT_TRUE(IsFileName(x251.c_str() + 1, 1));
    EXPECT_FALSE(IsFileName(x251.c_str(), 1));
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
