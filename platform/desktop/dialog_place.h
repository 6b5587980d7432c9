// Dialogs and message boxes open over the window that they belong to. On the device that fills the screen in
// whose middle they open; here it may be anywhere.
#pragma once

#include "platform/owners.h"

// Places the dialogs of this thread until the hook goes. Those whose owner does not show open over `frame`.
// For one frame at a time.
[[nodiscard]] HookOwner PlaceDialogsOver(HWND frame);
