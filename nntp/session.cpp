#include "nntp/session.h"

#include "nntp/article_download.h"
#include "nntp/connection.h"
#include "nntp/reply.h"
#include "resources/resource.h"
#include "text/convert.h"
#include "text/last_error.h"

namespace {

struct Session {
    const SessionRequest* request = nullptr;
    NntpConnection connection;
    Pipeline pipeline;
    ReplyLine line;
};

bool FailPlainly(RunResult& result, const wchar_t* title, UINT id) {
    const unsigned error = GetError();
    SetResult(result, title, LoadResString(id), kError);
    return Fail(error);
}

bool Open(Session& session) {
    const SessionRequest& request = *session.request;
    RunResult& result = *request.result;
    const NarrowText server = ToNarrow(request.server);
    if (!server) return FailPlainly(result, kProgramCaption, IDS_NO_MEMORY);
    if (!Connect(session.connection, server.get(), request.port)) {
        return FailPlainly(result, request.server, IDS_CANNOT_CONNECT);
    }
    if (!ReadReplyLine(session.connection, session.line, false)) {
        return FailPlainly(result, request.server, IDS_NO_ANSWER);
    }
    return IsSuccess(session.line) || FailWithReply(result, IDS_CONNECTION_REFUSED, session.line);
}

// Sends one login command and reads its reply.
bool Ask(Session& session, const char* word, const char* argument, const wchar_t* title) {
    RunResult& result = *session.request->result;
    const NarrowText command = MakeCommand(word, argument);
    if (!command || !SendLine(session.connection, command.get())) {
        return FailWithError(result, title, IDS_SEND_FAILED);
    }
    SetError(0);
    return ReadReplyLine(session.connection, session.line, false) ||
           FailWithError(result, title, IDS_RECEIVE_FAILED);
}

bool LogIn(Session& session) {
    const SessionRequest& request = *session.request;
    if (!request.user || !request.password) return true;
    if (!Ask(session, "authinfo user ", request.user, kProgramCaption)) return false;
    if (!AsksForMore(session.line)) return FailWithReply(*request.result, IDS_WRONG_USER, session.line);
    if (!Ask(session, "authinfo pass ", request.password, L"Socket Error")) return false;
    return IsSuccess(session.line) || FailWithReply(*request.result, IDS_WRONG_PASSWORD, session.line);
}

bool DownloadGroups(Session& session) {
    const SessionRequest& request = *session.request;
    ResetCursor(*request.cursor);
    while (const wchar_t* group = CurrentGroup(*request.cursor)) {
        request.result->severity = kInformation;
        DownloadGroup({&session.connection, &session.pipeline, group, request.folder, request.limit,
                       request.progress, request.result});
        if (request.result->severity == kError) return false;
        AdvanceCursor(*request.cursor);
    }
    return true;
}

void Close(Session& session) {
    if (session.connection.socket == INVALID_SOCKET) return;
    (void)SendLine(session.connection, "QUIT");
    CloseConnection(session.connection);
}

}  // namespace

bool RunSession(const SessionRequest& request) {
    std::unique_ptr<Session> session(new (std::nothrow) Session);
    if (!session) {
        SetError(kErrorNoMemory);
        return FailPlainly(*request.result, kProgramCaption, IDS_NO_MEMORY);
    }
    session->request = &request;
    InitConnection(session->connection);
    session->connection.receiveTimeout = request.receiveTimeout;
    const bool done = Open(*session) && LogIn(*session) && DownloadGroups(*session);
    const unsigned error = GetError();
    Close(*session);
    return done || Fail(error);
}
