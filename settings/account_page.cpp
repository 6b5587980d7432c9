#include <wchar.h>

#include "resources/resource.h"
#include "settings/pages.h"
#include "text/convert.h"

namespace {

constexpr int kLoginSize = 256;  // UTF-16 units, the terminator included

void EnableEdits(HWND dialog) {
    const bool checked = IsBoxChecked(dialog, IDC_USE_PASSWORD);
    EnableControl(dialog, IDC_ACCOUNT_ID, checked);
    EnableControl(dialog, IDC_ACCOUNT_PASSWORD, checked);
    EnableControl(dialog, IDC_ACCOUNT_REPEAT, checked);
}

bool UpdateMode(HWND dialog, const Settings& settings) {
    EnableEdits(dialog);
    return !IsBoxChecked(dialog, IDC_USE_PASSWORD) ||
           (ShowNarrow(dialog, IDC_ACCOUNT_ID, settings.UserID) &&
            ShowNarrow(dialog, IDC_ACCOUNT_PASSWORD, settings.Password) &&
            ShowNarrow(dialog, IDC_ACCOUNT_REPEAT, settings.Password));
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
    wchar_t password[kLoginSize] = {};
    wchar_t repeat[kLoginSize] = {};
    GetDlgItemTextW(dialog, IDC_ACCOUNT_PASSWORD, password, kLoginSize);
    GetDlgItemTextW(dialog, IDC_ACCOUNT_REPEAT, repeat, kLoginSize);
    if (wcscmp(password, repeat) != 0) {
        return RefuseControl(dialog, *repeat != L'\0' ? IDC_ACCOUNT_REPEAT : IDC_ACCOUNT_PASSWORD);
    }
    NarrowText narrow = *password != L'\0' ? ToNarrow(password) : nullptr;
    if (*password != L'\0' && !narrow) return false;
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
