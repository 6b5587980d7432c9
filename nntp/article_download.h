// Fetches one group's new articles into the store (RFC 977: GROUP, HEAD, BODY).
#pragma once

#include "nntp/conversation.h"
#include "nntp/pipeline.h"
#include "nntp/progress_dialog.h"

// What a run works on; nothing here is owned.
struct Run {
    Conversation* conversation = nullptr;
    Pipeline* pipeline = nullptr;
    const wchar_t* folder = nullptr;  // data folder, ends in a backslash
    uint32_t limit = 0;               // most articles a group
    ProgressDialog* progress = nullptr;
};

// Selects the group, fetches its new articles up to the limit, and stores in the index header how far it got
// and the text of the outcome, which is also in the conversation's result. The next run fetches the same
// articles again after kError, which leaves the header unchanged, and after kWarning (the server refused the
// group), which changes only the text. When the server's replies leave doubt, the conversation is opened
// anew.
// `next` is the group of the row that comes next, null for none: its GROUP may leave ahead (nntp/pipeline.h).
void DownloadGroup(const Run& run, const wchar_t* group, const wchar_t* next);
