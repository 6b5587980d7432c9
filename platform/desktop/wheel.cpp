#include "platform/desktop/wheel.h"

#include <algorithm>
#include <cstdlib>

namespace {

// The whole steps of a turn. A finger on a trackpad turns by less than one: the rest counts towards the next
// turn, unless that goes the other way.
int StepsOf(int& rest, int turn) {
    if ((rest < 0) != (turn < 0)) rest = 0;
    rest += turn;
    const int steps = rest / WHEEL_DELTA;
    rest -= steps * WHEEL_DELTA;
    return steps;
}

// As dragging the thumb does: unlike the arrows that never goes past the end, where a wheel that turns on
// would open the next article. The pane asks the bar for the position, which may not fit the message's 16
// bits.
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
