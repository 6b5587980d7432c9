#include "sheet/settings_sheet.h"

#include <new>

#include "resources/resource.h"
#include "sheet/pages.h"
#include "settings/registry.h"
#include "text/last_error.h"

namespace {

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

// False when only a part was read, which must not be written back over the rest. A registry that cannot be
// opened at all has nothing to lose.
bool StartFromRegistry(Settings& settings) {
    bool complete = false;
    RegistryKeyOwner key;
    if (LoadSettings(settings, complete) || !OpenKey(HKEY_CURRENT_USER, kProgramKey, key)) return true;
    MessageBoxW(nullptr, LoadResString(IDS_NO_MEMORY), kProgramCaption, MB_OK | MB_ICONERROR);
    return false;
}

}  // namespace

SettingsPages::~SettingsPages() {
    for (SettingsPage* page : all)
        delete page;
}

bool MakeSettingsPages(SettingsPages& pages, Settings& settings, HINSTANCE instance) {
    SettingsPage* const made[kPageCount] = {new (std::nothrow) MainPage, new (std::nothrow) AccountPage,
                                            new (std::nothrow) KeysPage, new (std::nothrow) ConnectionPage,
                                            new (std::nothrow) FontPage, new (std::nothrow) ColourPage,
                                            new (std::nothrow) UserPage, new (std::nothrow) PostingPage};
    bool complete = true;
    for (int i = 0; i < kPageCount; ++i) {
        pages.all[i] = made[i];
        complete = complete && made[i];
        if (!made[i]) continue;
        made[i]->settings = &settings;
        made[i]->instance = instance;
    }
    return complete || Fail(kErrorNoMemory);
}

INT_PTR RunPropertySheet(const SettingsPages& pages, int first, int count, HINSTANCE instance, HWND owner) {
    SheetPage descriptions[kPageCount];
    for (int i = 0; i < count; ++i)
        descriptions[i] = DescribePage(*pages.all[first + i]);
    wchar_t caption[kTextCapacity];
    const wchar_t* text = LoadResString(IDS_PROPERTIES);
    CopyCut(caption, kTextCapacity, text ? text : L"");
    SheetHeader sheet = {};
    sheet.dwSize = sizeof(sheet);
    sheet.dwFlags = PSH_PROPSHEETPAGE | PSH_NOAPPLYNOW | PSH_USEICONID;
    sheet.hwndParent = owner;
    sheet.hInstance = instance;
    sheet.pszIcon = MAKEINTRESOURCEW(IDI_PELNOR);
    sheet.pszCaption = caption;
    sheet.nPages = static_cast<UINT>(count);
    sheet.ppsp = descriptions;
    return RunSheet(sheet);
}

INT_PTR RunSettingsSheet(Settings& settings, HINSTANCE instance, HWND owner) {
    SettingsPages pages;
    if (!MakeSettingsPages(pages, settings, instance) || !StartFromRegistry(settings)) return 2;
    if (RunPropertySheet(pages, 0, kShownPageCount, instance, owner) != 1) return 2;
    (void)SaveSettings(settings);
    return 1;
}
