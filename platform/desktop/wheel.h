// The mouse wheel. Lists and trees handle it themselves; this is for a pane with a scroll bar control of its
// own, which handles only the bar's messages.
#pragma once

#include <windows.h>

// Scrolls the pane by `turn` (WHEEL_DELTA a notch, up above 0) times the user's number of lines or pages,
// never past the ends. `rest`, 0 at first, keeps what is left of a step for the next turn.
void TurnWheel(HWND pane, int turn, int& rest);
