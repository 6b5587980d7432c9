#include "dialup/dialup.h"
#include "resources/resource.h"
#include "sheet/pages.h"

namespace {

constexpr int kWaitSize = 20;  // UTF-16 units read from the wait field

// Names that begin with a grave accent are the system's own.
constexpr wchar_t kHiddenMark = L'`';

void ListEntries(HWND dialog, const PhoneBook& book, const wchar_t* selected) {
    for (DWORD i = 0; i < book.count; ++i) {
        const wchar_t* name = book.entries[i].szEntryName;
        if (*name == kHiddenMark) continue;
        SendDlgItemMessageW(dialog, IDC_ENTRY_NAME, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(name));
    }
    const LRESULT index = SendDlgItemMessageW(dialog, IDC_ENTRY_NAME, CB_FINDSTRINGEXACT,
                                              static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(selected));
    SendDlgItemMessageW(dialog, IDC_ENTRY_NAME, CB_SETCURSEL, static_cast<WPARAM>(index), 0);
}

bool UpdateMode(HWND dialog) {
    EnableControl(dialog, IDC_ENTRY_NAME, IsBoxChecked(dialog, IDC_DIALUP));
    return true;
}

void TakeEntryName(HWND dialog, Settings& settings) {
    const LRESULT index = SelectedIndex(dialog, IDC_ENTRY_NAME);
    settings.EntryName[0] = L'\0';
    if (index < 0) return;
    wchar_t name[RAS_MaxEntryName + 1] = {};
    SendDlgItemMessageW(dialog, IDC_ENTRY_NAME, CB_GETLBTEXT, static_cast<WPARAM>(index),
                        reinterpret_cast<LPARAM>(name));
    CopyCut(settings.EntryName, kEntryNameSize, name);
}

bool TakeWaitTime(HWND dialog, Settings& settings) {
    wchar_t text[kWaitSize] = {};
    GetDlgItemTextW(dialog, IDC_WAIT_TIME, text, kWaitSize);
    return ParseDecimal(text, settings.DisconnectWaitTime) || RefuseControl(dialog, IDC_WAIT_TIME);
}

}  // namespace

ConnectionPage::ConnectionPage() : SettingsPage(IDD_PAGE_CONNECTION, IDS_PAGE_CONNECTION) {}

void ConnectionPage::Init(HWND dialog) {
    CheckBox(dialog, IDC_DIALUP, settings->Dialup != 0);
    const std::unique_ptr<PhoneBook> book = ReadPhoneBook();
    if (book) {
        ListEntries(dialog, *book, settings->EntryName);
    } else {
        CheckBox(dialog, IDC_DIALUP, false);
        EnableControl(dialog, IDC_DIALUP, false);
    }
    if (!UpdateMode(dialog)) {
        MessageBoxW(nullptr, FormatLastError(L"SetDialupMode failed(%d)."), kProgramCaption,
                    MB_OK | MB_ICONERROR);
    }
    ShowDecimal(dialog, IDC_WAIT_TIME, settings->DisconnectWaitTime);
}

INT_PTR ConnectionPage::Command(HWND dialog, int id, int notice) {
    if (id != IDC_DIALUP || notice != BN_CLICKED) return 0;
    return UpdateMode(dialog);
}

bool ConnectionPage::Apply(HWND dialog) {
    const bool dials = IsBoxChecked(dialog, IDC_DIALUP);
    if (dials && SelectedIndex(dialog, IDC_ENTRY_NAME) < 0) {
        SendDlgItemMessageW(dialog, IDC_ENTRY_NAME, CB_SHOWDROPDOWN, TRUE, 0);
        SetFocus(GetDlgItem(dialog, IDC_ENTRY_NAME));
        return false;
    }
    settings->Dialup = dials ? 1 : 0;
    TakeEntryName(dialog, *settings);
    return TakeWaitTime(dialog, *settings);
}
