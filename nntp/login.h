// Opens a conversation with a news server (RFC 977; authinfo: RFC 2980, section 3.1.1). Shows nothing and
// makes no texts: those differ from caller to caller. Runs on worker threads; blocks.
#pragma once

#include "nntp/connection.h"

// Whom to talk to, and as whom. Nothing is owned; it outlives the conversation.
struct ServerAccount {
    const wchar_t* name = nullptr;  // or a dotted address; what a message calls the server
    uint16_t port = 0;
    const char* user = nullptr;  // with a null user or password no login is sent
    const char* password = nullptr;
    const char* loginEnd = "";  // follows each login command, before its line end
};

// Sends `word`, `argument` and `end` as one line. False when memory runs out or the line is too long.
[[nodiscard]] bool Say(NntpConnection& connection, const char* word, const char* argument,
                       const char* end = "");

// What became of one command.
enum class Asked { kAnswered, kNotSent, kNotAnswered };

// Says it and reads the status line.
Asked Ask(NntpConnection& connection, ReplyLine& line, const char* word, const char* argument,
          const char* end = "");

// How far the opening got, in order. When a reply decided that, it is in `line`; else the last error gives
// the reason.
enum class Opening {
    kOpen,
    kNotConnected,
    kNoGreeting,
    kRefused,
    kUserNotSent,
    kUserNotAnswered,
    kWrongUser,
    kPasswordNotSent,
    kPasswordNotAnswered,
    kWrongPassword,
};

// Connects to `host`, the server's name in 8-bit text, reads the greeting and logs in. The caller closes the
// connection whatever the outcome.
Opening OpenConversation(NntpConnection& connection, const char* host, const ServerAccount& server,
                         ReplyLine& line);
