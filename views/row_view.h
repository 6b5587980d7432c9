// What the two hand-drawn views share: a child window with a scroll bar at its right edge and rows of equal
// height, each drawn off the screen, so that nothing flickers.
#pragma once

#include <cstdint>

#include "platform/owners.h"

struct RowView {
    HWND window = nullptr;  // owned by its parent, as is the scroll bar
    HWND scrollBar = nullptr;
    HWND parent = nullptr;  // told by WM_COMMAND what the user wants
    int id = 0;
    HINSTANCE instance = nullptr;
    RECT client = {};
    RECT rowArea = {};  // where the rows are drawn
    int rowHeight = 0;
    HFONT font = nullptr;        // the settings' font; not owned, may be null
    bool layoutValid = false;    // the rows are measured and counted
    bool scrollPending = false;  // rows were moved on the screen and not painted since
};

// Registers a window class whose windows keep one pointer and paint themselves whole.
[[nodiscard]] bool RegisterRowViewClass(const wchar_t* name, WNDPROC procedure, HINSTANCE instance);

// Makes the hidden child window; `state` reaches its procedure with WM_CREATE.
[[nodiscard]] bool CreateRowView(RowView& view, const wchar_t* className, const RECT& rectangle, void* state);

// Makes the scroll bar, in WM_CREATE.
[[nodiscard]] bool CreateScrollBar(RowView& view, const wchar_t* text, int scrollBarId);

// The view behind a window; null before WM_CREATE, which brings it.
template <class View>
View* ViewOf(HWND window, UINT message, LPARAM lParam) {
    if (message != WM_CREATE) return static_cast<View*>(GetWindowPointer(window, 0));
    auto view = static_cast<View*>(reinterpret_cast<CREATESTRUCTW*>(lParam)->lpCreateParams);
    SetWindowPointer(window, 0, view);
    view->window = window;
    return view;
}

void ShowRowView(const RowView& view, int showCommand);
void NotifyParent(const RowView& view, WORD notice);

// Fits the row area, below `headerHeight` pixels, and the scroll bar to the window.
void PlaceRowArea(RowView& view, int headerHeight);

// Height of a line in the view's font, and at least `least`, which is all there is without a font.
void MeasureRowHeight(RowView& view, int least);

uint32_t RowsPerPage(const RowView& view);  // at least 1
RECT RowRectangle(const RowView& view, uint32_t row);

void InvalidateRows(const RowView& view);
void InvalidateRow(const RowView& view, uint32_t row);

// Moves what is drawn in `area` by one row, up for a direction above 0, down below.
void ScrollRowPixels(RowView& view, const RECT& area, int direction);

void SetScrollBar(const RowView& view, int maximum, uint32_t position);
void ShowScrollPosition(const RowView& view, uint32_t position);

// Where the thumb is, from a WM_VSCROLL message whose 16 bits may not hold it all.
uint32_t ThumbPosition(const RowView& view, WORD position);

// The strip below the last of `rows` rows, if any, and the line around the view.
void PaintAround(const RowView& view, HDC dc, uint32_t rows);

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
    void Clear();                         // to the window's background
    void CopyTo(const RECT& area) const;  // onto the window; what does not fit is left out

  private:
    HDC window_;
    int width_;
    int height_;
    DcOwner dc_;
    BitmapOwner bitmap_;
    HGDIOBJ oldBitmap_ = nullptr;
    HGDIOBJ oldFont_ = nullptr;
};
