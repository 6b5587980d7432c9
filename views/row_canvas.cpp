#include "views/row_canvas.h"

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

void RowCanvas::CopyTo(int x, int y) const {
    BitBlt(window_, x, y, width_, height_, Dc(), 0, 0, SRCCOPY);
}

void DrawViewFrame(HDC dc, const RECT& border) {
    const HGDIOBJ brush = SelectObject(dc, GetStockObject(NULL_BRUSH));
    Rectangle(dc, border.left, border.top, border.right, border.bottom);
    SelectObject(dc, brush);
}

int FontHeight(HWND window, HFONT font, int least) {
    TEXTMETRICW metrics = {};
    const HDC dc = GetDC(window);
    const HGDIOBJ old = font ? SelectObject(dc, font) : nullptr;
    GetTextMetricsW(dc, &metrics);
    if (old) SelectObject(dc, old);
    ReleaseDC(window, dc);
    return metrics.tmHeight > least ? metrics.tmHeight : least;
}

uint32_t ThumbPosition(HWND scrollBar, WORD position) {
    SCROLLINFO info = {};
    info.cbSize = sizeof(info);
    info.fMask = SIF_TRACKPOS;
    const bool known = GetScrollInfo(scrollBar, SB_CTL, &info) && LOWORD(info.nTrackPos) == position;
    return known ? static_cast<uint32_t>(info.nTrackPos) : position;
}
