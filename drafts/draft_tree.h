// The fourth pane: the articles that the user writes, as a tree of three folders, newsgroups and subjects.
#pragma once

#include "platform/owners.h"

enum DraftFolder { kWaitingDrafts = 0, kUnfinishedDrafts = 1, kSentDrafts = 2, kDraftFolderCount = 3 };

struct DraftTree {
    HWND tree = nullptr;  // the control; owned by its parent window
    ImageListOwner imageList;
    HTREEITEM roots[kDraftFolderCount] = {};
};

// Makes the control and its images; false when either cannot be made.
[[nodiscard]] bool CreateDraftTree(DraftTree& drafts, HWND parent, const RECT& rectangle, int id,
                                   HINSTANCE instance);

void ShowDraftTree(const DraftTree& drafts, int showCommand);

// Shows the "*.txt" files of the draft folder, whose path ends in a backslash. A file that cannot be read is
// left out. False when a newsgroups node cannot be inserted.
[[nodiscard]] bool FillDraftTree(DraftTree& drafts, const wchar_t* folder);

// The folder that a draft's file name puts it into: 'o' waiting to be sent, 's' sent, else unfinished.
DraftFolder FolderOfDraft(const wchar_t* fileName);
