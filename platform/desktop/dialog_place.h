// Dialogs and message boxes open over the window that they belong to. On the device that fills the screen in
// whose middle they open; here it may stand anywhere.
#pragma once

#include <windows.h>

// The rectangle moved, and made smaller where it must be, until it lies within `area`.
RECT MovedInto(const RECT& place, const RECT& area);

// From now on, for the dialogs of this thread, until StopPlacingDialogs. Those without an owner that shows
// count as the frame's. There is one frame at a time.
void PlaceDialogsOver(HWND frame);
void StopPlacingDialogs();
