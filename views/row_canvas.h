// Draws one row at a time off the screen, so that nothing flickers and only whole rows reach the window.
#pragma once

#include <cstdint>

#include "platform/owners.h"

// A memory bitmap of one row. Its drawing starts at (0, 0).
class RowCanvas {
  public:
    // `font` may be null: the system's then. Without memory IsReady is false and nothing is drawn.
    RowCanvas(HDC window, int width, int height, HFONT font);
    ~RowCanvas();
    RowCanvas(const RowCanvas&) = delete;
    RowCanvas& operator=(const RowCanvas&) = delete;

    bool IsReady() const { return dc_ && bitmap_; }
    HDC Dc() const { return dc_.Get(); }
    void Clear();                     // to the window's background
    void CopyTo(int x, int y) const;  // onto the window

  private:
    HDC window_;
    int width_;
    int height_;
    DcOwner dc_;
    BitmapOwner bitmap_;
    HGDIOBJ oldBitmap_ = nullptr;
    HGDIOBJ oldFont_ = nullptr;
};

// The frame line around a view, one pixel wide.
void DrawViewFrame(HDC dc, const RECT& border);

// Height of a line in `font`, or of the system's font when it is null; at least `least`.
int FontHeight(HWND window, HFONT font, int least);

// Where the thumb of a scroll bar control is, from a WM_VSCROLL message whose 16 bits may not hold it all.
uint32_t ThumbPosition(HWND scrollBar, WORD position);
