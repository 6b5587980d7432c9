// The log and the index that names its articles, compared byte for byte with what belongs into them.
#include <functional>

#include "store/article_list.h"
#include "store/article_writer.h"
#include "store/delete_read.h"
#include "store/group_changes.h"
#include "store/index.h"
#include "store/log.h"
#include "tests/store/group_files.h"
#include "text/convert.h"

namespace {

struct Sample {
    uint32_t number;
    std::vector<std::string> head;
    std::vector<std::string> body;
    std::string stored;
};

const Sample kSamples[] = {
    {7,
     {"From: \"Taro\" <t@a.jp>\r\n", "Subject: Re: fj\r\n", "Date: Thu, 5 Mar 1998 10:00:00 +0900\r\n"},
     {"Hello\r\n", ".\r\n", "=================\r\n"},
     "From: \"Taro\" <t@a.jp>\r\nSubject: Re: fj\r\nDate: Thu, 5 Mar 1998 10:00:00 +0900\r\n"
     "X-Local-Seq: 7\r\n\r\nHello\r\n.\r\n=================\r\n================\r\n"},
    {4294967294u,
     {"Subject: \x93\xFA\x96{\r\n", "\t sale\r\n", "From: h@a.jp (\x89\xD4zz)\r\n"},
     {"\r\n"},
     "Subject: \x93\xFA\x96{sale\r\nFrom: h@a.jp (\x89\xD4zz)\r\nX-Local-Seq: 4294967294\r\n\r\n\r\n"
     "================\r\n"},
    {0, {"Newsgroups: fj.test\r\n"}, {}, "Newsgroups: fj.test\r\nX-Local-Seq: 0\r\n\r\n================\r\n"},
};

class LogIndexTest : public GroupTest {
  protected:
    bool Append(ArticleWriter& writer, const Sample& sample) {
        if (!BeginArticle(writer, sample.number)) return false;
        for (const std::string& line : sample.head)
            if (!AddHeaderLine(writer.head, line)) return false;
        if (!FinishHead(writer)) return false;
        for (const std::string& line : sample.body)
            if (!WriteBodyLine(writer, line)) return false;
        return FinishBody(writer) && FinishArticle(writer);
    }

    bool AppendAll() {
        ArticleWriter writer;
        writer.store = &store;
        bool done = OpenIndex(store) && OpenLog(store);
        for (const Sample& sample : kSamples)
            done = done && Append(writer, sample);
        return done;
    }

    void CloseBoth() {
        CloseDataFile(store.index);
        CloseDataFile(store.log);
    }

    // The samples' records under "+ fj" and "- sale".
    std::vector<RecordBytes> Records() const {
        const auto first = static_cast<uint32_t>(kSamples[0].stored.size());
        const auto second = static_cast<uint32_t>(kSamples[1].stored.size());
        const auto third = static_cast<uint32_t>(kSamples[2].stored.size());
        return {
            {4, 7, 0, first, "Re: fj", "0305", "Taro", 23 + 9, 6},
            {2, 4294967294u, first, second, "\x93\xFA\x96{sale", "0000", "\x89\xD4zz", first + 9, 8},
            {4, 0, first + second, third, "(none)", "0000", "(Unknown)", first + second, 0},
        };
    }

    void StoreSamples() {
        WriteFilter("+ fj\r\n- sale\r\n");
        ASSERT_TRUE(AppendAll());
        CloseBoth();
        ASSERT_TRUE(WriteHeader(store));
    }
};

const std::string kThreeArticles = kSamples[0].stored + kSamples[1].stored + kSamples[2].stored;

TEST_F(LogIndexTest, ArticlesAreAppendedByteForByte) {
    WriteFilter("+ fj\r\n- sale\r\n");
    store.header.lastFetched = 7;
    store.header.serverLast = 9;
    store.header.reserved = 0x01020304;
    ASSERT_TRUE(SetStatusText(store, L"3"));
    ASSERT_TRUE(AppendAll());
    {
        const FileCalls writes(FileCall::kWrite);
        CloseBoth();
        EXPECT_EQ(writes.Count(), 0) << "a finished article is on disk, whatever happens to the next";
    }
    EXPECT_EQ(Log(), kThreeArticles);
    ASSERT_TRUE(WriteHeader(store));
    EXPECT_EQ(Index(), IndexBytes({5, 7, 9, 0x01020304, 3, 0, "3", 3, 2, 1}, Records()));
}

TEST_F(LogIndexTest, RebuildingGivesTheSameRecords) {
    StoreSamples();
    const std::string original = Index();
    WriteIndex(Padded("damaged", 150));
    store.header.recordCount = 77;
    ASSERT_TRUE(RebuildFromLog(store));
    EXPECT_EQ(Index(), original);
    WriteFilter("+ Re: fj.comp\r\n");
    WriteLog(kSamples[0].stored);
    ASSERT_TRUE(RebuildFromLog(store));
    EXPECT_EQ(store.header.highCount, 0u) << "the keyword does not hold the subject and its line end";
}

TEST_F(LogIndexTest, ScanningTakesLogsAsTheyAre) {
    const std::string whole = kSamples[0].stored;
    const std::string x1021(1021, 'x');
    const struct {
        const char* why;
        std::string tail;  // behind a whole article
        DWORD error;
        uint32_t records;
    } rows[] = {
        {"torn in a header line", "From: a", 0, 1},
        {"torn in the separator", "From: a\r\n\r\nbody\r\n================", 0, 1},
        {"a separator with text behind it is body", "\r\n================ \r\n================\r\n", 0, 2},
        {"a body line like the separator splits the article",
         "From: a\r\n\r\n================\r\nrest\r\n\r\n================\r\n", 0, 3},
        {"a body line of 1023 bytes", "\r\n" + x1021 + "\r\n================\r\n", 0, 2},
        {"a body line of 1024 bytes", "\r\nx" + x1021 + "\r\n================\r\n", 234, 1},
        {"a header line of 1024 bytes", "x" + x1021 + "\r\n\r\n================\r\n", 234, 1},
    };
    for (const auto& row : rows) {
        WriteLog(whole + row.tail);
        SetLastError(0);
        EXPECT_EQ(RebuildFromLog(store), row.error == 0) << row.why;
        if (row.error) EXPECT_EQ(GetLastError(), row.error) << row.why;
        EXPECT_EQ(store.header.recordCount, row.records) << row.why;
        EXPECT_EQ(Index().substr(0, 100), Bytes(HeaderBytes{5, 0, 0, 0, row.records, 0, "", row.records}))
            << row.why;
    }
}

TEST_F(LogIndexTest, StatusTextsAreCutBetweenCharacters) {
    if (TextCodePage() != 932) GTEST_SKIP() << "code page 932 is not installed";
    std::string cut;
    for (int i = 0; i < 31; ++i)
        cut += "\x93\xFA";
    ASSERT_TRUE(SetStatusText(store, std::wstring(32, L'\u65E5').c_str()) && WriteHeader(store));
    EXPECT_EQ(Index().substr(24, 64), Padded(cut, 64));
}

TEST_F(LogIndexTest, RecordsAreReadWithinBounds) {
    WriteIndex(IndexBytes({5, 0, 0, 0, 2}, std::vector<RecordBytes>(3)));  // one more than is counted
    ASSERT_TRUE(ReadHeader(store));
    IndexRecord records[5];
    uint32_t count = 5;
    EXPECT_TRUE(ReadRecords(store, records, 1, count));
    EXPECT_EQ(count, 1u);
    EXPECT_FALSE(ReadRecord(store, records[0], 2));
    EXPECT_EQ(GetLastError(), 87u);
    store.header.recordCount = count = 5;  // as damage may have it
    EXPECT_TRUE(ReadRecords(store, records, 1, count));
    EXPECT_EQ(count, 2u);
}

TEST_F(LogIndexTest, ArticlesAreReadWithinTheLog) {
    WriteLog("abc\r\ndef\r\n");
    EXPECT_STREQ(ReadArticle(store, 5, 5).get(), L"def\r\n");
    EXPECT_EQ(ReadArticle(store, 5, 6), nullptr) << "a byte too many";
    EXPECT_EQ(GetLastError(), 13u);
}

// Text from elsewhere would be proposed as a keyword, or matched for its article.
TEST_F(LogIndexTest, ASubjectIsReadWithinItsArticle) {
    WriteLog("abc\r\ndef\r\n");
    const struct {
        const char* why;
        uint32_t length, textOffset, textLength;  // of the article at 2
        const wchar_t* text;
    } rows[] = {
        {"inside", 6, 3, 2, L"\r\n"},
        {"up to the article's end", 6, 5, 3, L"def"},
        {"no subject", 6, 2, 0, L""},
        {"a byte behind the end", 6, 5, 4, nullptr},
        {"before the article", 6, 1, 3, nullptr},
        {"behind it", 6, 9, 0, nullptr},
        {"a length that runs over", 6, 5, 0u - 2, nullptr},
        {"an article that is longer than its log", 20, 5, 6, nullptr},
        {"one that runs over", 0u - 1, 1, 0, nullptr},
    };
    for (const auto& row : rows) {
        IndexRecord record;
        record.logOffset = 2;
        record.logLength = row.length;
        record.subjectTextOffset = row.textOffset;
        record.subjectTextLength = row.textLength;
        SetLastError(0);
        EXPECT_STREQ(ReadSubjectText(store, record).get(), row.text) << row.why;
        EXPECT_EQ(GetLastError(), row.text ? 0u : 13u) << row.why;
    }
}

TEST_F(LogIndexTest, PrioritiesFollowTheFilter) {
    const struct {
        const char* why;
        const char* filter;
        uint32_t flags[3];
        uint32_t high;
        uint32_t low;
        int writes;
    } rows[] = {
        {"the other way round", "+ sale\r\n- fj\r\n", {3, 4, 4}, 2, 1, 2},
        {"the same again: only the header", "+ sale\r\n- fj\r\n", {3, 4, 4}, 2, 1, 1},
        {"a keyword longer than the subject", "- Re: fj.comp\r\n", {3, 0, 2}, 0, 2, 2},
        {"an empty keyword matches all", "+ \r\n", {5, 4, 4}, 3, 0, 2},
        {"back", "+ fj\r\n- sale\r\n", {5, 2, 4}, 2, 1, 2},
    };
    StoreSamples();
    IndexRecord record;
    ASSERT_TRUE(ReadRecord(store, record, 0));
    record.flags |= kReadFlag;
    ASSERT_TRUE(WriteRecord(store, record, 0));
    std::vector<RecordBytes> records = Records();
    for (const auto& row : rows) {
        WriteFilter(row.filter);
        const FileCalls writes(FileCall::kWrite);
        EXPECT_TRUE(Refilter(store)) << row.why;
        for (int i = 0; i < 3; ++i)
            records[static_cast<std::size_t>(i)].flags = row.flags[i];
        EXPECT_EQ(Index(), IndexBytes({5, 0, 0, 0, 3, 0, "", 3, row.high, row.low}, records)) << row.why;
        EXPECT_EQ(writes.Count(), row.writes) << row.why;
    }
}

TEST_F(LogIndexTest, AnUnknownSubjectKeepsItsPriority) {
    StoreSamples();
    std::vector<RecordBytes> records = Records();
    records[0].textOffset = records[0].length;
    records[1].textOffset = 3;
    records[1].textLength = 0;
    WriteIndex(IndexBytes({5, 0, 0, 0, 3, 0, "", 3, 2, 1}, records));
    WriteFilter("- zzz\r\n");
    EXPECT_TRUE(Refilter(store));
    records[2].flags = 2;  // it has none, and an empty text matches
    EXPECT_EQ(Index(), IndexBytes({5, 0, 0, 0, 3, 0, "", 3, 1, 2}, records));
}

TEST_F(LogIndexTest, CatchUpMarksEveryRecord) {
    StoreSamples();
    ASSERT_TRUE(MarkAllRead(store));
    std::vector<RecordBytes> records = Records();
    for (RecordBytes& record : records)
        record.flags |= 1;
    EXPECT_EQ(Index(), IndexBytes({5, 0, 0, 0, 3, 0, "", 0, 2, 1}, records));
    WriteIndex(Bytes(HeaderBytes{5, 1, 2, 3, 0, 0, "", 9}));
    ASSERT_TRUE(MarkAllRead(store));
    EXPECT_EQ(Index(), Bytes(HeaderBytes{5, 1, 2, 3})) << "no records: only the header";
}

// More records than the file's buffer holds: what is lost with it was counted already. The last call writes
// the header itself.
TEST_F(LogIndexTest, CountsAreThoseOnDiskAfterAWriteThatFailed) {
    WriteLog("");
    WriteFilter("+ \r\n");  // matches everything
    bool (*const changes[])(GroupStore&) = {MarkAllRead, Refilter};
    for (bool (*change)(GroupStore&) : changes) {
        int calls = 100;
        for (int fault = 0; fault < calls; ++fault) {
            WriteIndex(IndexBytes({5, 0, 0, 0, 400, 0, "", 400}, std::vector<RecordBytes>(400)));
            {
                const FileCalls made(FileCall::kAny, ERROR_IO_DEVICE, fault);
                EXPECT_TRUE(change(store) || fault > 0);
                if (fault == 0) calls = made.Count();
            }
            RecordCounts counts;
            ASSERT_TRUE(ReadHeader(store) &&
                        VisitRecords(store, [&](const IndexRecord* records, uint32_t, uint32_t count) {
                            for (uint32_t i = 0; i < count; ++i)
                                CountRecord(counts, records[i]);
                            return true;
                        }));
            EXPECT_EQ(store.header.unreadCount, counts.unreadCount) << "call " << fault;
            EXPECT_EQ(store.header.highCount, counts.highCount) << "call " << fault;
        }
    }
}

// Whoever wrote by such a count would leave a file of gigabytes, or a header that goes on counting wrongly.
TEST_F(LogIndexTest, ACountBeyondTheFileIsWrittenByNobody) {
    const struct {
        const char* what;
        std::function<bool()> operation;
    } rows[] = {{"a run", [this] { return ReadHeader(store) && OpenIndex(store) && RefreshHeader(store); }},
                {"catch-up of the stored articles", [this] { return MarkAllRead(store); }},
                {"catch-up on the server", [this] { return ReadHeader(store) && WriteHeader(store); }},
                {"new keywords", [this] { return Refilter(store); }},
                {"deletion", [this] { return DeleteRead(store); }},
                {"a list that closes", [this] {
                     ArticleList list;
                     return OpenArticleList(list, folder.Path().c_str(), L"fj.test") &&
                            CloseArticleList(list);
                 }}};
    WriteLog("");
    for (const auto& row : rows) {
        for (const uint32_t count : {2u, 4u, 0x02000003u, 0xFFFFFFFFu}) {
            const std::string bytes = IndexBytes({5, 0, 0, 0, count, 0, "", 4, 9, 9}, {{5}, {3}, {1}});
            WriteIndex(bytes);
            const bool done = row.operation();
            const DWORD error = GetLastError();
            CloseBoth();
            EXPECT_EQ(done, count == 2) << row.what << " " << count;
            if (count == 2) continue;
            EXPECT_EQ(error, 13u) << row.what << " " << count;
            EXPECT_EQ(Index(), bytes) << row.what << " " << count;
        }
    }
}

}  // namespace
