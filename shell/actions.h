// What single commands do, each in a file of its own. Failures are shown to the user.
#pragma once

#include "shell/app_frame.h"

// "About": the program's name, version and licence.
void ShowAbout(AppFrame& frame);

// For RunAlone, since a run walks the group view's rows, and writes a header as it read it.

// "購読": the groups.
void Subscribe(AppFrame& frame);

// "既読削除": asks, then deletes the read articles of every subscribed group. A group that fails is shown
// under its name, and the next one follows.
void DeleteReadArticles(AppFrame& frame);

// "読み飛ばし" on the selected group: asks what to skip: the articles held now (all marked read), the
// articles on the server now (never fetched), or both.
void CatchUp(AppFrame& frame);

// "フィルタ...": the keywords of the group that is open in the subject view, with the subject of the cursor's
// article as a proposal.
void EditKeywords(AppFrame& frame);

// "起草": writing itself is not part of this version; shows who would write, or what is missing for it.
void Compose(AppFrame& frame);

// Lets the user choose a program, and shows the choice.
void ChooseExe(AppFrame& frame);
