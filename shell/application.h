// The program from its start to its end.
#pragma once

#include "platform/platform.h"

// Runs Pelnor: a second instance brings the first one forward and ends. Returns the process's exit code.
int RunPelnor(HINSTANCE instance, int showCommand);
