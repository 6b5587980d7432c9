// Shows one pane at a time, with its menu bar and the focus.
#pragma once

#include "shell/app_frame.h"

// Does nothing when the group view is current.
void SwitchToGroupView(AppFrame& frame);

void FocusCurrentView(const AppFrame& frame);

// Brings the menus' check marks in step with the view options.
void ShowCheckMarks(const AppFrame& frame);
