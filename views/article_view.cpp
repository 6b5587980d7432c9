#include "views/article_view.h"

#include <wchar.h>

#include "resources/resource.h"
#include "text/convert.h"
#include "text/last_error.h"

namespace {

constexpr int kHeightWithoutFont = 10;
constexpr wchar_t kClassName[] = L"PELNORArticleViewWnd";

// Layout.

void InvalidateLayout(ArticleView& view) {
    FreeLayout(view.layout);
    view.layoutValid = false;
    view.scroll.top = 0;
    view.place = nullptr;
    InvalidateRect(view.window, nullptr, FALSE);
}

uint32_t FittingUnits(void* context, const wchar_t* text, uint32_t count, int width) {
    int fit = 0;
    SIZE size = {};
    // The line must stay below the width, so one pixel less may be filled.
    const BOOL measured = GetTextExtentExPointW(static_cast<HDC>(context), text, static_cast<int>(count),
                                                width - 1, &fit, nullptr, &size);
    return measured ? static_cast<uint32_t>(fit) : 0;
}

bool MakeLayout(ArticleView& view, HDC dc) {
    LayoutOptions options;
    options.width = view.rowArea.right - view.rowArea.left;
    options.rowsPerPage = view.scroll.page;
    options.wholeHeader = view.showAllHeaders;
    return LayOut(view.layout, view.text ? view.text.get() : L"", options, MeasureOn(dc));
}

// Error 8 leaves an empty layout, and nothing is drawn.
bool EnsureLayout(ArticleView& view) {
    if (view.layoutValid) return true;
    view.layoutValid = true;
    MeasureRowHeight(view, view.font ? 1 : kHeightWithoutFont);
    view.scroll = {RowsPerPage(view), 0, 0};
    const HDC dc = GetDC(view.window);
    const HGDIOBJ oldFont = view.font ? SelectObject(dc, view.font) : nullptr;
    const bool laidOut = MakeLayout(view, dc);
    const ErrorKeeper keeper;
    if (oldFont) SelectObject(dc, oldFont);
    ReleaseDC(view.window, dc);
    view.scroll.total = view.layout.lineCount;
    SetScrollBar(view, TextScrollMaximum(view.scroll), view.scroll.top);
    return laidOut;
}

// Drawing.

void DrawLineText(HDC dc, const DisplayLine& line, RECT area) {
    DrawTextW(dc, line.text, static_cast<int>(line.length), &area,
              DT_SINGLELINE | DT_EXPANDTABS | DT_NOPREFIX);
}

// Drawn twice, a pixel apart, the line is bold.
void DrawHeaderLine(const ArticleView& view, HDC dc, const DisplayLine& line, RECT area) {
    const COLORREF colour = SetTextColor(dc, view.headerColor);
    const int mode = SetBkMode(dc, TRANSPARENT);
    DrawLineText(dc, line, area);
    ++area.left;
    DrawLineText(dc, line, area);
    SetBkMode(dc, mode);
    SetTextColor(dc, colour);
}

void DrawLine(const ArticleView& view, HDC dc, uint32_t index) {
    const DisplayLine& line = view.layout.lines[index];
    const RECT area = {0, 0, view.rowArea.right - view.rowArea.left, view.rowHeight};
    if (index < view.layout.headerLines) {
        DrawHeaderLine(view, dc, line, area);
        return;
    }
    const COLORREF colour = line.quote ? SetTextColor(dc, view.quoteColor) : GetTextColor(dc);
    DrawLineText(dc, line, area);
    SetTextColor(dc, colour);
}

void PaintLines(const ArticleView& view, HDC dc, const RECT& update) {
    const int width = view.rowArea.right - view.rowArea.left;
    RowCanvas canvas(dc, width, view.rowHeight, view.font);
    if (!canvas.IsReady()) return;
    RECT area = RowRectangle(view, 0);
    for (uint32_t row = 0; area.top < view.rowArea.bottom; area = RowRectangle(view, ++row)) {
        if (area.bottom > view.rowArea.bottom) area.bottom = view.rowArea.bottom;  // the last may be cut off
        if (area.bottom <= update.top || area.top >= update.bottom) continue;
        canvas.Clear();
        const uint32_t index = view.scroll.top + row;
        if (view.font && index < view.layout.lineCount) DrawLine(view, canvas.Dc(), index);
        canvas.CopyTo(area);
    }
}

LRESULT OnPaint(ArticleView& view) {
    PAINTSTRUCT paint;
    const HDC dc = BeginPaint(view.window, &paint);
    (void)EnsureLayout(view);
    PaintLines(view, dc, paint.rcPaint);
    PaintAround(view, dc, view.scroll.page + 1);
    view.scrollPending = false;
    EndPaint(view.window, &paint);
    return 0;
}

// Moving.

void ShowPage(const ArticleView& view) {
    ShowScrollPosition(view, view.scroll.top);
    InvalidateRows(view);
}

void Follow(const ArticleView& view, ScrollResult result) {
    if (result == ScrollResult::kMoved) ShowPage(view);
    if (result == ScrollResult::kAtEnd) NotifyParent(view, kArticleNext);
}

// Moves what is on the screen and draws only the line that is new, and what was cut off at the bottom.
void ScrollLines(ArticleView& view, int direction) {
    ShowScrollPosition(view, view.scroll.top);
    ScrollRowPixels(view, view.rowArea, direction);
    RECT fresh = RowRectangle(view, direction > 0 ? view.scroll.page - 1 : 0);
    if (direction > 0) fresh.bottom = view.rowArea.bottom;
    InvalidateRect(view.window, &fresh, FALSE);
}

void OneLine(ArticleView& view, int direction) {
    if (view.scrollPending) return;
    const ScrollResult result =
        direction > 0 ? TextLineDown(view.scroll, view.autoNext) : TextLineUp(view.scroll);
    if (result == ScrollResult::kMoved) ScrollLines(view, direction);
    if (result == ScrollResult::kAtEnd) NotifyParent(view, kArticleNext);
}

void OnePage(ArticleView& view, int direction) {
    Follow(view, direction > 0 ? TextPageDown(view.scroll, view.autoNext) : TextPageUp(view.scroll));
}

void OneStep(ArticleView& view, int direction) {
    if (view.lineScroll) {
        OneLine(view, direction);
    } else {
        OnePage(view, direction);
    }
}

// A key may come before the first paint of an article that was just opened.
LRESULT OnKey(ArticleView& view, WPARAM key) {
    (void)EnsureLayout(view);
    switch (key) {
        case VK_UP:
            OneStep(view, -1);
            break;
        case VK_DOWN:
            OneStep(view, 1);
            break;
        case VK_LEFT:
        case VK_PRIOR:
            OnePage(view, -1);
            break;
        case VK_RIGHT:
        case VK_NEXT:
        case VK_SPACE:
            OnePage(view, 1);
            break;
        case VK_TAB:
        case VK_RETURN:
            NotifyParent(view, kArticleNext);
            break;
        case VK_ESCAPE:
            NotifyParent(view, kArticleBack);
            break;
    }
    return 0;
}

LRESULT OnScroll(ArticleView& view, WORD code, WORD position) {
    (void)EnsureLayout(view);
    switch (code) {
        case SB_LINEUP:
            OneLine(view, -1);
            break;
        case SB_LINEDOWN:
            OneLine(view, 1);
            break;
        case SB_PAGEUP:
            OnePage(view, -1);
            break;
        case SB_PAGEDOWN:
            OnePage(view, 1);
            break;
        case SB_THUMBPOSITION:
        case SB_THUMBTRACK:
            Follow(view, TextThumbTo(view.scroll, ThumbPosition(view, position)));
            ShowScrollPosition(view, view.scroll.top);  // also where the thumb was dragged too far
            break;
    }
    return 0;
}

// The window itself.

LRESULT OnCreate(ArticleView& view) {
    if (!CreateScrollBar(view, L"VSARTS", IDW_ARTICLE_SCROLL)) return -1;
    PlaceRowArea(view, 0);
    return 0;
}

const wchar_t* ReadingPlace(const ArticleView& view) {
    const bool kept = view.place && view.scroll.top == view.placeTop;
    return kept ? view.place : PlaceOfLine(view.layout, view.scroll.top);
}

void ReturnTo(ArticleView& view, const wchar_t* place) {
    (void)TextThumbTo(view.scroll, LineOfPlace(view.layout, place));
    ShowScrollPosition(view, view.scroll.top);
    view.place = place;
    view.placeTop = view.scroll.top;
}

// The lines break elsewhere in a window of another width: what was read stays at the top.
LRESULT OnSize(ArticleView& view) {
    const RECT before = view.rowArea;
    PlaceRowArea(view, 0);
    if (view.client.bottom == 0 || EqualRect(&before, &view.rowArea)) return 0;
    const wchar_t* place = ReadingPlace(view);
    InvalidateLayout(view);
    if (EnsureLayout(view)) ReturnTo(view, place);
    return 0;
}

LRESULT Dispatch(ArticleView& view, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_CREATE:
            return OnCreate(view);
        case WM_SIZE:
            return OnSize(view);
        case WM_ERASEBKGND:
            return 1;  // every pixel is painted
        case WM_PAINT:
            return OnPaint(view);
        case WM_KEYDOWN:
            return OnKey(view, wParam);
        case WM_VSCROLL:
            return OnScroll(view, LOWORD(wParam), HIWORD(wParam));
        case WM_LBUTTONDOWN:
            SetFocus(view.window);
            return 0;
        default:
            return DefWindowProcW(view.window, message, wParam, lParam);
    }
}

LRESULT CALLBACK ArticleViewProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    ArticleView* view = ViewOf<ArticleView>(window, message, lParam);
    if (!view) return DefWindowProcW(window, message, wParam, lParam);
    return Dispatch(*view, message, wParam, lParam);
}

}  // namespace

TextMeasure MeasureOn(HDC dc) {
    return {FittingUnits, dc};
}

bool RegisterArticleViewClass(HINSTANCE instance) {
    return RegisterRowViewClass(kClassName, ArticleViewProcedure, instance);
}

bool CreateArticleView(ArticleView& view, HINSTANCE instance, HWND parent, int id, const RECT& rectangle) {
    view.instance = instance;
    view.parent = parent;
    view.id = id;
    return CreateRowView(view, kClassName, rectangle, &view);
}

void ShowArticleView(const ArticleView& view, int showCommand) {
    ShowRowView(view, showCommand);
}

void SetArticleAppearance(ArticleView& view, const ArticleAppearance& appearance) {
    view.lineScroll = appearance.lineScroll;
    view.autoNext = appearance.autoNext;
    view.headerColor = appearance.headerColor;
    view.quoteColor = appearance.quoteColor;
    if (view.font == appearance.font) return;
    view.font = appearance.font;
    InvalidateLayout(view);
}

bool SetArticleText(ArticleView& view, const wchar_t* text) {
    WideText copy = CopyText(text);
    if (!copy) return false;
    TakeArticleText(view, std::move(copy));
    return true;
}

void TakeArticleText(ArticleView& view, WideText text) {
    const ErrorKeeper keeper;
    InvalidateLayout(view);  // the layout points into the old text
    view.text = std::move(text);
}

bool SetShowAllHeaders(ArticleView& view, bool showAll) {
    view.showAllHeaders = showAll;
    InvalidateLayout(view);
    return EnsureLayout(view);
}

bool CopyArticle(const ArticleView& view, HWND owner) {
    const wchar_t* text = view.text ? view.text.get() : L"";
    if (!OpenClipboard(owner)) return false;
    EmptyClipboard();
    const bool copied = PutOnClipboard(CF_UNICODETEXT, text, (wcslen(text) + 1) * sizeof(wchar_t));
    const ErrorKeeper keeper;
    CloseClipboard();
    return copied;
}
