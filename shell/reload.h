// Start-up of the data folder, and the group view's rows after every change of what it holds.
#pragma once

#include "shell/app_frame.h"

// Makes the data folder's own files, brings every subscribed group's index up to date and fills the group
// view. A failure is shown to the user.
[[nodiscard]] bool ReloadData(AppFrame& frame);

// Reads the settings that the properties sheet has stored, and shows what they change.
void UseNewSettings(AppFrame& frame);
