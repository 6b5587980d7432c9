// The command "読み飛ばし" on the group selected in the group view.
#pragma once

#include "shell/app_frame.h"

// Asks what to skip: the articles held now (all marked read), the articles on the server now (never fetched),
// or both. Failures are shown to the user. For RunAlone: a run would write the header that it knows over the
// new one.
void CatchUp(AppFrame& frame);
