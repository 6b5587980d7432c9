// Fetches one group's new articles into the store (RFC 977: GROUP, HEAD, BODY).
#pragma once

#include "nntp/connection.h"
#include "nntp/pipeline.h"
#include "nntp/progress_dialog.h"
#include "nntp/run_result.h"
#include "text/owned.h"

// One group of a run; nothing here is owned.
struct GroupDownload {
    NntpConnection* connection = nullptr;
    Pipeline* pipeline = nullptr;
    const wchar_t* group = nullptr;
    const wchar_t* folder = nullptr;  // data folder, ends in a backslash
    uint32_t limit = 0;               // most articles
    ProgressDialog* progress = nullptr;
    RunResult* result = nullptr;
};

// Selects the group, fetches what is new up to the limit and records in the index header how far it got and
// the text of the outcome. The outcome is in `result`: with kError, and with kWarning for a group that
// the server refused, the header is as it was, so that the next run fetches the same articles again.
void DownloadGroup(const GroupDownload& download);
