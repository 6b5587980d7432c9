#include "resources/resource.h"
#include "sheet/pages.h"

namespace {

constexpr int kMaximum = 255;
constexpr int kPage = 10;
constexpr UINT kSampleChanged = WM_APP + 1;  // to the sample label
constexpr LRESULT kQuoteItem = 1;

struct ColourBar {
    int bar;
    int label;
    int shift;  // of its byte in the colour, 0x00BBGGRR
};

constexpr ColourBar kBars[] = {
    {IDC_RED_BAR, IDC_RED_VALUE, 0}, {IDC_GREEN_BAR, IDC_GREEN_VALUE, 8}, {IDC_BLUE_BAR, IDC_BLUE_VALUE, 16}};

SCROLLINFO ReadBar(HWND bar) {
    SCROLLINFO info = {};
    info.cbSize = sizeof(info);
    info.fMask = SIF_POS | SIF_TRACKPOS;
    GetScrollInfo(bar, SB_CTL, &info);
    return info;
}

void SetBar(HWND dialog, const ColourBar& bar, int position) {
    SetScrollPos(GetDlgItem(dialog, bar.bar), SB_CTL, position, TRUE);
    ShowDecimal(dialog, bar.label, static_cast<uint32_t>(position));
}

COLORREF ReadBars(HWND dialog) {
    COLORREF colour = 0;
    for (const ColourBar& bar : kBars) {
        const int position = ReadBar(GetDlgItem(dialog, bar.bar)).nPos;
        colour |= static_cast<COLORREF>(position) << bar.shift;
    }
    return colour;
}

void ShowSample(HWND dialog, Settings& settings, COLORREF colour) {
    const HWND sample = GetDlgItem(dialog, IDC_SAMPLE);
    settings.SampleColor = colour;
    SendMessageW(sample, kSampleChanged, 0, 0);
    InvalidateRect(sample, nullptr, TRUE);
}

void ShowColour(HWND dialog, Settings& settings, COLORREF colour) {
    for (const ColourBar& bar : kBars)
        SetBar(dialog, bar, static_cast<int>(colour >> bar.shift & 0xFF));
    ShowSample(dialog, settings, colour & 0xFFFFFF);
}

COLORREF& ColourOf(Settings& settings, LRESULT item) {
    return item == kQuoteItem ? settings.ReferenceLine : settings.HeaderColor;
}

void OnScroll(HWND dialog, Settings& settings, int code, HWND control) {
    for (const ColourBar& bar : kBars) {
        if (GetDlgItem(dialog, bar.bar) != control) continue;
        const SCROLLINFO info = ReadBar(control);
        SetBar(dialog, bar, NextColourPosition(info.nPos, code, info.nTrackPos));
    }
    ShowSample(dialog, settings, ReadBars(dialog));
}

// The sample is written in the colour that it shows, as the article view writes its lines.
INT_PTR PaintSample(HDC dc, const Settings& settings) {
    SetTextColor(dc, settings.SampleColor);
    SetBkColor(dc, RGB(255, 255, 255));
    return reinterpret_cast<INT_PTR>(GetStockObject(WHITE_BRUSH));
}

INT_PTR CALLBACK ColourProcedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    const INT_PTR handled = PageProcedure(dialog, message, wParam, lParam);
    const SettingsPage* page = PageOf(dialog);
    if (handled || !page) return handled;
    const auto control = reinterpret_cast<HWND>(lParam);
    if (message == WM_HSCROLL) {
        OnScroll(dialog, *page->settings, LOWORD(wParam), control);
        return TRUE;
    }
    if (message == WM_CTLCOLORSTATIC && GetDlgCtrlID(control) == IDC_SAMPLE) {
        return PaintSample(reinterpret_cast<HDC>(wParam), *page->settings);
    }
    return FALSE;
}

void AddItem(HWND dialog, UINT stringId) {
    const wchar_t* text = LoadResString(stringId);
    SendDlgItemMessageW(dialog, IDC_COLOUR_ITEM, CB_ADDSTRING, 0,
                        reinterpret_cast<LPARAM>(text ? text : L""));
}

}  // namespace

int NextColourPosition(int position, int code, int tracked) {
    switch (code) {
        case SB_LINELEFT:
            return position > 0 ? position - 1 : 0;
        case SB_LINERIGHT:
            return position < kMaximum ? position + 1 : kMaximum;
        case SB_PAGELEFT:
            return position < kPage ? 0 : position - kPage;
        case SB_PAGERIGHT:
            return position > kMaximum - kPage ? kMaximum : position + kPage;
        case SB_THUMBTRACK:
            return tracked;
        default:
            return position;
    }
}

ColourPage::ColourPage() : SettingsPage(IDD_PAGE_COLOUR, IDS_PAGE_COLOUR) {
    procedure = ColourProcedure;
}

void ColourPage::Init(HWND dialog) {
    AddItem(dialog, IDS_COLOUR_HEADER);
    AddItem(dialog, IDS_COLOUR_QUOTE);
    SendDlgItemMessageW(dialog, IDC_COLOUR_ITEM, CB_SETCURSEL, 0, 0);
    shownItem = 0;
    for (const ColourBar& bar : kBars)
        SetScrollRange(GetDlgItem(dialog, bar.bar), SB_CTL, 0, kMaximum, FALSE);
    ShowColour(dialog, *settings, settings->HeaderColor);
}

// What the bars show belongs to the item shown until now.
INT_PTR ColourPage::Command(HWND dialog, int id, int notice) {
    if (id != IDC_COLOUR_ITEM || notice != CBN_SELCHANGE) return 0;
    ColourOf(*settings, shownItem) = ReadBars(dialog);
    shownItem = SelectedIndex(dialog, IDC_COLOUR_ITEM);
    ShowColour(dialog, *settings, ColourOf(*settings, shownItem));
    return 1;
}

bool ColourPage::Apply(HWND dialog) {
    ColourOf(*settings, shownItem) = ReadBars(dialog);
    return true;
}
