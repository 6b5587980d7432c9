// Deletion of a group's read articles: what it must leave, byte for byte; and a start-up over the files of a
// deletion that never came to its end.
#include <gtest/gtest.h>

#include "store/cut_off_deletion.h"
#include "store/delete_read.h"
#include "tests/store/group_files.h"

namespace {

struct Article {
    std::string text;
    uint32_t flags = 0;       // 1 read, 2 low, 4 high
    std::string before = {};  // bytes of the log that belong to no article
    uint32_t subject = 1;     // where its text stands, from the article's first byte
};

struct GroupBytes {
    std::string index, log;
    bool operator==(const GroupBytes& other) const { return index == other.index && log == other.log; }
};

const std::string kLong(40000, 'x');  // more than any buffer on the way
const std::string kEnd = "================\r\n";
const std::vector<Article> kEnded = {{"one" + kEnd}, {"two" + kEnd, 1}, {"three" + kEnd}};
const std::vector<Article> kMixed = {{"read", 1}, {"one", 4}, {"read high", 5},
                                     {kLong},     {"low", 2}, {kLong, 1}};

// The files of a group, from its articles.
GroupBytes FilesOf(const std::vector<Article>& articles, bool afterDeletion) {
    GroupBytes files;
    HeaderBytes header;
    header.lastFetched = 71;
    header.serverLast = 80;
    header.reserved = 9;
    header.savedPosition = afterDeletion ? 0 : 3;
    header.status = "\x82\xA0 new";
    std::string records;
    uint32_t number = 60;
    for (const Article& article : articles) {
        ++number;
        if (afterDeletion && article.flags & 1) continue;
        if (!afterDeletion) files.log += article.before;
        const auto length = static_cast<uint32_t>(article.text.size());
        RecordBytes record{article.flags, number, static_cast<uint32_t>(files.log.size()), length};
        record.textOffset = record.offset + article.subject;
        record.textLength = 2;
        records += Bytes(record);
        files.log += article.text;
        ++header.recordCount;
        header.unread += !(article.flags & 1);
        header.high += (article.flags & 6) == 4;
        header.low += (article.flags & 6) == 2;
    }
    files.index = Bytes(header) + records;
    return files;
}

class DeleteReadTest : public GroupTest {
  protected:
    void Write(const GroupBytes& files) {
        folder.Write(L"fj.test.idx", files.index);
        folder.Write(L"fj.test.log", files.log);
        DeleteFileW(folder.FilePath(L"fj.test.id~").c_str());
        DeleteFileW(folder.FilePath(L"fj.test.lo~").c_str());
    }
    GroupBytes Files() const { return {Index(), Log()}; }
    bool HasTemporaries() const { return folder.Has(L"fj.test.id~") || folder.Has(L"fj.test.lo~"); }
};

TEST_F(DeleteReadTest, LeavesTheUnreadArticles) {
    const struct {
        const char* sentence;
        std::vector<Article> articles;
    } rows[] = {
        {"an empty group", {}},
        {"everything read", {{"one", 1}, {"two", 5}, {"three", 3}}},
        {"all priorities, articles longer than any buffer", kMixed},
        {"bytes of no article between", {{"one", 0, "dead"}, {"two", 1, "dead"}, {"three", 2, kLong}}},
        {"an article without a byte", {{""}, {"one", 1}, {"two", 4}}},
        {"subjects outside their articles", {{"one", 1}, {"two", 0, "", 0u - 5}, {"three", 0, "", 50}}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sentence);
        Write(FilesOf(row.articles, false));
        EXPECT_TRUE(DeleteRead(store));
        EXPECT_TRUE(Files() == FilesOf(row.articles, true));
        EXPECT_FALSE(HasTemporaries());
    }
}

TEST_F(DeleteReadTest, ADamagedGroupStaysAsItIs) {
    GroupBytes outside = FilesOf({{"one"}, {"two", 1}}, false);
    outside.log.pop_back();
    outside.index.replace(100 + 92 + 0, 4, Word(0));  // the one that ends outside is unread
    const struct {
        const char* sentence;
        GroupBytes files;
    } rows[] = {
        {"an article that ends outside the log", outside},
        {"an index of an older version", {Bytes(HeaderBytes{4}) + Padded("", 8), "log"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sentence);
        Write(row.files);
        EXPECT_FALSE(DeleteRead(store));
        EXPECT_EQ(GetLastError(), 13u);
        EXPECT_TRUE(Files() == row.files);
        EXPECT_FALSE(HasTemporaries());
    }
}

// What a start makes of the files that it may find.
TEST_F(DeleteReadTest, ACutOffDeletionIsFinishedOrCleared) {
    const GroupBytes old = FilesOf(kEnded, false), made = FilesOf(kEnded, true);
    const GroupBytes grown = {old.index, made.log + "the next" + kEnd}, anew = {old.index, ""};
    const std::string none;
    const struct {
        const char* sentence;
        GroupBytes stands, waits, result;
    } rows[] = {
        {"the new files are whole, the old ones stand", old, made, old},
        {"the new files were never finished", old, {old.index.substr(0, 100), ""}, old},
        {"the log has grown since it took its place", grown, {made.index, none}, {made.index, grown.log}},
        {"the old log went, and a run made another", anew, made, made},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sentence);
        Write(row.stands);
        folder.Write(L"fj.test.id~", row.waits.index);
        if (&row != &rows[2]) folder.Write(L"fj.test.lo~", row.waits.log);
        EXPECT_TRUE(FinishDeletion(store));
        EXPECT_TRUE(Files() == row.result);
        EXPECT_FALSE(HasTemporaries());
    }
}

TEST_F(DeleteReadTest, ANewIndexThatDoesNotFitTheLogIsNeverTaken) {
    const GroupBytes old = FilesOf({{"one"}, {"two", 1}, {"three"}}, false);
    HeaderBytes two;
    two.recordCount = 2;
    const RecordBytes gap[] = {{0, 1, 0, 3}, {0, 2, 6, 5}}, beyond[] = {{0, 1, 0, 3}, {0, 2, 3, 9}};
    const RecordBytes whole[] = {{0, 1, 0, 3}, {0, 2, 3, 8}};
    HeaderBytes three = two, older = two;
    three.recordCount = 3;
    older.version = 4;
    const struct {
        const char* sentence;
        std::string index;
    } rows[] = {
        {"an article twice", Bytes(two) + Bytes(whole[0]) + Bytes(whole[0])},
        {"its count is too high", Bytes(three) + Bytes(whole[0]) + Bytes(whole[1])},
        {"an older version", Bytes(older) + Padded("", 8) + Bytes(whole[0]) + Bytes(whole[1])},
        {"articles with a gap between", Bytes(two) + Bytes(gap[0]) + Bytes(gap[1])},
        {"an article beyond the log's end", Bytes(two) + Bytes(beyond[0]) + Bytes(beyond[1])},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sentence);
        Write(old);
        folder.Write(L"fj.test.id~", row.index);
        EXPECT_TRUE(FinishDeletion(store));
        EXPECT_EQ(Log(), old.log);
        EXPECT_NE(Index(), row.index);
        EXPECT_FALSE(HasTemporaries());
    }
}

}  // namespace
