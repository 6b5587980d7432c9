// The two pages that a later version adds to the sheet.
#include <gtest/gtest.h>

#include "resources/resource.h"
#include "sheet/settings_sheet.h"
#include "text/convert.h"
#include "text/messages.h"

namespace {

const std::wstring kEditor = L"\\" + std::wstring(300, L'e');
std::wstring shownOrganization;

// Plays the user from inside the sheet's own loop.
void CALLBACK FillIn(HWND, UINT, UINT_PTR timer, DWORD) {
    const HWND sheet = FindWindowW(nullptr, L"プロパティ");
    if (!sheet || !IsWindowVisible(sheet)) return;
    KillTimer(nullptr, timer);
    const auto page = [sheet](WPARAM number) {
        SendMessageW(sheet, PSM_SETCURSEL, number, 0);
        return reinterpret_cast<HWND>(SendMessageW(sheet, PSM_GETCURRENTPAGEHWND, 0, 0));
    };
    const HWND user = page(0);
    wchar_t text[32] = {};
    GetDlgItemTextW(user, IDC_ORGANIZATION, text, 32);
    shownOrganization = text;
    SetDlgItemTextW(user, IDC_USER_NAME, L"山田 太郎");
    SetDlgItemTextW(user, IDC_MAIL_ADDRESS, L"taro@a.jp");
    SetDlgItemTextW(user, IDC_ORGANIZATION, L"");
    SetDlgItemTextW(page(1), IDC_EDITOR_PATH, kEditor.c_str());
    PostMessageW(sheet, PSM_PRESSBUTTON, PSBTN_OK, 0);
}

TEST(Sheet, TheUserAndPostingPages) {
    const HINSTANCE instance = GetModuleHandleW(nullptr);
    SetResourceInstance(instance);
    InitCommonControls();
    Settings settings;
    settings.Organization = CopyText("old");
    SettingsPages pages;
    ASSERT_TRUE(MakeSettingsPages(pages, settings, instance));
    SetTimer(nullptr, 0, 20, FillIn);
    EXPECT_EQ(RunPropertySheet(pages, kShownPageCount, kPageCount - kShownPageCount, instance, nullptr), 1);
    EXPECT_EQ(shownOrganization, L"old");
    EXPECT_EQ(settings.EditorPath.get(), kEditor);
    EXPECT_STREQ(settings.UserName.get(), "\x8E\x52\x93\x63 \x91\xBE\x98\x59");
    EXPECT_STREQ(settings.MailAddress.get(), "taro@a.jp");
    EXPECT_FALSE(settings.Organization);
}

}  // namespace
