// What the windows above cannot show of the list: its refusals, and what it notes of a page.
#include "store/article_list.h"

#include "store/index.h"
#include "tests/store/group_files.h"

namespace {

class ArticleListTest : public GroupTest {
  protected:
    ArticleListTest() {
        std::vector<RecordBytes> records(5);
        for (uint32_t i = 0; i < 5; ++i) {
            records[i].number = i;
            records[i].subject = std::string(i == 3 ? 47 : i, 's');
            records[i].from = std::string(i == 4 ? 15 : i, 'f');
        }
        WriteIndex(IndexBytes({5, 0, 0, 0, 5, 0, "", 5}, records));
        EXPECT_TRUE(OpenArticleList(list, folder.Path().c_str(), L"fj.test") && BuildArticleList(list, 2));
    }

    ArticleList list;
};

// The columns take their widths from these.
TEST_F(ArticleListTest, TheLongestTextsAreThoseOfThePage) {
    const uint32_t rows[][3] = {{0, 1, 1}, {2, 47, 3}, {4, 4, 15}, {5, 0, 0}};
    for (const auto& [first, subject, from] : rows) {
        ASSERT_TRUE(LoadPage(list, first));
        EXPECT_EQ(LongestSubject(list), subject) << "from row " << first;
        EXPECT_EQ(LongestFrom(list), from) << "from row " << first;
    }
}

TEST_F(ArticleListTest, AMarkThatIsNotOnDiskIsNotShown) {
    ASSERT_TRUE(LoadPage(list, 2));
    const std::string before = Index();
    for (const uint32_t outside : {0u, 1u, 4u, 100u}) {
        EXPECT_FALSE(SetFlags(list, outside, kReadFlag)) << outside;
        EXPECT_EQ(GetLastError(), 87u) << outside;
    }
    {
        const FileCalls calls(FileCall::kOpen, ERROR_IO_DEVICE);
        EXPECT_FALSE(SetFlags(list, 3, kReadFlag));
    }
    EXPECT_EQ(list.page[1].flags, 0u);
    EXPECT_EQ(list.store.header.unreadCount, 5u);
    EXPECT_EQ(Index(), before);
    ASSERT_TRUE(SetFlags(list, 3, kReadFlag) && SetFlags(list, 3, kReadFlag));
    EXPECT_EQ(list.store.header.unreadCount, 4u) << "a second mark counts nothing";
}

// Another record at that number would be marked, and its article never named again.
TEST_F(ArticleListTest, ARecordThatHasMovedIsNotMarked) {
    ASSERT_TRUE(LoadPage(list, 2));
    std::vector<RecordBytes> kept(4);
    for (uint32_t i = 0; i < 4; ++i)
        kept[i].number = i + 1;
    WriteIndex(IndexBytes({5, 0, 0, 0, 4, 0, "", 4}, kept));
    const std::string before = Index();
    EXPECT_FALSE(SetFlags(list, 2, kReadFlag));
    EXPECT_EQ(GetLastError(), 13u);
    EXPECT_EQ(Index(), before);
}

TEST_F(ArticleListTest, AListThatCouldNotBeBuiltIsBuiltLater) {
    {
        const FileCalls calls(FileCall::kOpen, ERROR_IO_DEVICE);
        EXPECT_FALSE(BuildArticleList(list, 2));
    }
    EXPECT_EQ(list.visibleCount, 0u);
    EXPECT_TRUE(list.open);
    WriteIndex(Index().replace(88, 4, Word(9)));
    ASSERT_TRUE(BuildArticleList(list, 2));
    EXPECT_EQ(list.store.header.unreadCount, 5u) << "counted anew";
    ASSERT_TRUE(SetFlags(list, 0, kReadFlag) && CloseArticleList(list));
    EXPECT_EQ(Index().substr(88, 4), Word(4));
}

// A run whose progress was put away may end while its group is open.
TEST_F(ArticleListTest, WhatARunStoredMeanwhileStays) {
    GroupStore run;
    ASSERT_TRUE(SetNames(run, folder.Path().c_str(), L"fj.test") && ReadHeader(run));
    run.header.lastFetched = 9;
    run.header.recordCount = 6;
    run.header.unreadCount = 6;
    WriteIndex(Index() + Bytes(RecordBytes{}));
    ASSERT_TRUE(WriteHeader(run));
    ASSERT_TRUE(SetFlags(list, 0, kReadFlag) && CloseArticleList(list));
    ASSERT_TRUE(ReadHeader(run));
    EXPECT_EQ(run.header.lastFetched, 9u);
    EXPECT_EQ(run.header.recordCount, 6u);
    EXPECT_EQ(run.header.unreadCount, 5u);
}

}  // namespace
