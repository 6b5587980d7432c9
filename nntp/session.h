// One run: logs in, fetches every group of the cursor in its order, and says QUIT (RFC 977). Runs on the
// worker thread; what went wrong is in the result.
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

// False, with the last error set, when the run stopped with an error that `result` tells the user.
bool RunSession(const SessionRequest& request);
