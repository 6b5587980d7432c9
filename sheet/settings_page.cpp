#include "sheet/settings_page.h"

#include "text/convert.h"

namespace {

// Whether the user may leave the page or close the sheet.
INT_PTR OnNotify(HWND dialog, SettingsPage& page, const NMHDR& header) {
    if (header.code == PSN_KILLACTIVE) {
        SetDialogResult(dialog, page.Apply(dialog) ? 0 : 1);
        return TRUE;
    }
    if (header.code == PSN_APPLY) {
        SetDialogResult(dialog, page.Apply(dialog) ? PSNRET_NOERROR : PSNRET_INVALID_NOCHANGEPAGE);
        return TRUE;
    }
    return FALSE;
}

INT_PTR OnInitDialog(HWND dialog, const SheetPage& description) {
    auto page = reinterpret_cast<SettingsPage*>(description.lParam);
    SetWindowPointer(dialog, kUserData, page);
    page->Init(dialog);
    return TRUE;
}

}  // namespace

SettingsPage::SettingsPage(WORD dialog, UINT titleId) : dialogId(dialog), procedure(PageProcedure) {
    const wchar_t* text = LoadResString(titleId);
    CopyCut(title, kTextCapacity, text ? text : L"");
}

INT_PTR SettingsPage::Command(HWND, int, int) {
    return 0;
}

INT_PTR CALLBACK PageProcedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_INITDIALOG) return OnInitDialog(dialog, *reinterpret_cast<const SheetPage*>(lParam));
    SettingsPage* page = PageOf(dialog);
    if (!page) return FALSE;
    if (message == WM_NOTIFY) return OnNotify(dialog, *page, *reinterpret_cast<const NMHDR*>(lParam));
    if (message == WM_COMMAND) return page->Command(dialog, LOWORD(wParam), HIWORD(wParam));
    return FALSE;
}

SettingsPage* PageOf(HWND dialog) {
    return static_cast<SettingsPage*>(GetWindowPointer(dialog, kUserData));
}

bool IsBoxChecked(HWND dialog, int id) {
    return SendDlgItemMessageW(dialog, id, BM_GETCHECK, 0, 0) == BST_CHECKED;
}

void CheckBox(HWND dialog, int id, bool checked) {
    SendDlgItemMessageW(dialog, id, BM_SETCHECK, checked ? BST_CHECKED : BST_UNCHECKED, 0);
}

void EnableControl(HWND dialog, int id, bool enabled) {
    EnableWindow(GetDlgItem(dialog, id), enabled);
}

void ShowDecimal(HWND dialog, int id, uint32_t value) {
    wchar_t text[16];
    wsprintfW(text, L"%d", value);
    SetDlgItemTextW(dialog, id, text);
}

bool ShowNarrow(HWND dialog, int id, const NarrowText& text) {
    const WideText wide = ToWide(text ? text.get() : "");
    return wide && SetDlgItemTextW(dialog, id, wide.get());
}

bool RefuseControl(HWND dialog, int id) {
    SetFocus(GetDlgItem(dialog, id));
    SendDlgItemMessageW(dialog, id, EM_SETSEL, 0, -1);
    return false;
}

bool TakeDecimal(HWND dialog, int id, uint32_t& value) {
    wchar_t text[kEditSize] = {};
    GetDlgItemTextW(dialog, id, text, kEditSize);
    return ParseDecimal(text, value) || RefuseControl(dialog, id);
}

const wchar_t* SkipBlanks(const wchar_t* text) {
    while (*text == L' ')
        ++text;
    return text;
}

LRESULT SelectedIndex(HWND dialog, int comboId) {
    return SendDlgItemMessageW(dialog, comboId, CB_GETCURSEL, 0, 0);
}
