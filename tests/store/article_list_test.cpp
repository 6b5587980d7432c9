#include "store/article_list.h"

#include "store/index.h"
#include "tests/store/group_files.h"

namespace {

constexpr uint32_t kRead = 1;
constexpr uint32_t kLow = 2;
constexpr uint32_t kHigh = 4;

class ArticleListTest : public GroupTest {
  protected:
    ArticleListTest() {
        // Number n is record n.
        std::vector<RecordBytes> records(7);
        const uint32_t flags[] = {0, kLow, kHigh | kRead, kHigh, kRead, kLow | kRead, 0};
        for (uint32_t i = 0; i < 7; ++i) {
            records[i].flags = flags[i];
            records[i].number = i;
            records[i].subject = std::string(i == 4 ? 47 : i, 's');
            records[i].from = std::string(i == 5 ? 15 : i, 'f');
        }
        records[3].textOffset = 2;
        records[3].textLength = 5;
        WriteIndex(IndexBytes({5, 0, 0, 0, 7, 6, "", 4, 2, 2}, records));
        WriteLog("..whole..");
        list.showRead = true;
        EXPECT_TRUE(OpenArticleList(list, folder.Path().c_str(), L"fj.test"));
    }

    std::vector<uint32_t> PageNumbers() const {
        std::vector<uint32_t> numbers;
        for (uint32_t i = 0; i < list.rowsInPage; ++i)
            numbers.push_back(list.page[i].articleNumber);
        return numbers;
    }

    ArticleList list;
};

TEST_F(ArticleListTest, OptionsChooseRowsAndPrioritiesOrderThem) {
    const struct {
        const char* why;
        bool showRead;
        uint32_t level;
        std::vector<uint32_t> rows;
    } rows[] = {
        {"everything", true, 1, {2, 3, 0, 4, 6, 1, 5}},
        {"high and normal", true, 0, {2, 3, 0, 4, 6}},
        {"high", true, 2, {2, 3}},
        {"everything unread", false, 1, {3, 0, 6, 1}},
        {"unread high and normal", false, 0, {3, 0, 6}},
        {"unread high", false, 2, {3}},
    };
    for (const auto& row : rows) {
        list.showRead = row.showRead;
        list.priorityLevel = row.level;
        ASSERT_TRUE(BuildArticleList(list, 10)) << row.why;
        EXPECT_EQ(PageNumbers(), row.rows) << row.why;
        EXPECT_EQ(list.visibleCount, row.rows.size()) << row.why;
        EXPECT_EQ(list.firstRow, 0u) << "the saved position is not restored";
    }
    WriteIndex(Bytes(HeaderBytes()));
    ASSERT_TRUE(BuildArticleList(list, 10));
    EXPECT_EQ(list.visibleCount, 0u) << "an empty index";
}

TEST_F(ArticleListTest, PagesShowTheirRows) {
    ASSERT_TRUE(BuildArticleList(list, 3));
    const struct {
        uint32_t first;
        std::vector<uint32_t> rows;
        uint32_t longestSubject;
        uint32_t longestFrom;
    } rows[] = {
        {0, {2, 3, 0}, 3, 3}, {3, {4, 6, 1}, 47, 6}, {5, {1, 5}, 5, 15},
        {6, {5}, 5, 15},      {7, {}, 0, 0},         {8, {}, 0, 0},
    };
    for (const auto& row : rows) {
        ASSERT_TRUE(LoadPage(list, row.first));
        EXPECT_EQ(PageNumbers(), row.rows) << "from row " << row.first;
        EXPECT_EQ(LongestSubject(list), row.longestSubject) << "from row " << row.first;
        EXPECT_EQ(LongestFrom(list), row.longestFrom) << "from row " << row.first;
    }
}

TEST_F(ArticleListTest, FlagsAreWrittenAtOnceAndCounted) {
    ASSERT_TRUE(BuildArticleList(list, 3));
    ASSERT_TRUE(LoadPage(list, 3));  // records 4, 6, 1: read, unread, unread
    const struct {
        const char* why;
        bool (*change)(ArticleList&, uint32_t, uint32_t);
        uint32_t row;
        uint32_t bits;
        uint32_t record;
        uint32_t flags;
        uint32_t unread;
    } rows[] = {
        {"read", SetFlags, 4, kRead, 6, kRead, 3},
        {"read already", SetFlags, 4, kRead, 6, kRead, 3},
        {"unread again", ClearFlags, 4, kRead, 6, 0, 4},
        {"unread already", ClearFlags, 4, kRead, 6, 0, 4},
        {"another bit counts nothing", SetFlags, 4, kHigh, 6, kHigh, 4},
        {"the read bit of a record with a priority", SetFlags, 5, kRead, 1, kLow | kRead, 3},
        {"another bit of a read record", SetFlags, 3, kLow, 4, kLow | kRead, 3},
        {"one that was read at first", ClearFlags, 3, kRead, 4, kLow, 4},
    };
    for (const auto& row : rows) {
        EXPECT_TRUE(row.change(list, row.row, row.bits)) << row.why;
        EXPECT_EQ(Index().substr(100 + 92 * row.record, 8), Word(row.flags) + Word(row.record)) << row.why;
        EXPECT_EQ(list.page[row.row - 3].flags, row.flags) << row.why;
        EXPECT_EQ(list.store.unreadCount, row.unread) << row.why;
    }
    const std::string before = Index();
    for (const uint32_t outside : {0u, 2u, 6u, 100u}) {
        EXPECT_FALSE(SetFlags(list, outside, kRead)) << outside;
        EXPECT_EQ(GetLastError(), 87u) << outside;
    }
    {
        const FileFaults faults(1);
        EXPECT_FALSE(SetFlags(list, 4, kRead));
    }
    EXPECT_EQ(Index(), before);
    EXPECT_EQ(list.page[1].flags, kHigh) << "a mark that is not on disk is not shown";
    EXPECT_EQ(list.store.unreadCount, 4u);
}

TEST_F(ArticleListTest, ClosingWritesThePositionOnce) {
    ASSERT_TRUE(BuildArticleList(list, 3));
    ASSERT_TRUE(LoadPage(list, 3) && SetFlags(list, 4, kRead));
    EXPECT_EQ(Index().substr(0, 100), Bytes(HeaderBytes{5, 0, 0, 0, 7, 6, "", 3, 2, 2})) << "counts at once";
    list.currentInPage = 2;
    ASSERT_TRUE(CloseArticleList(list));
    EXPECT_EQ(Index().substr(0, 100), Bytes(HeaderBytes{5, 0, 0, 0, 7, 5, "", 3, 2, 2}));
    const FileFaults faults;
    EXPECT_TRUE(CloseArticleList(list));
    EXPECT_EQ(faultPlan.writes, 0) << "nothing is open, nothing is written";
}

TEST_F(ArticleListTest, AVanishedIndexIsNotMadeAnew) {
    EXPECT_FALSE(OpenArticleList(list, folder.Path().c_str(), L"fj.missing"));
    EXPECT_EQ(GetLastError(), 2u);
    EXPECT_TRUE(CloseArticleList(list)) << "nothing is open";
    EXPECT_FALSE(folder.Has(L"fj.missing.idx"));
    ASSERT_TRUE(OpenArticleList(list, folder.Path().c_str(), L"fj.test") && BuildArticleList(list, 3));
    DeleteFileW(list.store.indexPath.get());
    EXPECT_FALSE(SetFlags(list, 0, kHigh | kLow));
    EXPECT_FALSE(LoadPage(list, 3));
    EXPECT_EQ(list.rowsInPage, 0u);
    EXPECT_FALSE(BuildArticleList(list, 3));
    EXPECT_EQ(GetLastError(), 2u);
    EXPECT_EQ(list.visibleCount, 0u);
    EXPECT_TRUE(CloseArticleList(list)) << "closed by the failure";
    EXPECT_FALSE(folder.Has(L"fj.test.idx"));
}

TEST_F(ArticleListTest, TheSelectedSubjectComesFromTheLog) {
    ASSERT_TRUE(BuildArticleList(list, 3));
    list.currentInPage = 1;  // record 3
    EXPECT_STREQ(ReadSelectedSubject(list).get(), L"whole");
    list.currentInPage = 3;
    EXPECT_EQ(ReadSelectedSubject(list), nullptr) << "no such row";
    DeleteFileW(list.store.logPath.get());
    list.currentInPage = 1;
    EXPECT_EQ(ReadSelectedSubject(list), nullptr) << "no log";
}

}  // namespace
