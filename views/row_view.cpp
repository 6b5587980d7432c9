#include "views/row_view.h"

#include "platform/platform.h"

namespace {

constexpr int kBorder = 1;
constexpr int kScrollBarWidth = 16;

}  // namespace

bool RegisterRowViewClass(const wchar_t* name, WNDPROC procedure, HINSTANCE instance) {
    WNDCLASSW description = {};
    description.style = CS_DBLCLKS;
    description.lpfnWndProc = procedure;
    description.cbWndExtra = kPointerExtra;
    description.hInstance = instance;
    description.hbrBackground = static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH));
    description.lpszClassName = name;
    return RegisterClassW(&description) != 0;
}

bool CreateRowView(RowView& view, const wchar_t* className, const RECT& rectangle, void* state) {
    return CreateWindowExW(0, className, L"", WS_CHILD, rectangle.left, rectangle.top,
                           rectangle.right - rectangle.left, rectangle.bottom - rectangle.top, view.parent,
                           ChildId(view.id), view.instance, state) != nullptr;
}

bool CreateScrollBar(RowView& view, const wchar_t* text, int scrollBarId) {
    view.scrollBar = CreateWindowExW(0, L"SCROLLBAR", text, WS_CHILD | SBS_VERT, 0, 0, 0, 0, view.window,
                                     ChildId(scrollBarId), view.instance, nullptr);
    return view.scrollBar != nullptr;
}

void ShowRowView(const RowView& view, int showCommand) {
    ShowWindow(view.window, showCommand);
    ShowWindow(view.scrollBar, showCommand);
    UpdateWindow(view.window);
}

void NotifyParent(const RowView& view, WORD notice) {
    SendMessageW(view.parent, WM_COMMAND, MAKEWPARAM(view.id, notice), reinterpret_cast<LPARAM>(view.window));
}

void PlaceRowArea(RowView& view, int headerHeight) {
    GetClientRect(view.window, &view.client);
    const RECT& client = view.client;
    view.rowArea = {client.left + kBorder, client.top + kBorder + headerHeight,
                    client.right - kBorder - kScrollBarWidth, client.bottom - kBorder};
    MoveWindow(view.scrollBar, view.rowArea.right, view.rowArea.top, kScrollBarWidth,
               view.rowArea.bottom - view.rowArea.top, TRUE);
}

void MeasureRowHeight(RowView& view, int least) {
    view.rowHeight = least;
    if (!view.font) return;
    TEXTMETRICW metrics = {};
    const HDC dc = GetDC(view.window);
    const HGDIOBJ old = SelectObject(dc, view.font);
    GetTextMetricsW(dc, &metrics);
    if (old) SelectObject(dc, old);
    ReleaseDC(view.window, dc);
    if (metrics.tmHeight > least) view.rowHeight = metrics.tmHeight;
}

uint32_t RowsPerPage(const RowView& view) {
    const int rows = (view.rowArea.bottom - view.rowArea.top) / view.rowHeight;
    return rows > 0 ? static_cast<uint32_t>(rows) : 1;
}

RECT RowRectangle(const RowView& view, uint32_t row) {
    RECT area = view.rowArea;
    area.top += static_cast<LONG>(row) * view.rowHeight;
    area.bottom = area.top + view.rowHeight;
    return area;
}

void InvalidateRows(const RowView& view) {
    InvalidateRect(view.window, &view.rowArea, FALSE);
}

void InvalidateRow(const RowView& view, uint32_t row) {
    const RECT area = RowRectangle(view, row);
    InvalidateRect(view.window, &area, FALSE);
}

void ScrollRowPixels(RowView& view, const RECT& area, int direction) {
    ScrollWindowEx(view.window, 0, -direction * view.rowHeight, &area, &area, nullptr, nullptr,
                   SW_INVALIDATE);
    view.scrollPending = true;
}

void SetScrollBar(const RowView& view, int maximum, uint32_t position) {
    SetScrollRange(view.scrollBar, SB_CTL, 0, maximum, FALSE);
    ShowScrollPosition(view, position);
}

void ShowScrollPosition(const RowView& view, uint32_t position) {
    SetScrollPos(view.scrollBar, SB_CTL, static_cast<int>(position), TRUE);
}

uint32_t ThumbPosition(const RowView& view, WORD position) {
    SCROLLINFO info = {};
    info.cbSize = sizeof(info);
    info.fMask = SIF_TRACKPOS;
    const bool known = GetScrollInfo(view.scrollBar, SB_CTL, &info) && LOWORD(info.nTrackPos) == position;
    return known ? static_cast<uint32_t>(info.nTrackPos) : position;
}

void PaintAround(const RowView& view, HDC dc, uint32_t rows) {
    RECT rest = view.rowArea;
    rest.top += static_cast<LONG>(rows) * view.rowHeight;
    if (rest.top < rest.bottom) FillRect(dc, &rest, static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH)));
    const HGDIOBJ brush = SelectObject(dc, GetStockObject(NULL_BRUSH));
    Rectangle(dc, view.client.left, view.client.top, view.client.right, view.client.bottom);
    SelectObject(dc, brush);
}

RowCanvas::RowCanvas(HDC window, int width, int height, HFONT font)
    : window_(window),
      width_(width),
      height_(height),
      dc_(CreateCompatibleDC(window)),
      bitmap_(CreateCompatibleBitmap(window, width, height)) {
    if (!IsReady()) return;
    oldBitmap_ = SelectObject(Dc(), bitmap_.Get());
    if (font) oldFont_ = SelectObject(Dc(), font);
}

RowCanvas::~RowCanvas() {
    if (oldFont_) SelectObject(Dc(), oldFont_);
    if (oldBitmap_) SelectObject(Dc(), oldBitmap_);
}

void RowCanvas::Clear() {
    PatBlt(Dc(), 0, 0, width_, height_, WHITENESS);
}

void RowCanvas::CopyTo(const RECT& area) const {
    const int height = area.bottom - area.top;
    BitBlt(window_, area.left, area.top, width_, height < height_ ? height : height_, Dc(), 0, 0, SRCCOPY);
}
