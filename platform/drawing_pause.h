// Filling a list that shows.
#pragma once

#include "platform/platform.h"

// While it lives, a window is not drawn, which costs a list more than its rows do, even where a parent hides
// it; then it is drawn whole. One that is hidden itself would come into sight at the end, so it is left
// alone. The last error survives.
class DrawingPause {
  public:
    explicit DrawingPause(HWND window)
        : window_(GetWindowLongW(window, GWL_STYLE) & WS_VISIBLE ? window : nullptr) {
        if (window_) SendMessageW(window_, WM_SETREDRAW, FALSE, 0);
    }
    ~DrawingPause() {
        if (!window_) return;
        const DWORD error = GetLastError();
        SendMessageW(window_, WM_SETREDRAW, TRUE, 0);
        InvalidateRect(window_, nullptr, TRUE);
        SetLastError(error);
    }
    DrawingPause(const DrawingPause&) = delete;
    DrawingPause& operator=(const DrawingPause&) = delete;

  private:
    HWND window_;
};
