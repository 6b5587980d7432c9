#include "resources/resource.h"
#include "sheet/pages.h"
#include "text/convert.h"

namespace {

constexpr int kTextSize = 256;  // UTF-16 units, the terminator included

void Take(HWND dialog, int id, NarrowText& value) {
    wchar_t text[kTextSize] = {};
    GetDlgItemTextW(dialog, id, text, kTextSize);
    NarrowText narrow = ToNarrow(text);
    if (!narrow) return;  // the old text stays
    value = *text != L'\0' ? std::move(narrow) : nullptr;
}

}  // namespace

UserPage::UserPage() : SettingsPage(IDD_PAGE_USER, IDS_PAGE_USER) {}

void UserPage::Init(HWND dialog) {
    shown = ShowNarrow(dialog, IDC_MAIL_ADDRESS, settings->MailAddress) &&
            ShowNarrow(dialog, IDC_USER_NAME, settings->UserName) &&
            ShowNarrow(dialog, IDC_ORGANIZATION, settings->Organization);
}

bool UserPage::Apply(HWND dialog) {
    if (!shown) return true;
    Take(dialog, IDC_MAIL_ADDRESS, settings->MailAddress);
    Take(dialog, IDC_USER_NAME, settings->UserName);
    Take(dialog, IDC_ORGANIZATION, settings->Organization);
    return true;
}
