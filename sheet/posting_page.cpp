#include "drafts/file_chooser.h"
#include "resources/resource.h"
#include "sheet/pages.h"

PostingPage::PostingPage() : SettingsPage(IDD_PAGE_POSTING, IDS_PAGE_POSTING) {}

void PostingPage::Init(HWND dialog) {
    SetDlgItemTextW(dialog, IDC_EDITOR_PATH, settings->EditorPath ? settings->EditorPath.get() : L"");
}

INT_PTR PostingPage::Command(HWND dialog, int id, int) {
    if (id != IDC_BROWSE) return 0;
    FileChooser chooser;
    if (RunFileChooser(chooser, instance, dialog, L"Choose Editor", L"*.exe") == 1) {
        SetDlgItemTextW(dialog, IDC_EDITOR_PATH, chooser.result);
    }
    FreeFileChooser(chooser);
    return 1;
}

bool PostingPage::Apply(HWND dialog) {
    const HWND edit = GetDlgItem(dialog, IDC_EDITOR_PATH);
    const int capacity = GetWindowTextLengthW(edit) + 1;
    WideText path = NewArray<wchar_t>(static_cast<std::size_t>(capacity));
    if (!path) return true;  // the old path stays
    path[0] = L'\0';
    GetWindowTextW(edit, path.get(), capacity);
    settings->EditorPath = std::move(path);
    return true;
}
