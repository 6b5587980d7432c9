#include "views/row_view.h"

#include <algorithm>

#include "platform/platform.h"
#include "text/last_error.h"

namespace {

constexpr int kBorder = 1;
constexpr int kScrollBarWidth = 16;
constexpr int kHeaderHeight = 20;
constexpr int kHeightWithoutFont = 10;

// Layout.

void PlaceChildren(RowView& view) {
    GetClientRect(view.window, &view.client);
    const RECT& client = view.client;
    const int headerHeight = view.header ? kHeaderHeight : 0;
    view.rowArea = {client.left + kBorder, client.top + kBorder + headerHeight,
                    client.right - kBorder - kScrollBarWidth, client.bottom - kBorder};
    MoveWindow(view.scrollBar, view.rowArea.right, view.rowArea.top, kScrollBarWidth,
               view.rowArea.bottom - view.rowArea.top, TRUE);
    if (!view.header) return;
    MoveWindow(view.header, client.left + kBorder, client.top + kBorder, client.right - 2 * kBorder,
               kHeaderHeight, TRUE);
}

int MeasureRowHeight(const RowView& view, HDC dc) {
    if (!view.font) return kHeightWithoutFont;
    TEXTMETRICW metrics = {};
    GetTextMetricsW(dc, &metrics);
    return metrics.tmHeight > view.kind->leastRowHeight ? metrics.tmHeight : view.kind->leastRowHeight;
}

RECT RowRectangle(const RowView& view, uint32_t row) {
    RECT area = view.rowArea;
    area.top += static_cast<LONG>(row) * view.rowHeight;
    area.bottom = area.top + view.rowHeight;
    return area;
}

// Drawing.

void PaintRows(const RowView& view, HDC dc, const RECT& update) {
    const int width = view.rowArea.right - view.rowArea.left;
    const DcOwner canvas(CreateCompatibleDC(dc));
    const BitmapOwner bitmap(CreateCompatibleBitmap(dc, width, view.rowHeight));
    if (!canvas || !bitmap) return;
    const Selection image(canvas.Get(), bitmap.Get());
    const Selection font(canvas.Get(), view.font);
    RECT area = RowRectangle(view, 0);
    for (uint32_t row = 0; area.top < view.rowArea.bottom; area = RowRectangle(view, ++row)) {
        if (area.bottom > view.rowArea.bottom) area.bottom = view.rowArea.bottom;
        if (area.bottom <= update.top || area.top >= update.bottom) continue;
        PatBlt(canvas.Get(), 0, 0, width, view.rowHeight, WHITENESS);
        view.kind->drawRow(view, canvas.Get(), row);
        BitBlt(dc, area.left, area.top, width, area.bottom - area.top, canvas.Get(), 0, 0, SRCCOPY);
    }
}

void PaintBorder(const RowView& view, HDC dc) {
    const Selection brush(dc, GetStockObject(NULL_BRUSH));
    Rectangle(dc, view.client.left, view.client.top, view.client.right, view.client.bottom);
}

LRESULT OnPaint(RowView& view) {
    PAINTSTRUCT paint;
    const HDC dc = BeginPaint(view.window, &paint);
    (void)EnsureLayout(view);
    PaintRows(view, dc, paint.rcPaint);
    PaintBorder(view, dc);
    view.scrollPending = false;
    EndPaint(view.window, &paint);
    return 0;
}

// Moving.

void ShowScrollPosition(const RowView& view) {
    SetScrollPos(view.scrollBar, SB_CTL, static_cast<int>(view.scroll.top), TRUE);
}

void TopChanged(RowView& view, int direction) {
    ShowScrollPosition(view);
    if (view.kind->onTopChanged) view.kind->onTopChanged(view, direction);
}

// Moves what is on the screen, so that only the new row and the one that was cut off need drawing.
void ScrollRows(RowView& view, int direction) {
    RECT moving = view.rowArea;
    const uint32_t last = view.scroll.page - 1;
    if (!view.kind->drawsCutRow) moving.bottom = RowRectangle(view, last).bottom;
    ScrollWindowEx(view.window, 0, -direction * view.rowHeight, &moving, &moving, nullptr, nullptr,
                   SW_INVALIDATE);
    view.scrollPending = true;
    RECT fresh = RowRectangle(view, direction > 0 ? last : 0);
    if (direction > 0) fresh.bottom = moving.bottom;
    InvalidateRect(view.window, &fresh, FALSE);
    TopChanged(view, direction);
}

// The message has only 16 bits of the position; the bar knows all of it.
uint32_t ThumbPosition(const RowView& view, WORD position) {
    SCROLLINFO info = {};
    info.cbSize = sizeof(info);
    info.fMask = SIF_TRACKPOS;
    const bool known = GetScrollInfo(view.scrollBar, SB_CTL, &info) && LOWORD(info.nTrackPos) == position;
    return known ? static_cast<uint32_t>(info.nTrackPos) : position;
}

void OnOtherKey(RowView& view, WPARAM key) {
    const int end = EndKey(key);
    if (end) {
        GoToEnd(view.scroll, end);
        ShowPage(view);
    } else {
        view.kind->onKey(view, key);
    }
}

// A key may come before the first paint of what was just opened; so may the scroll bar.
LRESULT OnKey(RowView& view, WPARAM key) {
    (void)EnsureLayout(view);
    switch (key) {
        case VK_UP:
            view.kind->onStep(view, -1);
            break;
        case VK_DOWN:
            view.kind->onStep(view, 1);
            break;
        case VK_LEFT:
        case VK_PRIOR:
            MoveByPage(view, -1);
            break;
        case VK_RIGHT:
        case VK_NEXT:
            MoveByPage(view, 1);
            break;
        case VK_ESCAPE:
            NotifyParent(view, kRowBack);
            break;
        default:
            OnOtherKey(view, key);
    }
    return 0;
}

LRESULT OnScroll(RowView& view, WORD code, WORD position) {
    (void)EnsureLayout(view);
    switch (code) {
        case SB_LINEUP:
            MoveByLine(view, -1);
            break;
        case SB_LINEDOWN:
            MoveByLine(view, 1);
            break;
        case SB_PAGEUP:
            MoveByPage(view, -1);
            break;
        case SB_PAGEDOWN:
            MoveByPage(view, 1);
            break;
        case SB_THUMBPOSITION:
        case SB_THUMBTRACK:
            Follow(view, ThumbTo(view.scroll, ThumbPosition(view, position)));
            ShowScrollPosition(view);  // also where the thumb was dragged too far
            break;
    }
    return 0;
}

// The window itself.

HWND MakeChild(const RowView& view, const wchar_t* className, const wchar_t* text, DWORD style, int id) {
    return CreateWindowExW(0, className, text, WS_CHILD | style, 0, 0, 0, 0, view.window, ChildId(id),
                           view.instance, nullptr);
}

LRESULT OnCreate(RowView& view) {
    const RowViewKind& kind = *view.kind;
    if (kind.headerId)
        view.header = MakeChild(view, WC_HEADERW, L"", WS_VISIBLE | HDS_BUTTONS, kind.headerId);
    view.scrollBar = MakeChild(view, L"SCROLLBAR", kind.scrollBarText, SBS_VERT, kind.scrollBarId);
    if (!view.scrollBar || (kind.headerId && !view.header)) return -1;
    PlaceChildren(view);
    return 0;
}

LRESULT OnSize(RowView& view) {
    const RECT before = view.rowArea;
    PlaceChildren(view);
    const bool minimised = view.client.bottom == 0;
    if (minimised || EqualRect(&before, &view.rowArea)) return 0;
    InvalidateRect(view.window, nullptr, FALSE);  // the line around the view has moved
    view.kind->onSize(view);
    return 0;
}

LRESULT Dispatch(RowView& view, UINT message, WPARAM wParam, LPARAM lParam) {
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
        case WM_LBUTTONDBLCLK:
            SetFocus(view.window);
            break;
    }
    if (view.kind->onMessage && view.kind->onMessage(view, message, lParam)) return 0;
    return DefWindowProcW(view.window, message, wParam, lParam);
}

// The view behind a window; null before WM_CREATE, which brings it.
RowView* ViewOf(HWND window, UINT message, LPARAM lParam) {
    if (message != WM_CREATE) return static_cast<RowView*>(GetWindowPointer(window, 0));
    auto view = static_cast<RowView*>(reinterpret_cast<CREATESTRUCTW*>(lParam)->lpCreateParams);
    SetWindowPointer(window, 0, view);
    view->window = window;
    return view;
}

LRESULT CALLBACK RowViewProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    RowView* view = ViewOf(window, message, lParam);
    if (!view) return DefWindowProcW(window, message, wParam, lParam);
    return Dispatch(*view, message, wParam, lParam);
}

}  // namespace

bool RegisterRowView(const RowViewKind& kind, HINSTANCE instance) {
    WNDCLASSW description = {};
    description.style = CS_DBLCLKS;
    description.lpfnWndProc = RowViewProcedure;
    description.cbWndExtra = kPointerExtra;
    description.hInstance = instance;
    description.hbrBackground = static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH));
    description.lpszClassName = kind.className;
    return RegisterClassW(&description) != 0;
}

bool CreateRowView(RowView& view, const RowViewKind& kind, HINSTANCE instance, HWND parent, int id,
                   const RECT& rectangle) {
    view.kind = &kind;
    view.instance = instance;
    view.parent = parent;
    view.id = id;
    return CreateWindowExW(0, kind.className, L"", WS_CHILD, rectangle.left, rectangle.top,
                           rectangle.right - rectangle.left, rectangle.bottom - rectangle.top, parent,
                           ChildId(id), instance, &view) != nullptr;
}

void ShowRowView(const RowView& view, int showCommand) {
    ShowWindow(view.window, showCommand);
    ShowWindow(view.scrollBar, showCommand);
    UpdateWindow(view.window);
}

void NotifyParent(const RowView& view, WORD notice) {
    SendMessageW(view.parent, WM_COMMAND, MAKEWPARAM(view.id, notice), reinterpret_cast<LPARAM>(view.window));
}

bool EnsureLayout(RowView& view) {
    if (view.layoutValid) return true;
    view.layoutValid = true;
    const WindowDc dc(view.window);
    const Selection font(dc.Get(), view.font);
    view.rowHeight = MeasureRowHeight(view, dc.Get());
    view.scroll.page = RowsPerPage(view);
    view.scroll.top = view.scroll.cursor = view.scroll.total = 0;
    const bool laidOut = view.kind->layOut(view, dc.Get());
    const ErrorKeeper keeper;
    ShowScrollBar(view);
    return laidOut;
}

uint32_t RowsPerPage(const RowView& view) {
    const int height = view.rowArea.bottom - view.rowArea.top;
    return static_cast<uint32_t>(std::max(height, view.rowHeight)) / static_cast<uint32_t>(view.rowHeight);
}

void InvalidateRows(const RowView& view) {
    InvalidateRect(view.window, &view.rowArea, FALSE);
}

void InvalidateRow(const RowView& view, uint32_t row) {
    const RECT area = RowRectangle(view, row);
    InvalidateRect(view.window, &area, FALSE);
}

void MoveByLine(RowView& view, int direction) {
    if (view.scrollPending) return;
    const ScrollResult result = direction > 0 ? LineDown(view.scroll) : LineUp(view.scroll);
    if (result == ScrollResult::kMoved) {
        ScrollRows(view, direction);
    } else {
        Follow(view, result);
    }
}

void MoveByPage(RowView& view, int direction) {
    Follow(view, direction > 0 ? PageDown(view.scroll) : PageUp(view.scroll));
}

void Follow(RowView& view, ScrollResult result) {
    if (result == ScrollResult::kAtEnd) NotifyParent(view, kRowAtEnd);
    if (result == ScrollResult::kMoved) ShowPage(view);
}

void ShowPage(RowView& view) {
    TopChanged(view, 0);
    InvalidateRows(view);
}

void ShowScrollBar(const RowView& view) {
    SetScrollRange(view.scrollBar, SB_CTL, 0, ScrollMaximum(view.scroll), FALSE);
    ShowScrollPosition(view);
}
