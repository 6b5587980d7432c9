// Dialogs and message boxes open over the window that they belong to. The device opens them in the middle of
// the screen, which that window fills; here it may be anywhere.
#pragma once

#include "platform/owners.h"

// Places the dialogs of this thread until the hook goes. Those whose owner does not show open over `frame`.
// For one frame at a time.
[[nodiscard]] HookOwner PlaceDialogsOver(HWND frame);
