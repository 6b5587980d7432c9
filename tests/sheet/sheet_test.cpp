// The two pages that a later version adds to the sheet.
#include <gtest/gtest.h>

#include "resources/resource.h"
#include "sheet/settings_sheet.h"
#include "tests/support/ui_thread.h"
#include "text/convert.h"
#include "text/messages.h"

namespace {

TEST(Sheet, TheUserAndPostingPages) {
    const HINSTANCE instance = GetModuleHandleW(nullptr);
    SetResourceInstance(instance);
    InitCommonControls();
    Settings settings;
    settings.Organization = CopyText("old");
    const UiThread thread([&]() -> INT_PTR {
        SettingsPages pages;
        if (!MakeSettingsPages(pages, settings, instance)) return -1;
        return RunPropertySheet(pages, kShownPageCount, kPageCount - kShownPageCount, instance, nullptr);
    });
    const HWND sheet = thread.Window(L"プロパティ");
    const auto turn = [sheet](WPARAM page) {
        SendMessageW(sheet, PSM_SETCURSEL, page, 0);
        return reinterpret_cast<HWND>(SendMessageW(sheet, PSM_GETCURRENTPAGEHWND, 0, 0));
    };
    const HWND user = turn(0);
    EXPECT_EQ(TextOf(GetDlgItem(user, IDC_ORGANIZATION)), L"old");
    Type(user, IDC_USER_NAME, L"山田 太郎");
    Type(user, IDC_MAIL_ADDRESS, L"taro@a.jp");
    Type(user, IDC_ORGANIZATION, L"");
    Type(turn(1), IDC_EDITOR_PATH, L"\\" + std::wstring(300, L'e'));
    PostMessageW(sheet, PSM_PRESSBUTTON, PSBTN_OK, 0);
    EXPECT_EQ(thread.Result(), 1);
    EXPECT_EQ(settings.EditorPath.get(), L"\\" + std::wstring(300, L'e'));
    EXPECT_STREQ(settings.UserName.get(), "\x8E\x52\x93\x63 \x91\xBE\x98\x59");
    EXPECT_STREQ(settings.MailAddress.get(), "taro@a.jp");
    EXPECT_FALSE(settings.Organization);
}

}  // namespace
