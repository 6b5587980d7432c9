// The commands that choose what to read: the groups ("購読") and a group's keywords ("フィルタ...").
#pragma once

#include "shell/app_frame.h"

// For RunAlone: a run walks the rows that are filled anew.
void Subscribe(AppFrame& frame);

// For the group that is open in the subject view, with the subject of the cursor's article as a proposal.
void EditKeywords(AppFrame& frame);
