// The main frame's window: what happens when it is made and destroyed, and who handles its messages.
#pragma once

#include "platform/platform.h"

[[nodiscard]] bool RegisterFrameClass(HINSTANCE instance);
