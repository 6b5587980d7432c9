#pragma once

#include "platform/platform.h"

// Shows the program's name, version and licence, modally.
void RunAboutBox(HINSTANCE instance, HWND owner);
