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

TEST_F(GroupTest, PathsComeFromFolderAndName) {
    EXPECT_EQ(store.indexPath.get(), folder.FilePath(L"fj.test.idx"));
    EXPECT_EQ(store.logPath.get(), folder.FilePath(L"fj.test.log"));
    EXPECT_EQ(store.filterPath.get(), folder.FilePath(L"fj.test.flt"));
    for (const wchar_t* bad :
         {L"", L".", L"..", L"a\\b", L"a/b", L"c:d", L"*", L"a?", L"\"", L"<", L">", L"|", L"a\n"}) {
        EXPECT_FALSE(SetNames(store, folder.Path().c_str(), bad)) << bad;
        EXPECT_EQ(GetLastError(), 87u) << bad;
    }
    EXPECT_FALSE(OpenIndex(store));
    EXPECT_EQ(GetLastError(), 87u) << "the names before are gone";
}

TEST_F(GroupTest, NamesAndResetClearWhatWasRead) {
    store.lastFetched = store.serverLast = store.reserved = store.recordCount = 1;
    store.savedPosition = store.unreadCount = store.highCount = store.lowCount = 1;
    ASSERT_TRUE(SetStatusText(store, L"x") && OpenIndex(store));
    ASSERT_TRUE(SetNames(store, folder.Path().c_str(), L"fj.other"));
    EXPECT_EQ(store.lastFetched + store.serverLast + store.unreadCount, 0u);
    EXPECT_EQ(store.reserved + store.recordCount + store.savedPosition + store.highCount + store.lowCount,
              5u);
    Reset(store);
    EXPECT_EQ(store.reserved + store.recordCount + store.savedPosition + store.highCount + store.lowCount,
              0u);
    EXPECT_STREQ(StatusText(store), L"");
    EXPECT_FALSE(IsOpen(store.index));
    EXPECT_TRUE(store.indexPath) << "the paths stay";
}

}  // namespace
