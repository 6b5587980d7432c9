// Dialogs and message boxes open over the window that they belong to and stay in front of it. The device
// opens them in the middle of the screen, which that window fills; here it may be anywhere.
#pragma once

#include "platform/owners.h"

// Places the dialogs of this thread until the hook goes. Those whose owner does not show open over `frame`;
// those without one get the window in front of it, `frame` itself or a dialog of its own.
// For one frame at a time.
[[nodiscard]] HookOwner PlaceDialogsOver(HWND frame);
