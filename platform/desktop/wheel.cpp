#include "platform/desktop/wheel.h"

#include <algorithm>
#include <cstdlib>

namespace {

// Whole steps of a turn: a finger on a trackpad turns by less than one, and the rest counts for the next. A
// turn the other way begins anew.
int StepsOf(int& rest, int turn) {
    if ((rest < 0) != (turn < 0)) rest = 0;
    rest += turn;
    const int steps = rest / WHEEL_DELTA;
    rest -= steps * WHEEL_DELTA;
    return steps;
}

// As if the thumb had been dragged: unlike the arrows it never leads past the end, which would open the next
// article under a wheel that turns on. The pane asks the bar for what the message's 16 bits do not hold.
void ScrollLines(HWND pane, HWND bar, int lines) {
    int least = 0;
    int most = 0;
    GetScrollRange(bar, SB_CTL, &least, &most);
    const int before = GetScrollPos(bar, SB_CTL);
    const int position = std::clamp(before + lines, least, std::max(least, most));
    if (position == before) return;
    SetScrollPos(bar, SB_CTL, position, FALSE);
    SendMessageW(pane, WM_VSCROLL, MAKEWPARAM(SB_THUMBPOSITION, position), reinterpret_cast<LPARAM>(bar));
}

void ScrollPages(HWND pane, HWND bar, int pages) {
    for (int i = 0; i < std::abs(pages); ++i) {
        int least = 0;
        int most = 0;
        GetScrollRange(bar, SB_CTL, &least, &most);
        if (pages > 0 && GetScrollPos(bar, SB_CTL) >= most) return;
        SendMessageW(pane, WM_VSCROLL, pages > 0 ? SB_PAGEDOWN : SB_PAGEUP, reinterpret_cast<LPARAM>(bar));
    }
}

}  // namespace

void TurnWheel(HWND pane, int turn, int& rest) {
    HWND bar = FindWindowExW(pane, nullptr, L"SCROLLBAR", nullptr);
    UINT lines = 3;
    SystemParametersInfoW(SPI_GETWHEELSCROLLLINES, 0, &lines, 0);
    if (!bar || !lines) return;
    if (lines == WHEEL_PAGESCROLL) {
        ScrollPages(pane, bar, -StepsOf(rest, turn));
    } else {
        constexpr UINT kMostLines = 1000;
        ScrollLines(pane, bar, -StepsOf(rest, turn * static_cast<int>(std::min(lines, kMostLines))));
    }
}
