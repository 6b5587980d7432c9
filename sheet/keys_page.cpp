#include "resources/resource.h"
#include "sheet/pages.h"

KeysPage::KeysPage() : SettingsPage(IDD_PAGE_KEYS, IDS_PAGE_KEYS) {}

void KeysPage::Init(HWND dialog) {
    CheckBox(dialog, IDC_KEY_MODE, settings->KeyMode != 0);
    CheckBox(dialog, IDC_AUTO_NEXT, settings->AutoNextArticle != 0);
}

bool KeysPage::Apply(HWND dialog) {
    settings->KeyMode = IsBoxChecked(dialog, IDC_KEY_MODE) ? 1 : 0;
    settings->AutoNextArticle = IsBoxChecked(dialog, IDC_AUTO_NEXT) ? 1 : 0;
    return true;
}
