// What the menus, the menu bars and the accelerators do.
#pragma once

#include "shell/app_frame.h"

// `origin` is WM_COMMAND's high word: 0 a menu, 1 an accelerator, else a child's notification code.
void OnCommand(AppFrame& frame, UINT id, UINT origin);

// Whether something is done at this id.
bool IsCommand(UINT id);
