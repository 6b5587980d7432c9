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

TEST(StringSetTest, BucketsMakeTheOrderOfFiles) {
    const struct {
        const char* why;
        const char* text;
        uint32_t bucket;
    } rows[] = {
        {"empty", "", 0},
        {"one letter", "a", 6},
        {"the next letter", "b", 7},
        {"0x5A is the last bucket", "Z", 90},
        {"0x5B is the first again", "[", 0},
        {"order does not count", "ba", 3},
        {"equal bytes cancel", "aa", 0},
        {"a group name", "fj.test", 0x66 ^ 0x6A ^ 0x2E ^ 0x74 ^ 0x65 ^ 0x73 ^ 0x74},
        {"0xFFFFFF83 modulo 91", "\x83", 40},
        {"two bytes with the top bit: it cancels", "\x83\x80", 3},
        {"0xFFFFFFFF modulo 91", "\xFF", 73},
    };
    for (const auto& row : rows)
        EXPECT_EQ(BucketOf(row.text), row.bucket) << row.why;
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

TEST(StringSetTest, TheHeapHasAnEnd) {
    StringSet set;
    ASSERT_TRUE(CreateStringSet(set));
    const std::string text(1000, 'x');
    std::size_t added = 0;
    while (added < 1024 && AddString(set, text.c_str()))
        ++added;
    EXPECT_GT(added, 850u);
    EXPECT_LT(added, 1024u) << "1,024,000 bytes hold no 1024 nodes with such texts";
    SetLastError(0);
    EXPECT_EQ(AddString(set, text.c_str()), nullptr);
    EXPECT_EQ(GetLastError(), 8u);
    EXPECT_EQ(Contents(set).size(), added) << "a failed addition leaves nothing behind";
    EXPECT_TRUE(RemoveString(set, text.c_str()));
    const std::string tooLong(600000, 'x');
    for (int i = 0; i < 200; ++i)
        EXPECT_EQ(AddString(set, tooLong.c_str()), nullptr);
    EXPECT_NE(AddString(set, text.c_str()), nullptr) << "what was removed makes room";
}

}  // namespace
