// Shows one pane at a time, with its menu bar and the focus.
#pragma once

#include "shell/app_frame.h"

// Each switch does nothing when its view is current.

// Writes the open group's read marks back and shows its unread count.
void SwitchToGroupView(AppFrame& frame);

// Opens a group, which stands in row `row` of the group view. A group that cannot be opened is told to the
// user, and the view stays.
void SwitchToSubjectView(AppFrame& frame, const wchar_t* group, uint32_t row);

// Back to the group that is open.
void SwitchToSubjectView(AppFrame& frame);

// Marks the subject view's current article as read and shows it. An article that cannot be read is told to
// the user, and the view stays.
void OpenCurrentArticle(AppFrame& frame);

// Goes on to the next article of the group; at its end the article stays.
void OpenNextArticle(AppFrame& frame);

// Shows the drafts of the settings' draft folder.
void SwitchToDrafts(AppFrame& frame);

void FocusCurrentView(const AppFrame& frame);

// Brings the menus' check marks in step with the view options.
void ShowCheckMarks(const AppFrame& frame);
