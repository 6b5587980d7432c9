#include "drafts/file_chooser.h"
#include "platform/owners.h"
#include "resources/resource.h"
#include "sheet/pages.h"

namespace {

bool TakeServer(HWND dialog, Settings& settings) {
    wchar_t text[kEditSize] = {};
    GetDlgItemTextW(dialog, IDC_SERVER, text, kEditSize);
    const wchar_t* server = SkipBlanks(text);
    if (*server == L'\0') return RefuseControl(dialog, IDC_SERVER);
    CopyCut(settings.Server, kServerSize, server);
    return true;
}

bool FolderExists(const wchar_t* path) {
    FoundFile found;
    const FindOwner find(FindFirst(path, found));
    return static_cast<bool>(find);
}

bool TakeFolder(HWND dialog, Settings& settings) {
    wchar_t text[kEditSize] = {};
    GetDlgItemTextW(dialog, IDC_DATA_FOLDER, text, kEditSize);
    StripTrailingBackslashes(text);
    const wchar_t* folder = SkipBlanks(text);
    if (*folder == L'\0' || !FolderExists(folder)) return RefuseControl(dialog, IDC_DATA_FOLDER);
    CopyCut(settings.DataPath, kDataPathSize, folder);
    return true;
}

void BrowseFolder(HWND dialog, HINSTANCE instance) {
    FileChooser chooser;
    if (RunFileChooser(chooser, instance, dialog, L"Choose folder", nullptr) == 1) {
        SetDlgItemTextW(dialog, IDC_DATA_FOLDER, chooser.result);
    }
    FreeFileChooser(chooser);
}

}  // namespace

MainPage::MainPage() : SettingsPage(IDD_PAGE_MAIN, IDS_PAGE_MAIN) {}

void MainPage::Init(HWND dialog) {
    SetDlgItemTextW(dialog, IDC_SERVER, settings->Server);
    ShowDecimal(dialog, IDC_PORT, settings->Port);
    SetDlgItemTextW(dialog, IDC_DATA_FOLDER, settings->DataPath);
    ShowDecimal(dialog, IDC_LIMIT, settings->Limit);
}

INT_PTR MainPage::Command(HWND dialog, int id, int) {
    if (id != IDC_BROWSE) return 0;
    BrowseFolder(dialog, instance);
    return 1;
}

bool MainPage::Apply(HWND dialog) {
    return TakeServer(dialog, *settings) && TakeDecimal(dialog, IDC_PORT, settings->Port) &&
           TakeFolder(dialog, *settings) && TakeDecimal(dialog, IDC_LIMIT, settings->Limit);
}
