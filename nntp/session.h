// One run's conversation with the server (RFC 977; authinfo: RFC 2980, section 3.1.1): greeting, login, every
// group of the cursor in its order, QUIT. Runs on the worker thread; what went wrong is in the result.
#pragma once

#include "nntp/connection.h"
#include "nntp/group_cursor.h"
#include "nntp/progress_dialog.h"
#include "nntp/run_result.h"

// Nothing here is owned.
struct SessionRequest {
    const wchar_t* server = nullptr;
    uint16_t port = 0;
    const wchar_t* folder = nullptr;  // data folder, ends in a backslash
    uint32_t limit = 0;               // most articles a group
    const char* user = nullptr;       // with a null user or password no login is sent
    const char* password = nullptr;
    GroupCursor* cursor = nullptr;
    ProgressDialog* progress = nullptr;
    RunResult* result = nullptr;
    uint32_t receiveTimeout = kReceiveTimeout;
};

// False, with the last error set, when the run stopped with an error that `result` tells the user.
bool RunSession(const SessionRequest& request);
