// Deletion of a group's read articles: what it must leave, byte for byte; and a start-up after a rewrite that
// was cut off at any of its calls to the system.
#include <gtest/gtest.h>

#include <functional>
#include <optional>

#include "store/delete_read.h"
#include "store/index.h"
#include "tests/store/group_files.h"

namespace {

struct Article {
    std::string text;
    uint32_t flags = 0;       // 1 read, 2 low, 4 high
    std::string before = {};  // bytes of the log that belong to no article
};

struct GroupBytes {
    std::string index, log;
    bool operator==(const GroupBytes& other) const { return index == other.index && log == other.log; }
};

const std::string kLong(40000, 'x');  // more than any buffer on the way
const std::vector<Article> kMixed = {{"read", 1}, {"one", 4}, {"read high", 5},
                                     {kLong},     {"low", 2}, {kLong, 1}};

// The files of a group, from its articles. `unread` counts them before the deletion; the texts' places are
// those in the old log.
GroupBytes FilesOf(const std::vector<Article>& articles, bool afterDeletion) {
    GroupBytes files;
    HeaderBytes header;
    header.lastFetched = 71;
    header.serverLast = 80;
    header.reserved = 9;
    header.savedPosition = afterDeletion ? 0 : 3;
    header.status = "\x82\xA0 new";
    std::string records;
    uint32_t number = 60, oldOffset = 0;
    for (const Article& article : articles) {
        ++number;
        oldOffset += static_cast<uint32_t>(article.before.size());
        const auto length = static_cast<uint32_t>(article.text.size());
        const uint32_t textOffset = oldOffset;
        oldOffset += length;
        if (afterDeletion && article.flags & 1) continue;
        if (!afterDeletion) files.log += article.before;
        RecordBytes record{article.flags, number, static_cast<uint32_t>(files.log.size()), length};
        record.textOffset = textOffset;
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
    void Remove(const wchar_t* name) { EXPECT_TRUE(DeleteFileW(folder.FilePath(name).c_str())); }
    GroupBytes Files() const { return {Index(), Log()}; }
    bool HasTemporaries() const { return folder.Has(L"fj.test.id~") || folder.Has(L"fj.test.lo~"); }

    // As the program does it for each group.
    void StartUp() {
        GroupStore started;
        EXPECT_TRUE(SetNames(started, folder.Path().c_str(), L"fj.test"));
        FinishDeletion(started);
        (void)BringUpToDate(started);
    }
};

TEST_F(DeleteReadTest, LeavesTheUnreadArticles) {
    struct Row {
        const char* sentence;
        std::vector<Article> articles;
    };
    const Row rows[] = {
        {"an empty group", {}},
        {"nothing read", {{"one"}, {"two", 4}, {"three", 2}}},
        {"everything read", {{"one", 1}, {"two", 5}, {"three", 3}}},
        {"the first and the last read", {{"one", 1}, {"two"}, {"three", 1}}},
        {"all priorities, articles longer than any buffer", kMixed},
        {"bytes of no article between", {{"one", 0, "dead"}, {"two", 1, "dead"}, {"three", 2, kLong}}},
        {"an article without a byte", {{""}, {"one", 1}, {"two", 4}}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.sentence);
        Write(FilesOf(row.articles, false));
        EXPECT_TRUE(DeleteRead(store));
        EXPECT_TRUE(Files() == FilesOf(row.articles, true));
        EXPECT_FALSE(HasTemporaries());
    }
}

TEST_F(DeleteReadTest, AFailureLeavesTheOldFiles) {
    GroupBytes outside = FilesOf({{"one"}, {"two", 1}}, false), wraps = outside, counted = outside;
    outside.log.pop_back();
    outside.index.replace(100 + 92 + 0, 4, Word(0));  // the one that ends outside is unread
    wraps.index.replace(100 + 8, 8, Word(0xFFFFFFF0) + Word(0x20));
    counted.index.replace(16, 4, Word(3));
    const GroupBytes good = FilesOf(kMixed, false);
    struct Row {
        const char* sentence;
        GroupBytes files;
        const wchar_t* blocked;  // a folder stands where this file is to be made
        DWORD error;
    };
    const Row rows[] = {
        {"an article that ends outside the log", outside, nullptr, 13},
        {"an extent that wraps round", wraps, nullptr, 13},
        {"a header that counts more records than there are", counted, nullptr, 13},
        {"an index of an older version", {Bytes(HeaderBytes{4}) + Padded("", 8), "log"}, nullptr, 13},
        {"a new index that cannot be made", good, L"fj.test.id~", ERROR_ACCESS_DENIED},
        {"a new log that cannot be made", good, L"fj.test.lo~", ERROR_ACCESS_DENIED},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.sentence);
        Write(row.files);
        if (row.blocked) CreateDirectoryW(folder.FilePath(row.blocked).c_str(), nullptr);
        SetLastError(0);
        EXPECT_FALSE(DeleteRead(store));
        EXPECT_EQ(GetLastError(), row.error);
        if (row.blocked) EXPECT_TRUE(RemoveDirectoryW(folder.FilePath(row.blocked).c_str()));
        EXPECT_TRUE(Files() == row.files);
        EXPECT_FALSE(HasTemporaries());
    }
    Remove(L"fj.test.log");
    EXPECT_FALSE(DeleteRead(store)) << "a missing log";
    EXPECT_EQ(GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(Index(), good.index);
    EXPECT_FALSE(folder.Has(L"fj.test.log") || HasTemporaries());
    folder.Write(L"fj.test.lo~", good.log);
    EXPECT_FALSE(DeleteRead(store)) << "the log's rename has failed and a start-up has yet to repeat it";
    EXPECT_TRUE(folder.Read(L"fj.test.lo~") == good.log) << "the only copy of the articles";
}

// The `at`-th call to the system fails; so do, when the process ends there, all behind it.
struct Fault {
    int at = 0;
    bool endsProcess = false;
    int calls = 0;
};
Fault fault;

DWORD FailAtFault(FileCall) {
    ++fault.calls;
    const bool fails = fault.endsProcess ? fault.calls >= fault.at : fault.calls == fault.at;
    return fails ? ERROR_IO_DEVICE : 0;
}

// False when `operation` ended before its `at`-th call.
bool RunWithFault(int at, bool endsProcess, const std::function<void()>& operation) {
    fault = {at, endsProcess, 0};
    SetFileFault(FailAtFault);
    operation();
    SetFileFault(nullptr);
    return fault.calls >= at;
}

class CutOffTest : public DeleteReadTest {
  protected:
    // The deletion with a fault, and what it answered.
    bool Delete(const GroupBytes& before, int at, bool endsProcess, bool& hit) {
        bool done = false;
        Write(before);
        hit = RunWithFault(at, endsProcess, [&] { done = DeleteRead(store); });
        return done;
    }

    void ExpectOldOrNew(const std::vector<Article>& articles, bool mustBeNew) {
        const bool isNew = Files() == FilesOf(articles, true);
        EXPECT_TRUE(isNew || (!mustBeNew && Files() == FilesOf(articles, false)));
        EXPECT_FALSE(HasTemporaries());
        finished_ += isNew;
    }

    int finished_ = 0;  // runs that a start-up brought to their end
};

const std::vector<Article> kGroups[] = {
    kMixed, {{"one", 1}, {"two", 3}}, {{"one"}, {"two", 4}}, {{"one", 1, "dead"}, {"two", 0, "dead"}}, {}};

TEST_F(CutOffTest, AStartUpFinishesOrForgetsIt) {
    for (const std::vector<Article>& articles : kGroups) {
        for (const bool endsProcess : {true, false}) {
            bool hit = true;
            for (int at = 1; hit && at < kMostFaults; ++at) {
                SCOPED_TRACE(testing::Message() << "call " << at << (endsProcess ? " and all behind" : ""));
                const bool done = Delete(FilesOf(articles, false), at, endsProcess, hit);
                StartUp();
                ExpectOldOrNew(articles, done);
                if (HasFailure()) return;
            }
            EXPECT_FALSE(hit);
        }
    }
    EXPECT_GT(finished_, 20);
}

// The next start-up must find its way when the one before it was cut off, or failed, as well.
TEST_F(CutOffTest, ASecondStartUpFinishesTheFirst) {
    for (const std::vector<Article>& articles : kGroups) {
        bool hit = true;
        for (int at = 1; hit && at < kMostFaults; ++at) {
            for (const bool endsProcess : {true, false}) {
                bool hitStart = true;
                for (int atStart = 1; hitStart && atStart < kMostFaults; ++atStart) {
                    SCOPED_TRACE(testing::Message()
                                 << "call " << at << ", start-up's " << atStart << endsProcess);
                    const bool done = Delete(FilesOf(articles, false), at, true, hit);
                    hitStart = RunWithFault(atStart, endsProcess, [&] { StartUp(); });
                    StartUp();
                    ExpectOldOrNew(articles, done);
                    if (HasFailure()) return;
                }
            }
        }
    }
    EXPECT_GT(finished_, 20);
}

TEST_F(CutOffTest, OtherTemporaryFilesAreRemoved) {
    const GroupBytes old = FilesOf({{"one"}, {"two", 1}, {"three"}}, false);
    const GroupBytes made = FilesOf({{"one"}, {"two", 1}, {"three"}}, true);
    HeaderBytes two;
    two.recordCount = 2;
    const RecordBytes gap[] = {{0, 1, 0, 3}, {0, 2, 6, 5}}, beyond[] = {{0, 1, 0, 3}, {0, 2, 3, 9}};
    const RecordBytes whole[] = {{0, 1, 0, 3}, {0, 2, 3, 8}};
    HeaderBytes three = two, older = two;
    three.recordCount = 3;
    older.version = 4;
    struct Row {
        const char* sentence;
        std::optional<std::string> index, log;
    };
    const Row rows[] = {
        {"both are whole, but the old log is still there", made.index, made.log},
        {"cut off before the first byte", "", ""},
        {"cut off before the new log was made", old.index.substr(0, 100), std::nullopt},
        {"cut off behind the first header", old.index.substr(0, 100), ""},
        {"a log alone", std::nullopt, "old"},
        {"an index that ends elsewhere than the log", made.index, std::nullopt},
        {"a count that is too high", Bytes(three) + Bytes(whole[0]) + Bytes(whole[1]), std::nullopt},
        {"a record cut off", Bytes(two) + Bytes(whole[0]) + Bytes(whole[1]).substr(1), std::nullopt},
        {"an older version", Bytes(older) + Padded("", 8) + Bytes(whole[0]) + Bytes(whole[1]), std::nullopt},
        {"articles with a gap between", Bytes(two) + Bytes(gap[0]) + Bytes(gap[1]), std::nullopt},
        {"an article beyond the log's end", Bytes(two) + Bytes(beyond[0]) + Bytes(beyond[1]), std::nullopt},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.sentence);
        Write(old);
        if (row.index) folder.Write(L"fj.test.id~", *row.index);
        if (row.log) folder.Write(L"fj.test.lo~", *row.log);
        StartUp();
        EXPECT_TRUE(Files() == old);
        EXPECT_FALSE(HasTemporaries());
    }
}

}  // namespace
