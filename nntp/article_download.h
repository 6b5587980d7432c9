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

// Selects the group, fetches what is new up to the limit and records in the index header how far it got and
// the text of the outcome, which is in the conversation's result. With kError the header is as it was, and
// with kWarning, for a group that the server refused, all of it but the text: the next run fetches the same
// articles again. Where the server's replies leave doubt, the conversation is opened anew.
void DownloadGroup(const Run& run, const wchar_t* group);
