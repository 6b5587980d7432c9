// The two pages that a later version adds to the sheet.
#include "tests/sheet/sheet_run.h"

namespace {

TEST_F(SheetTest, TheUserAndPostingPages) {
    Store();
    Settings settings = Stored();
    settings.Organization = CopyText("old");
    const SheetRun run([&settings]() -> INT_PTR {
        SettingsPages pages;
        const HINSTANCE instance = GetModuleHandleW(nullptr);
        if (!MakeSettingsPages(pages, settings, instance)) return -1;
        return RunPropertySheet(pages, kShownPageCount, kPageCount - kShownPageCount, instance, nullptr);
    });
    EXPECT_EQ(TextOf(GetDlgItem(run.Current(), IDC_ORGANIZATION)), L"old");
    Type(run.Current(), IDC_USER_NAME, L"山田 太郎");
    Type(run.Current(), IDC_MAIL_ADDRESS, L"taro@a.jp");
    Type(run.Current(), IDC_ORGANIZATION, L"");
    Type(run.Turn(1), IDC_EDITOR_PATH, L"\\" + std::wstring(300, L'e'));
    EXPECT_EQ(run.Close(PSBTN_OK), 1);
    EXPECT_EQ(settings.EditorPath.get(), L"\\" + std::wstring(300, L'e'));
    EXPECT_STREQ(settings.UserName.get(), "\x8E\x52\x93\x63 \x91\xBE\x98\x59");
    EXPECT_STREQ(settings.MailAddress.get(), "taro@a.jp");
    EXPECT_FALSE(settings.Organization);
}

}  // namespace
