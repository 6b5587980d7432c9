#include "store/string_set.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

std::vector<std::string> Contents(const StringSet& set) {
    std::vector<std::string> contents;
    StringSetIterator iterator = IterateStrings(set);
    while (const StringNode* node = NextString(iterator))
        contents.emplace_back(node->text);
    return contents;
}

TEST(StringSetTest, KeepsDuplicatesNewestFirst) {
    StringSet set;
    ASSERT_TRUE(CreateStringSet(set));
    EXPECT_TRUE(Contents(set).empty());
    const StringNode* older = AddString(set, "b");
    for (const char* text : {"a", "", "\xFF", "["})
        ASSERT_TRUE(AddString(set, text));
    const StringNode* newer = AddString(set, "b");
    EXPECT_EQ(Contents(set), (std::vector<std::string>{"[", "", "a", "b", "b", "\xFF"}));
    EXPECT_EQ(FindString(set, "b"), newer);
    EXPECT_EQ(FindString(set, "B"), nullptr);
    EXPECT_EQ(FindString(set, "aab"), nullptr) << "another text of the same bucket";
    EXPECT_TRUE(RemoveString(set, "b"));
    EXPECT_EQ(FindString(set, "b"), older) << "only the newer one goes";
    EXPECT_TRUE(RemoveString(set, "")) << "from the end of its chain";
    EXPECT_TRUE(RemoveString(set, "b"));
    EXPECT_FALSE(RemoveString(set, "b"));
    EXPECT_EQ(Contents(set), (std::vector<std::string>{"[", "a", "\xFF"}));
    ASSERT_TRUE(CreateStringSet(set));
    EXPECT_TRUE(Contents(set).empty()) << "made anew";
    DestroyStringSet(set);
    DestroyStringSet(set);
}

TEST(StringSetTest, AFailedAdditionTakesNoRoom) {
    StringSet set;
    ASSERT_TRUE(CreateStringSet(set));
    const std::string text(1000, 'x'), tooLong(600000, 'x');
    while (Contents(set).size() < 1024 && AddString(set, text.c_str())) {
    }
    EXPECT_EQ(AddString(set, text.c_str()), nullptr) << "1,024,000 bytes hold no 1024 nodes with such texts";
    EXPECT_EQ(GetLastError(), 8u);
    EXPECT_TRUE(RemoveString(set, text.c_str()));
    for (int i = 0; i < 200; ++i)
        EXPECT_EQ(AddString(set, tooLong.c_str()), nullptr);
    EXPECT_NE(AddString(set, text.c_str()), nullptr) << "what was removed makes room";
}

}  // namespace
