// A start-up over what earlier runs left: which files may be all that there is of the articles.
#include "store/delete_read.h"
#include "store/index.h"
#include "tests/store/group_files.h"

namespace {

const std::string kArticle = "Subject: one\r\nX-Local-Seq: 7\r\n\r\n================\r\n";

class CutOffTest : public GroupTest {
  protected:
    // As the program does it for each group.
    bool StartUp() { return FinishDeletion(store) && BringUpToDate(store) == IndexState::kReady; }
};

// The old log went, so the new one is whole; both indexes name other places.
TEST_F(CutOffTest, ALogWhoseNewIndexWasDamagedIsIndexedAnew) {
    const struct {
        const char* sentence;
        const char* newIndex;
        const wchar_t* log;
    } rows[] = {{"the new index is lost", nullptr, L"fj.test.lo~"},
                {"the new index is damaged", "\5\0\0\0", L"fj.test.lo~"},
                {"the log has taken its place already", "\5\0\0\0", L"fj.test.log"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sentence);
        HeaderBytes old;
        old.recordCount = 1;
        WriteIndex(Bytes(old) + Bytes(RecordBytes{1, 3, 400, 70}));
        DeleteFileW((folder.Path() + L"fj.test.log").c_str());
        folder.Write(row.log, kArticle);
        if (row.newIndex) folder.Write(L"fj.test.id~", row.newIndex);
        EXPECT_TRUE(StartUp());
        EXPECT_EQ(folder.Read(L"fj.test.log"), kArticle);
        EXPECT_EQ(Index().size(), 100u + 92);
        EXPECT_EQ(Index()[104], 7) << "the article's number";
        EXPECT_FALSE(folder.Has(L"fj.test.lo~") || folder.Has(L"fj.test.id~"));
    }
}

TEST_F(CutOffTest, AnIndexThatIsMissingIsMadeWholeOrNotAtAll) {
    const std::string tooLong = std::string(1022, 'x') + "\r\n";
    WriteLog(kArticle + kArticle + "Subject: three\r\n\r\n" + tooLong);
    folder.Write(L"fj.test.idx~", std::string(250, '\0'));  // a rebuild that was cut off
    EXPECT_FALSE(StartUp());
    EXPECT_EQ(GetLastError(), 234u);
    EXPECT_TRUE(StartUp()) << "what stands before the line must not wait for it";
    EXPECT_EQ(Index().size(), 100u + 2 * 92);
    EXPECT_FALSE(folder.Has(L"fj.test.idx~"));
}

}  // namespace
