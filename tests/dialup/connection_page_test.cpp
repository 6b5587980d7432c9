// The connection page over phone books of all kinds.
#include "tests/dialup/fake_ras.h"
#include "tests/sheet/sheet_run.h"

#include <raserror.h>

namespace {

class ConnectionPageTest : public SheetTest {
  protected:
    void SetUp() override {
        ASSERT_TRUE(ras);
        *ras = FakeRas();
    }

    void StoreEntry(const wchar_t* entry, bool dials) {
        Store();
        Settings stored = Stored();
        wcscpy(stored.EntryName, entry);
        stored.Dialup = dials;
        Change(stored);
    }
    void AddNames(const std::vector<std::wstring>& names) {
        for (const std::wstring& name : names)
            wcscpy(ras->names[ras->nameCount++], name.c_str());
    }

    FakeRas* const ras = GetFakeRas();
    Settings settings;
};

TEST_F(ConnectionPageTest, TheStoredEntryIsSelected) {
    AddNames({L"Office", L"`hidden", L"Home", L"日本"});
    StoreEntry(L"Office", true);
    const SheetRun run(settings);
    const HWND page = run.Turn(kConnection);
    EXPECT_EQ(Ask(page, IDC_DIALUP, BM_GETCHECK), BST_CHECKED);
    EXPECT_EQ(Ask(page, IDC_ENTRY_NAME, CB_GETCOUNT), 3);
    EXPECT_EQ(TextOf(GetDlgItem(page, IDC_ENTRY_NAME)), L"Office");
    EXPECT_TRUE(IsOn(page, IDC_ENTRY_NAME));
    run.Select(page, IDC_ENTRY_NAME, 2);
    EXPECT_EQ(TextOf(GetDlgItem(page, IDC_ENTRY_NAME)), L"日本");
    run.Check(page, IDC_DIALUP, false);
    EXPECT_FALSE(IsOn(page, IDC_ENTRY_NAME));
    EXPECT_EQ(run.Close(PSBTN_OK), 1);
    EXPECT_EQ(Stored().Dialup, 0u);
    EXPECT_STREQ(Stored().EntryName, L"日本") << "kept for the day when it is dialled again";
}

TEST_F(ConnectionPageTest, DiallingNeedsAnEntry) {
    const struct {
        const char* why;
        std::vector<std::wstring> names;
        bool dials;
        bool refused;
    } rows[] = {
        {"the entry is gone", {L"Home"}, true, true},
        {"an empty phone book", {}, true, true},
        {"the entry is gone, but not wanted", {L"Home"}, false, false},
    };
    for (const auto& row : rows) {
        *ras = FakeRas();
        AddNames(row.names);
        StoreEntry(L"Away", row.dials);
        const SheetRun run(settings);
        const HWND page = run.Turn(kConnection), list = GetDlgItem(page, IDC_ENTRY_NAME);
        EXPECT_EQ(SendMessageW(list, CB_GETCURSEL, 0, 0), CB_ERR) << row.why;
        EXPECT_EQ(IsOn(page, IDC_ENTRY_NAME), row.dials) << row.why;
        if (row.refused) {
            SendMessageW(run.sheet, PSM_PRESSBUTTON, PSBTN_OK, 0);
            EXPECT_FALSE(run.thread.Ended()) << row.why;
            EXPECT_TRUE(SendMessageW(list, CB_GETDROPPEDSTATE, 0, 0)) << row.why;
            EXPECT_EQ(run.thread.Focus(), list) << row.why;
            SendMessageW(list, CB_SHOWDROPDOWN, FALSE, 0);
            if (row.names.empty()) run.Check(page, IDC_DIALUP, false);
            run.Select(page, IDC_ENTRY_NAME, 0);
        }
        EXPECT_EQ(run.Close(PSBTN_OK), 1) << row.why;
        const bool chosen = row.refused && !row.names.empty();
        EXPECT_EQ(Stored().Dialup, chosen ? 1u : 0u) << row.why;
        EXPECT_STREQ(Stored().EntryName, chosen ? L"Home" : L"") << row.why;
    }
}

TEST_F(ConnectionPageTest, APhoneBookThatFailsTurnsDiallingOff) {
    const struct {
        const char* why;
        DWORD error;
        DWORD names;
    } rows[] = {{"no phone book", ERROR_CANNOT_OPEN_PHONEBOOK, 0},
                {"more entries than there is room", 0, 101}};
    for (const auto& row : rows) {
        ras->listError = row.error;
        ras->nameCount = row.names;
        StoreEntry(L"Office", true);
        const SheetRun run(settings);
        const HWND page = run.Turn(kConnection);
        EXPECT_EQ(Ask(page, IDC_DIALUP, BM_GETCHECK), BST_UNCHECKED) << row.why;
        EXPECT_FALSE(IsOn(page, IDC_DIALUP) || IsOn(page, IDC_ENTRY_NAME)) << row.why;
        EXPECT_TRUE(IsOn(page, IDC_WAIT_TIME)) << row.why;
        EXPECT_EQ(run.Close(PSBTN_OK), 1) << row.why;
        EXPECT_EQ(Stored().Dialup, 0u) << row.why;
    }
}

TEST(MissingLibraryTest, TheConnectionPageTurnsDiallingOff) {
    ASSERT_FALSE(LoadLibraryW(L"rasapi32.dll")) << "the suite must run without it";
    SetResourceInstance(GetModuleHandleW(nullptr));
    const RegistryGuard guard;
    Settings settings;
    const SheetRun run(settings);
    const TempFolder folder;
    Type(run.Current(), IDC_SERVER, L"a");
    Type(run.Current(), IDC_DATA_FOLDER, folder.Path());
    EXPECT_FALSE(IsOn(run.Turn(kConnection), IDC_DIALUP));
    EXPECT_EQ(run.Close(PSBTN_OK), 1);
}

}  // namespace
