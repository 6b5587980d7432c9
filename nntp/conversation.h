// One run's conversation: what it talks over, with whom, and where its outcome goes.
#pragma once

#include "nntp/login.h"
#include "nntp/run_result.h"

struct Conversation {
    ServerAccount server;
    RunResult* result = nullptr;  // not owned
    NntpConnection connection;
    ReplyLine line;  // the reply line read last
};

// Connects and logs in. False, with the last error, when `result` says why not. May be called again once the
// connection was closed.
[[nodiscard]] bool Open(Conversation& conversation);

// Sends QUIT, without waiting for its reply, and closes; nothing where no connection was made.
void Close(Conversation& conversation);
