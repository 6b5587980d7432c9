// One run: logs in, fetches the groups in the order of the cursor, and sends QUIT (RFC 977). Runs on the
// worker thread.
#pragma once

#include "nntp/group_cursor.h"
#include "nntp/login.h"
#include "nntp/progress_dialog.h"
#include "nntp/run_result.h"

// Nothing here is owned.
struct SessionRequest {
    ServerAccount server;
    const wchar_t* folder = nullptr;  // data folder, ends in a backslash
    uint32_t limit = 0;               // most articles a group
    GroupCursor* cursor = nullptr;
    ProgressDialog* progress = nullptr;
    RunResult* result = nullptr;
};

// False when the run stopped with an error: the last error is set, and its text is in `result`.
bool RunSession(const SessionRequest& request);
