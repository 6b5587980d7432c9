// The user of a program that the loops run: answers its message boxes and uses its dialogs.
#pragma once

#include <functional>
#include <string>

#include "platform/platform.h"

// "caption: text" of each message box since the last call, a line each. Boxes are answered with OK.
std::string TakeBoxes();

// What the user does in the next modal dialog, once it stands and the program's threads have run. The dialog
// ends when its code ends it.
void UseNextDialog(std::function<void(HWND)> user);

// No dialog can be made, which saves time; the program goes on without it.
void RefuseDialogs(bool refuse);
