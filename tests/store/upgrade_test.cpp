// Indexes of older versions, made by hand, become version 5.
#include "store/index.h"
#include "store/upgrade.h"
#include "tests/store/group_files.h"

namespace {

const std::string kFirst =
    "From: a@b.jp (Taro)\r\nSubject: one\r\nDate: 5 Mar 1998\r\nX-Local-Seq: "
    "7\r\n\r\nx\r\n================\r\n";
const std::string kSecond = "Subject: two\r\nX-Local-Seq: 8\r\n\r\n================\r\n";
const auto kFirstSize = static_cast<uint32_t>(kFirst.size());
const auto kSecondSize = static_cast<uint32_t>(kSecond.size());

// Flags and number differ from what a rebuild would give.
const std::vector<RecordBytes> kConverted = {
    {5, 70, 0, kFirstSize, "one", "0305", "Taro", 21 + 9, 3},
    {2, 80, kFirstSize, kSecondSize, "two", "0000", "(Unknown)", kFirstSize + 9, 3},
};

std::string OldIndex(uint32_t version) {
    if (version == 1) return "9\r\n2\r\n12\r\n3\r\n";
    HeaderBytes header{version, 9, 12, 3, 2, 1, "2", 1};
    std::string bytes = Bytes(header);
    for (const RecordBytes& record : kConverted)
        bytes +=
            version == 4 ? Bytes(record).substr(0, 84) : Bytes(record).substr(0, 16) + std::string(48, '#');
    return bytes;
}

std::string NewIndex(uint32_t version) {
    if (version != 1) return IndexBytes({5, 9, 12, 3, 2, 1, "2", 1, 1, 1}, kConverted);
    std::vector<RecordBytes> rebuilt = kConverted;
    rebuilt[0].flags = rebuilt[1].flags = 0;
    rebuilt[0].number = 7;
    rebuilt[1].number = 8;
    return IndexBytes({5, 9, 12, 3, 2, 0, "2", 2, 0, 0}, rebuilt);
}

class UpgradeTest : public GroupTest {};

TEST_F(UpgradeTest, EveryVersionBecomesFive) {
    WriteLog(kFirst + kSecond);
    for (uint32_t version = 1; version <= 4; ++version) {
        WriteIndex(OldIndex(version));
        folder.Write(L"fj.test.idx~", std::string(1000, 'x'));  // left by a run that was ended
        EXPECT_EQ(BringUpToDate(store), IndexState::kReady) << "version " << version;
        EXPECT_EQ(Index(), NewIndex(version)) << "version " << version;
        EXPECT_FALSE(folder.Has(L"fj.test.idx~")) << "version " << version;
        EXPECT_EQ(BringUpToDate(store), IndexState::kReady) << "version " << version;
        EXPECT_EQ(Index(), NewIndex(version)) << "version 5 is left alone";
    }
}

// It will be so at each start: the articles before it are there from the second on.
TEST_F(UpgradeTest, AnOverlongLineDoesNotKeepATextIndexForEver) {
    WriteLog(kFirst + "\r\n" + std::string(2000, 'x') + "\r\n");
    WriteIndex(OldIndex(1));
    EXPECT_EQ(BringUpToDate(store), IndexState::kFailed);
    EXPECT_EQ(GetLastError(), 234u);
    EXPECT_EQ(BringUpToDate(store), IndexState::kReady);
    ASSERT_TRUE(ReadHeader(store));
    EXPECT_EQ(store.header.recordCount, 1u);
    EXPECT_EQ(store.header.lastFetched, 9u);
}

TEST_F(UpgradeTest, AnOverlongLineCostsAnOldIndexNothing) {
    WriteLog(kFirst + "\r\n" + std::string(2000, 'x') + "\r\n");
    for (uint32_t version = 2; version <= 4; ++version) {
        WriteIndex(OldIndex(version));
        for (int start = 1; start <= 2; ++start) {
            EXPECT_EQ(BringUpToDate(store), IndexState::kFailed) << "version " << version;
            EXPECT_EQ(GetLastError(), 234u) << "version " << version;
            EXPECT_EQ(Index(), OldIndex(version == 2 ? 3 : version)) << "version " << version;
        }
    }
}

TEST_F(UpgradeTest, RecordsKeepTheHeadThatTheyHave) {
    WriteLog(kFirst);
    std::vector<RecordBytes> records = {{0, 7, 0, kFirstSize, "kept", "1231", "me"}, {0, 8, 500, 50}};
    std::string old = Bytes(HeaderBytes{4, 0, 0, 0, 2, 0, "", 2});
    for (const RecordBytes& record : records)
        old += Bytes(record).substr(0, 84);
    WriteIndex(old);
    ASSERT_EQ(BringUpToDate(store), IndexState::kReady);
    records[0].textOffset = 21 + 9;
    records[0].textLength = 3;
    records[1].textOffset = 500;  // the log has no second article
    EXPECT_EQ(Index(), IndexBytes({5, 0, 0, 0, 2, 0, "", 2}, records));
}

TEST_F(UpgradeTest, TheFirstWordDecides) {
    const struct {
        const char* why;
        std::string bytes;
        IndexState state;
        std::string after;
    } rows[] = {
        {"version 0", Word(0), IndexState::kUnknownVersion, Word(0)},
        {"version 6", Word(6), IndexState::kUnknownVersion, Word(6)},
        {"500 is a version", Word(500), IndexState::kUnknownVersion, Word(500)},
        {"501 is a text", Word(501), IndexState::kReady, Bytes(HeaderBytes())},
        {"a text header with nothing but a number", "12\r\n", IndexState::kReady, Bytes(HeaderBytes{5, 12})},
        {"an empty file", "", IndexState::kFailed, ""},
        {"three bytes", "1\r\n", IndexState::kFailed, "1\r\n"},
    };
    for (const auto& row : rows) {
        WriteIndex(row.bytes);
        EXPECT_EQ(BringUpToDate(store), row.state) << row.why;
        if (row.state != IndexState::kReady) EXPECT_EQ(GetLastError(), 13u) << row.why;
        EXPECT_EQ(Index(), row.after) << row.why;
    }
    DeleteFileW(store.indexPath.get());
    DeleteFileW(store.logPath.get());
    store.header.lastFetched = 77;
    EXPECT_EQ(BringUpToDate(store), IndexState::kReady);
    EXPECT_EQ(Index(), Bytes(HeaderBytes())) << "neither index nor log";
    WriteLog(kFirst);
    DeleteFileW(store.indexPath.get());
    EXPECT_EQ(BringUpToDate(store), IndexState::kReady);
    EXPECT_EQ(Index().size(), 100u + 92) << "only a log";
}

TEST_F(UpgradeTest, ANewIndexThatWasNeverFinishedIsNone) {
    WriteLog(kFirst + kSecond);
    folder.Write(L"fj.test.idx~", NewIndex(4).substr(0, 150));
    EXPECT_EQ(BringUpToDate(store), IndexState::kReady);
    EXPECT_FALSE(folder.Has(L"fj.test.idx~"));
    EXPECT_EQ(Index().size(), NewIndex(4).size()) << "what the log holds counts";
}

}  // namespace
