// What the menus, the menu bars and the accelerators do: the table of commands, and the commands that have a
// file of their own. Failures are shown to the user.
#pragma once

#include "shell/app_frame.h"

// `origin` is WM_COMMAND's high word: 0 a menu, 1 an accelerator, else a child's notification code.
void OnCommand(AppFrame& frame, UINT id, UINT origin);

// "About": the program's name, version and licence.
void ShowAbout(AppFrame& frame);

// For RunAlone: a run walks the group view's rows, and writes each header back as it read it.

// "購読": the groups.
void Subscribe(AppFrame& frame);

// "既読削除": asks, then deletes the read articles of every subscribed group. A failure is shown under
// the group's name, and the next group follows.
void DeleteReadArticles(AppFrame& frame);

// "読み飛ばし" on the selected group: asks whether to mark all its articles read, never to fetch those on the
// server now, or both.
void CatchUp(AppFrame& frame);

// For any time.

// "フィルタ...": the keywords of the group that is open in the subject view, with the subject of the cursor's
// article as a proposal.
void EditKeywords(AppFrame& frame);

// "起草": writing is not part of this version; shows which property it lacks, or a placeholder.
void Compose(AppFrame& frame);

// Lets the user choose a program, and shows the choice.
void ChooseExe(AppFrame& frame);
