// The commands of the drafts pane.
#pragma once

#include "shell/app_frame.h"

void OnDraftCommand(AppFrame& frame, UINT id);
