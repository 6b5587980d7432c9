// Measuring within a dialog that the program runs modally.
#pragma once

#include <functional>

#include "platform/platform.h"

// Has `act` done once, in the dialog that opens next, which is then cancelled.
void ActInNextDialog(std::function<void(HWND)> act);
