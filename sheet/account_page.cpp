#include <wchar.h>

#include "resources/resource.h"
#include "sheet/pages.h"
#include "text/convert.h"

namespace {

constexpr int kLoginSize = 256;  // UTF-16 units, the terminator included

void EnableEdits(HWND dialog) {
    const bool checked = IsBoxChecked(dialog, IDC_USE_PASSWORD);
    EnableControl(dialog, IDC_ACCOUNT_ID, checked);
    EnableControl(dialog, IDC_ACCOUNT_PASSWORD, checked);
    EnableControl(dialog, IDC_ACCOUNT_REPEAT, checked);
}

bool ShowPassword(HWND dialog, const Secret& password) {
    const WideSecret text = ToWide(password ? password.get() : "");
    return text && SetDlgItemTextW(dialog, IDC_ACCOUNT_PASSWORD, text.get()) &&
           SetDlgItemTextW(dialog, IDC_ACCOUNT_REPEAT, text.get());
}

bool UpdateMode(HWND dialog, const Settings& settings) {
    EnableEdits(dialog);
    return !IsBoxChecked(dialog, IDC_USE_PASSWORD) ||
           (ShowNarrow(dialog, IDC_ACCOUNT_ID, settings.UserID) && ShowPassword(dialog, settings.Password));
}

bool TakeUser(HWND dialog, Settings& settings) {
    wchar_t text[kLoginSize] = {};
    GetDlgItemTextW(dialog, IDC_ACCOUNT_ID, text, kLoginSize);
    const wchar_t* user = SkipBlanks(text);
    if (*user == L'\0') return RefuseControl(dialog, IDC_ACCOUNT_ID);
    NarrowText narrow = ToNarrow(user);
    if (!narrow) return false;
    settings.UserID = std::move(narrow);
    return true;
}

// The password is typed twice; both empty mean that none is stored.
bool TakePassword(HWND dialog, Settings& settings) {
    SecretBuffer<kLoginSize> password, repeat;
    GetDlgItemTextW(dialog, IDC_ACCOUNT_PASSWORD, password.text, kLoginSize);
    GetDlgItemTextW(dialog, IDC_ACCOUNT_REPEAT, repeat.text, kLoginSize);
    if (wcscmp(password.text, repeat.text) != 0) {
        return RefuseControl(dialog, *repeat.text != L'\0' ? IDC_ACCOUNT_REPEAT : IDC_ACCOUNT_PASSWORD);
    }
    const bool given = *password.text != L'\0';
    Secret narrow = given ? ToNarrow(password.text) : nullptr;
    if (given && !narrow) return false;
    settings.Password = std::move(narrow);
    return true;
}

}  // namespace

AccountPage::AccountPage() : SettingsPage(IDD_PAGE_ACCOUNT, IDS_PAGE_ACCOUNT) {}

void AccountPage::Init(HWND dialog) {
    CheckBox(dialog, IDC_USE_PASSWORD, settings->UserID != nullptr);
    shown = UpdateMode(dialog, *settings);
    if (shown) return;
    MessageBoxW(nullptr, FormatLastError(L"SetPassMode failed(%d)."), kProgramCaption, MB_OK | MB_ICONERROR);
}

INT_PTR AccountPage::Command(HWND dialog, int id, int notice) {
    if (id != IDC_USE_PASSWORD || notice != BN_CLICKED) return 0;
    shown = UpdateMode(dialog, *settings);
    return shown;
}

bool AccountPage::Apply(HWND dialog) {
    if (!shown) return true;
    if (IsBoxChecked(dialog, IDC_USE_PASSWORD))
        return TakeUser(dialog, *settings) && TakePassword(dialog, *settings);
    settings->UserID.reset();
    settings->Password.reset();
    return true;
}
