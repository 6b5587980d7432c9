#include "views/article_view.h"

#include <wchar.h>

#include "resources/resource.h"
#include "text/convert.h"
#include "text/last_error.h"

namespace {

ArticleView& ArticleOf(RowView& view) {
    return static_cast<ArticleView&>(view);
}

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
    // A line is narrower than the width, so one pixel less may be filled.
    const BOOL measured = GetTextExtentExPointW(static_cast<HDC>(context), text, static_cast<int>(count),
                                                width - 1, &fit, nullptr, &size);
    return measured ? static_cast<uint32_t>(fit) : 0;
}

// Error 8 leaves an empty layout: nothing is drawn.
bool LayOutText(RowView& rows, HDC dc) {
    ArticleView& view = ArticleOf(rows);
    LayoutOptions options;
    options.width = view.rowArea.right - view.rowArea.left;
    options.rowsPerPage = view.scroll.page;
    options.wholeHeader = view.showAllHeaders;
    const bool laidOut = LayOut(view.layout, view.text ? view.text.get() : L"", options, MeasureOn(dc));
    view.scroll.total = view.layout.lineCount;
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

void DrawLine(const RowView& rows, HDC dc, uint32_t row) {
    const auto& view = static_cast<const ArticleView&>(rows);
    const uint32_t index = view.scroll.top + row;
    if (!view.font || index >= view.layout.lineCount) return;
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

// Moving.

void OnStep(RowView& view, int direction) {
    if (view.lineScroll) {
        MoveByLine(view, direction);
    } else {
        MoveByPage(view, direction);
    }
}

void OnKey(RowView& view, WPARAM key) {
    if (key == VK_SPACE) MoveByPage(view, 1);
    if (key == VK_TAB || key == VK_RETURN) NotifyParent(view, kArticleNext);
}

const wchar_t* ReadingPlace(const ArticleView& view) {
    const bool kept = view.place && view.scroll.top == view.placeTop;
    return kept ? view.place : PlaceOfLine(view.layout, view.scroll.top);
}

void ReturnTo(ArticleView& view, const wchar_t* place) {
    (void)ThumbTo(view.scroll, LineOfPlace(view.layout, place));
    ShowScrollBar(view);
    view.place = place;
    view.placeTop = view.scroll.top;
}

// In another width the lines break elsewhere; what was read stays at the top.
void OnSize(RowView& rows) {
    ArticleView& view = ArticleOf(rows);
    const wchar_t* place = ReadingPlace(view);
    InvalidateLayout(view);
    if (EnsureLayout(view)) ReturnTo(view, place);
}

const wchar_t* ArticleText(HWND window) {
    return ArticleOf(*static_cast<RowView*>(GetWindowPointer(window, 0))).text.get();
}

constexpr RowViewKind kArticleKind = {
    L"PELNORArticleViewWnd",
    L"VSARTS",
    IDW_ARTICLE_SCROLL,
    0,     // no header
    1,     // least row height
    true,  // draws the cut row
    LayOutText,
    DrawLine,
    OnSize,
    OnStep,
    OnKey,
};

}  // namespace

TextMeasure MeasureOn(HDC dc) {
    return {FittingUnits, dc};
}

bool RegisterArticleViewClass(HINSTANCE instance) {
    return RegisterRowView(kArticleKind, instance);
}

bool CreateArticleView(ArticleView& view, HINSTANCE instance, HWND parent, int id, const RECT& rectangle) {
    view.scroll.kind = ScrollKind::kText;
    if (!CreateRowView(view, kArticleKind, instance, parent, id, rectangle)) return false;
    MakeReadable(view.window, ArticleText);
    return true;
}

void SetArticleAppearance(ArticleView& view, const ArticleAppearance& appearance) {
    view.lineScroll = appearance.lineScroll;
    view.scroll.kind = appearance.autoNext ? ScrollKind::kTextGoingOn : ScrollKind::kText;
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
    AnnounceText(view.window);
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
