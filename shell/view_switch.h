// Shows one pane at a time, with its menu bar and the focus.
#pragma once

#include "shell/app_frame.h"

// Each switch does nothing when its view is current.

// Writes the open group's read marks back and shows its unread count.
void SwitchToGroupView(AppFrame& frame);

// Opens the group of row `row` in the group view. A failure is shown to the user, and the view stays.
void SwitchToSubjectView(AppFrame& frame, const wchar_t* group, uint32_t row);

// Back to the group that is open.
void SwitchToSubjectView(AppFrame& frame);

// Marks the subject view's current article as read and shows it. A failure is shown to the
// user, and the view stays.
void OpenCurrentArticle(AppFrame& frame);

// Goes on to the next article of the group; at its end the article stays.
void OpenNextArticle(AppFrame& frame);

// Shows the drafts of the settings' draft folder.
void SwitchToDrafts(AppFrame& frame);

void FocusCurrentView(const AppFrame& frame);

// Shows the view options as check marks in the menus.
void ShowCheckMarks(const AppFrame& frame);
