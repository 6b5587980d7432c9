// The command "既読削除".
#pragma once

#include "shell/app_frame.h"

// Asks, then deletes the read articles of every subscribed group; a group that fails is told under its name
// and the next one follows. For RunAlone: a run writes at the places that it found when it began.
void DeleteReadArticles(AppFrame& frame);
