// The program from its start to its end.
#pragma once

#include "platform/platform.h"

struct AppFrame;

// Registers the window classes, makes the main frame with its panes and shows it; the frame record outlives
// its window. False with the last error. A start that the user ended leaves `ended` set.
[[nodiscard]] bool OpenFrame(AppFrame& frame, HINSTANCE instance, int showCommand);

// Runs Pelnor: a second instance brings the first one forward and ends. Returns the process's exit code.
int RunPelnor(HINSTANCE instance, int showCommand);
