#include "nntp/conversation.h"

#include "resources/resource.h"
#include "text/convert.h"
#include "text/last_error.h"

namespace {

bool FailPlainly(RunResult& result, const wchar_t* title, UINT id) {
    SetResult(result, title, id, kError);
    return false;
}

}  // namespace

bool Open(Conversation& conversation) {
    constexpr wchar_t kSocketCaption[] = L"Socket Error";
    RunResult& result = *conversation.result;
    const ServerAccount& server = conversation.server;
    InitConnection(conversation.connection);
    const NarrowText host = ToNarrow(server.name);
    if (!host) return FailPlainly(result, kProgramCaption, IDS_NO_MEMORY);
    switch (OpenConversation(conversation.connection, host.get(), server, conversation.line)) {
        case Opening::kNotConnected:
            return FailPlainly(result, server.name, IDS_CANNOT_CONNECT);
        case Opening::kNoGreeting:
            return FailPlainly(result, server.name, IDS_NO_ANSWER);
        case Opening::kRefused:
            return FailWithReply(result, IDS_CONNECTION_REFUSED, conversation.line);
        case Opening::kUserNotSent:
            return FailWithError(result, kProgramCaption, IDS_SEND_FAILED);
        case Opening::kUserNotAnswered:
            return FailWithError(result, kProgramCaption, IDS_RECEIVE_FAILED);
        case Opening::kWrongUser:
            return FailWithReply(result, IDS_WRONG_USER, conversation.line);
        case Opening::kPasswordNotSent:
            return FailWithError(result, kSocketCaption, IDS_SEND_FAILED);
        case Opening::kPasswordNotAnswered:
            return FailWithError(result, kSocketCaption, IDS_RECEIVE_FAILED);
        case Opening::kWrongPassword:
            return FailWithReply(result, IDS_WRONG_PASSWORD, conversation.line);
        case Opening::kOpen:
            break;
    }
    return true;
}

void Close(Conversation& conversation) {
    if (!conversation.connection.socket) return;
    (void)SendLine(conversation.connection, "QUIT");
    CloseConnection(conversation.connection);
}
