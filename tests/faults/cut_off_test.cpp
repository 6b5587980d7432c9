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

TEST_F(CutOffTest, ALogThatIsOnlyThereUnderItsTemporaryNameStays) {
    const struct {
        const char* sentence;
        const char* newIndex;
    } rows[] = {{"the new index is lost", nullptr}, {"the new index is damaged", "\5\0\0\0"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sentence);
        WriteIndex(Bytes(HeaderBytes()));
        folder.Write(L"fj.test.lo~", kArticle);
        if (row.newIndex) folder.Write(L"fj.test.id~", row.newIndex);
        EXPECT_FALSE(StartUp());
        EXPECT_EQ(GetLastError(), 13u);
        EXPECT_FALSE(ReadHeader(store)) << "or a download would make an empty log beside it";
        EXPECT_FALSE(DeleteRead(store));
        EXPECT_EQ(folder.Read(L"fj.test.lo~"), kArticle);
        EXPECT_FALSE(folder.Has(L"fj.test.log"));
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
