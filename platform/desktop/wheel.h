// The mouse wheel. Lists and trees turn by themselves; this is for a pane with a scroll bar control of its
// own, which handles the bar's messages only.
#pragma once

#include <windows.h>

// Scrolls the pane by `turn` (WHEEL_DELTA a notch, up above 0) times the user's number of lines or pages,
// never past the ends. `rest` keeps what a turn leaves of a step for the next one, 0 at first.
void TurnWheel(HWND pane, int turn, int& rest);
