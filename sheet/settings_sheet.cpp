#include "sheet/settings_sheet.h"

#include <new>

#include "resources/resource.h"
#include "settings/registry.h"
#include "sheet/pages.h"
#include "text/last_error.h"

namespace {

template <class Page>
std::unique_ptr<SettingsPage> New() {
    return std::unique_ptr<SettingsPage>(new (std::nothrow) Page);
}

using MakePage = std::unique_ptr<SettingsPage> (*)();
constexpr MakePage kMakePage[kPageCount] = {New<MainPage>,       New<AccountPage>, New<KeysPage>,
                                            New<ConnectionPage>, New<FontPage>,    New<ColourPage>,
                                            New<UserPage>,       New<PostingPage>};

SheetPage DescribePage(const SettingsPage& page) {
    SheetPage description = {};
    description.dwSize = sizeof(description);
    description.dwFlags = PSP_USETITLE;
    description.hInstance = page.instance;
    description.pszTemplate = MAKEINTRESOURCEW(page.dialogId);
    description.pszTitle = page.title;
    description.pfnDlgProc = page.procedure;
    description.lParam = reinterpret_cast<LPARAM>(&page);
    return description;
}

// False when only a part was read: saving it would overwrite the rest. A registry that cannot be opened has
// nothing to lose.
bool StartFromRegistry(Settings& settings) {
    bool complete = false;
    RegistryKeyOwner key;
    if (LoadSettings(settings, complete) || !OpenKey(HKEY_CURRENT_USER, kProgramKey, key)) return true;
    MessageBoxW(nullptr, LoadResString(IDS_NO_MEMORY), kProgramCaption, MB_OK | MB_ICONERROR);
    return false;
}

}  // namespace

bool MakeSettingsPages(SettingsPages& pages, Settings& settings, HINSTANCE instance) {
    for (int i = 0; i < kPageCount; ++i) {
        pages[i] = kMakePage[i]();
        if (!pages[i]) return Fail(kErrorNoMemory);
        pages[i]->settings = &settings;
        pages[i]->instance = instance;
    }
    return true;
}

INT_PTR RunPropertySheet(const SettingsPages& pages, int first, int count, HINSTANCE instance, HWND owner) {
    SheetPage descriptions[kPageCount];
    for (int i = 0; i < count; ++i)
        descriptions[i] = DescribePage(*pages[first + i]);
    TextBuffer caption;
    SheetHeader sheet = {};
    sheet.dwSize = sizeof(sheet);
    sheet.dwFlags = PSH_PROPSHEETPAGE | PSH_NOAPPLYNOW | PSH_USEICONID;
    sheet.hwndParent = owner;
    sheet.hInstance = instance;
    sheet.pszIcon = MAKEINTRESOURCEW(IDI_PELNOR);
    sheet.pszCaption = LoadResStringOrEmpty(IDS_PROPERTIES, caption);
    sheet.nPages = static_cast<UINT>(count);
    sheet.ppsp = descriptions;
    return RunSheet(sheet);
}

INT_PTR RunSettingsSheet(Settings& settings, HINSTANCE instance, HWND owner) {
    SettingsPages pages;
    if (!MakeSettingsPages(pages, settings, instance) || !StartFromRegistry(settings)) return IDCANCEL;
    if (RunPropertySheet(pages, 0, kShownPageCount, instance, owner) != IDOK) return IDCANCEL;
    (void)SaveSettings(settings);
    return IDOK;
}
