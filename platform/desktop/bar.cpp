#include "platform/desktop/bar.h"

#include <algorithm>
#include <new>

namespace {

constexpr WORD kNoPopup = 0xFFFF;
constexpr WORD kNoImage = 0xFFFE;
constexpr WORD kEnabledState = 4;
constexpr int kImageSide = 16;
constexpr int kMinimumHeight = 26;
constexpr int kPadding = 6;
constexpr int kGap = 5;         // between caption and arrow
constexpr int kArrowWidth = 7;  // of the drop-downs' upward arrow
constexpr int kArrowHeight = 4;

// The resource: this head, then `count` times ButtonWords.
struct BarWords {
    WORD menu;
    WORD count;
};

struct ButtonWords {
    WORD image;
    WORD command;
    WORD state;
    WORD style;  // follows from `popup` and `caption`
    WORD caption;
    WORD zero;
    WORD popup;
};
static_assert(sizeof(BarWords) == 4 && sizeof(ButtonWords) == 14, "words without padding");

[[nodiscard]] bool Invalid() {
    SetLastError(ERROR_INVALID_DATA);
    return false;
}

// The resource's words, which are the program's own; null without such a resource.
const BarWords* FindBarWords(HINSTANCE module, UINT id) {
    HRSRC resource = FindResourceW(module, MAKEINTRESOURCEW(id), MAKEINTRESOURCEW(10));  // RT_RCDATA
    HGLOBAL loaded = resource ? LoadResource(module, resource) : nullptr;
    return loaded ? static_cast<const BarWords*>(LockResource(loaded)) : nullptr;
}

[[nodiscard]] bool LoadButton(const MenuBar& bar, HINSTANCE module, const ButtonWords& words,
                              Button& button) {
    button.command = words.command;
    button.enabled = (words.state & kEnabledState) != 0;
    if (words.image != kNoImage) {
        button.image = words.image;
        if (!bar.images || button.image >= ImageList_GetImageCount(bar.images.Get())) return Invalid();
    }
    if (words.popup != kNoPopup) {
        button.popup = GetSubMenu(bar.menu.Get(), words.popup);
        if (!button.popup) return Invalid();
    }
    if (!words.caption) return true;
    return LoadStringW(module, words.caption, button.caption.data(),
                       static_cast<int>(button.caption.size())) > 0;
}

[[nodiscard]] bool LoadButtons(MenuBar& bar, HINSTANCE module, const BarWords& words) {
    bar.count = words.count;
    bar.buttons.reset(new (std::nothrow) Button[words.count]);
    if (!bar.buttons) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return false;
    }
    auto each = reinterpret_cast<const ButtonWords*>(&words + 1);
    for (int i = 0; i < bar.count; ++i) {
        if (!LoadButton(bar, module, each[i], bar.buttons[i])) return false;
    }
    return true;
}

[[nodiscard]] bool LoadContents(MenuBar& bar, const SHMENUBARINFO& info) {
    const BarWords* words = FindBarWords(info.hInstRes, info.nToolBarId);
    if (!words) return false;
    bar.menu.Reset(LoadMenuW(info.hInstRes, MAKEINTRESOURCEW(words->menu)));
    if (!bar.menu) return false;
    if (info.cBmpImages > 0) {
        constexpr COLORREF kGround = RGB(0xC0, 0xC0, 0xC0);
        bar.images.Reset(ImageList_LoadImageW(info.hInstRes, MAKEINTRESOURCEW(info.nBmpId), kImageSide, 0,
                                              kGround, IMAGE_BITMAP, LR_CREATEDIBSECTION));
        if (!bar.images) return false;
    }
    return LoadButtons(bar, info.hInstRes, *words);
}

int WidthOf(const Button& button, HDC dc) {
    int width = 2 * kPadding;
    if (button.image != kNone) width += kImageSide;
    SIZE text{};
    const int length = lstrlenW(button.caption.data());
    if (length && GetTextExtentPoint32W(dc, button.caption.data(), length, &text)) width += text.cx;
    if (button.popup) width += kGap + kArrowWidth;
    return width;
}

// Gives the bar its font and height, and each button its area.
[[nodiscard]] bool ArrangeButtons(MenuBar& bar) {
    NONCLIENTMETRICSW metrics{};
    metrics.cbSize = sizeof(metrics);
    if (!SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof(metrics), &metrics, 0)) return false;
    bar.font.Reset(CreateFontIndirectW(&metrics.lfMenuFont));
    const WindowDc dc(bar.parent);
    if (!bar.font || !dc.Get()) return false;
    const Selection font(dc.Get(), bar.font.Get());
    TEXTMETRICW text{};
    GetTextMetricsW(dc.Get(), &text);
    bar.height = std::max<int>(kMinimumHeight, text.tmHeight + 2 * kPadding);
    int left = 2;
    for (int i = 0; i < bar.count; ++i) {
        Button& button = bar.buttons[i];
        button.area = {left, 3, left + WidthOf(button, dc.Get()), bar.height - 1};
        left = button.area.right;
    }
    return true;
}

void DrawArrow(HDC dc, const RECT& content, COLORREF colour) {
    const int right = content.right - kPadding;
    const int top = (content.top + content.bottom - kArrowHeight) / 2;
    const Selection brush(dc, GetStockObject(DC_BRUSH));
    SetDCBrushColor(dc, colour);
    for (int row = 0; row < kArrowHeight; ++row) {
        PatBlt(dc, right - kArrowWidth / 2 - 1 - row, top + row, 2 * row + 1, 1, PATCOPY);
    }
}

void DrawButton(HDC dc, const MenuBar& bar, int index) {
    const Button& button = bar.buttons[index];
    RECT content = button.area;
    if (index == bar.open || index == bar.pressed) {
        DrawEdge(dc, &content, BDR_SUNKENOUTER, BF_RECT);
        OffsetRect(&content, 1, 1);
    } else if (index == bar.selected) {
        DrawEdge(dc, &content, BDR_RAISEDINNER, BF_RECT);
    }
    const COLORREF colour = GetSysColor(button.enabled ? COLOR_BTNTEXT : COLOR_GRAYTEXT);
    if (button.popup) DrawArrow(dc, content, colour);
    content.left += kPadding;
    if (button.image != kNone) {
        ImageList_Draw(bar.images.Get(), button.image, dc, content.left,
                       (content.top + content.bottom - kImageSide) / 2, ILD_TRANSPARENT);
        content.left += kImageSide;
    }
    SetTextColor(dc, colour);
    DrawTextW(dc, button.caption.data(), -1, &content, DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX);
}

void DrawButtons(HDC dc, const MenuBar& bar) {
    const Selection font(dc, bar.font.Get());
    SetBkMode(dc, TRANSPARENT);
    for (int i = 0; i < bar.count; ++i)
        DrawButton(dc, bar, i);
}

}  // namespace

bool LoadBar(MenuBar& bar, const SHMENUBARINFO& info) {
    return LoadContents(bar, info) && ArrangeButtons(bar);
}

void PaintBar(const MenuBar& bar) {
    PAINTSTRUCT paint{};
    HDC dc = BeginPaint(bar.window, &paint);
    if (!dc) return;
    RECT area{};
    GetClientRect(bar.window, &area);
    DrawEdge(dc, &area, EDGE_ETCHED, BF_TOP);
    DrawButtons(dc, bar);
    EndPaint(bar.window, &paint);
}

void Redraw(const MenuBar& bar) {
    InvalidateRect(bar.window, nullptr, TRUE);
}

int ButtonAt(const MenuBar& bar, POINT point) {
    for (int i = 0; i < bar.count; ++i) {
        if (bar.buttons[i].enabled && PtInRect(&bar.buttons[i].area, point)) return i;
    }
    return kNone;
}

int Step(const MenuBar& bar, int index, int direction) {
    return bar.count ? (index + direction + bar.count) % bar.count : kNone;
}

void GiveFocusBack(const MenuBar& bar) {
    if (GetFocus() != bar.window) return;
    SetFocus(IsWindow(bar.focusBefore) ? bar.focusBefore : bar.parent);
}

// Posted: the command may hide or end the bar while one of the bar's messages is being handled.
void SendCommand(const MenuBar& bar, UINT command) {
    GiveFocusBack(bar);
    PostMessageW(bar.parent, WM_COMMAND, MAKEWPARAM(command, 0), 0);
}
