#include "resources/resource.h"
#include "sheet/pages.h"

namespace {

constexpr int32_t kSmallestSize = 8;
constexpr int32_t kLargestSize = 18;
constexpr wchar_t kVerticalMark = L'@';  // begins the names of faces for vertical writing

LRESULT FindFamily(HWND combo, const wchar_t* name) {
    return SendMessageW(combo, CB_FINDSTRINGEXACT, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(name));
}

// The system may report a family once for each of its scripts.
int CALLBACK AddFamily(const LOGFONTW* font, const TEXTMETRICW*, DWORD, LPARAM parameter) {
    const wchar_t* name = font->lfFaceName;
    const auto combo = reinterpret_cast<HWND>(parameter);
    if (name[0] != kVerticalMark && FindFamily(combo, name) == CB_ERR) {
        SendMessageW(combo, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(name));
    }
    return 1;
}

void Select(HWND combo, LRESULT index) {
    SendMessageW(combo, CB_SETCURSEL, static_cast<WPARAM>(index < 0 ? 0 : index), 0);
}

void ListFamilies(HWND dialog, const wchar_t* selected) {
    const HWND combo = GetDlgItem(dialog, IDC_FONT_NAME);
    const HDC dc = GetDC(dialog);
    EnumFontFamiliesW(dc, nullptr, AddFamily, reinterpret_cast<LPARAM>(combo));
    ReleaseDC(dialog, dc);
    Select(combo, FindFamily(combo, selected));
}

// An entry's index is its size less the smallest. A size that is not in the list shows as the smallest.
void ListSizes(HWND dialog, int id, int32_t selected) {
    const HWND combo = GetDlgItem(dialog, id);
    for (int32_t size = kSmallestSize; size <= kLargestSize; ++size) {
        wchar_t text[8];
        wsprintfW(text, L"%d", size);
        SendMessageW(combo, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text));
    }
    const bool listed = selected >= kSmallestSize && selected <= kLargestSize;
    Select(combo, listed ? selected - kSmallestSize : 0);
}

void EnableChoices(HWND dialog, bool enabled) {
    EnableControl(dialog, IDC_FONT_NAME, enabled);
    EnableControl(dialog, IDC_SUBJECT_SIZE, enabled);
    EnableControl(dialog, IDC_ARTICLE_SIZE, enabled);
}

int32_t SelectedSize(HWND dialog, int id) {
    const LRESULT index = SelectedIndex(dialog, id);
    return kSmallestSize + static_cast<int32_t>(index < 0 ? 0 : index);
}

void TakeFamily(HWND dialog, Settings& settings) {
    const LRESULT index = SelectedIndex(dialog, IDC_FONT_NAME);
    const LRESULT length =
        SendDlgItemMessageW(dialog, IDC_FONT_NAME, CB_GETLBTEXTLEN, static_cast<WPARAM>(index), 0);
    if (index < 0 || length < 0 || length >= kFontNameSize) return;
    SendDlgItemMessageW(dialog, IDC_FONT_NAME, CB_GETLBTEXT, static_cast<WPARAM>(index),
                        reinterpret_cast<LPARAM>(settings.FontName));
}

}  // namespace

FontPage::FontPage() : SettingsPage(IDD_PAGE_FONT, IDS_PAGE_FONT) {}

void FontPage::Init(HWND dialog) {
    const bool systemFont = settings->FontSizeA == kSystemFont;
    ListFamilies(dialog, settings->FontName);
    ListSizes(dialog, IDC_ARTICLE_SIZE, settings->FontSizeA);
    ListSizes(dialog, IDC_SUBJECT_SIZE, settings->FontSizeS);
    CheckBox(dialog, IDC_SYSTEM_FONT, systemFont);
    if (systemFont) EnableChoices(dialog, false);
}

INT_PTR FontPage::Command(HWND dialog, int id, int notice) {
    if (id != IDC_SYSTEM_FONT || notice != BN_CLICKED) return 0;
    EnableChoices(dialog, !IsBoxChecked(dialog, IDC_SYSTEM_FONT));
    return 1;
}

bool FontPage::Apply(HWND dialog) {
    if (IsBoxChecked(dialog, IDC_SYSTEM_FONT)) {
        settings->FontName[0] = L'\0';
        settings->FontSizeA = settings->FontSizeS = kSystemFont;
    } else {
        TakeFamily(dialog, *settings);
        settings->FontSizeA = SelectedSize(dialog, IDC_ARTICLE_SIZE);
        settings->FontSizeS = SelectedSize(dialog, IDC_SUBJECT_SIZE);
    }
    (void)MakeViewFont(settings->FontName, settings->FontSizeA, settings->ArticleFont);
    (void)MakeViewFont(settings->FontName, settings->FontSizeS, settings->SubjectFont);
    return true;
}
