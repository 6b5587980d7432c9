// One run's conversation: the connection, the server, and where the outcome goes.
#pragma once

#include "nntp/login.h"
#include "nntp/run_result.h"

struct Conversation {
    ServerAccount server;
    RunResult* result = nullptr;  // not owned
    NntpConnection connection;
    ReplyLine line;  // the reply line read last
};

// Connects and logs in. False, with the last error set and the reason in `result`. May be called again once
// the connection was closed.
[[nodiscard]] bool Open(Conversation& conversation);

// Sends QUIT and closes without waiting for the reply. Does nothing when there is no connection.
void Close(Conversation& conversation);
