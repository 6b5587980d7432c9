#include "store/cut_off_deletion.h"
#include "store/data_folder.h"

#include "tests/store/group_files.h"

namespace {

TEST(DataFolderTest, StartUpMakesWhatIsMissing) {
    TempFolder folder;
    folder.Write(L"group.dat", "fj.test\r\n");
    folder.Write(L"a.bak", "kept");
    for (int start = 1; start <= 2; ++start) {
        EXPECT_TRUE(MakeDraftFolder(folder.Path().c_str())) << "start " << start;
        for (const wchar_t* name : {L"draft\\a.bak", L"draft\\b.BAK", L"draft\\c.txt"})
            folder.Write(name, "x");
        DeleteDraftBackups(folder.Path().c_str());
        EXPECT_TRUE(MakeListFiles(folder.Path().c_str())) << "start " << start;
    }
    EXPECT_FALSE(folder.Has(L"draft\\a.bak") || folder.Has(L"draft\\b.BAK"));
    EXPECT_TRUE(folder.Has(L"draft\\c.txt") && folder.Has(L"a.bak"));
    EXPECT_TRUE(folder.Has(L"active.dat") && folder.Has(L"category.dat"));
    EXPECT_EQ(folder.Read(L"group.dat"), "fj.test\r\n") << "what is there stays";
    const std::wstring missing = folder.FilePath(L"missing\\");
    EXPECT_FALSE(MakeDraftFolder(missing.c_str()));
    EXPECT_EQ(GetLastError(), 3u);
    DeleteDraftBackups(missing.c_str());
    EXPECT_FALSE(MakeListFiles(missing.c_str()));
}

TEST(DataFolderTest, OneListingFindsCutOffDeletions) {
    const struct {
        const wchar_t* name;
        bool counts;
    } rows[] = {{L"fj.test.id~", true},
                {L"fj.test.lo~", true},
                {L"FJ.LO~", true},
                {L"fj.id~.idx", false},
                {L"d~", false}};
    for (const auto& row : rows) {
        TempFolder folder;
        EXPECT_FALSE(MayHoldCutOffDeletion(folder.Path().c_str()));
        for (const wchar_t* other : {L"a.flt~", L"z.idx~"})
            folder.Write(other, "x");
        folder.Write(row.name, "x");
        EXPECT_EQ(MayHoldCutOffDeletion(folder.Path().c_str()), row.counts) << row.name;
    }
    EXPECT_TRUE(MayHoldCutOffDeletion(L"Q:\\missing\\")) << "what cannot be known";
}

}  // namespace
