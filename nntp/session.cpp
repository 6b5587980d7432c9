#include "nntp/session.h"

#include "nntp/article_download.h"
#include "resources/resource.h"
#include "text/last_error.h"

namespace {

struct Session {
    Conversation conversation;
    Pipeline pipeline;
};

bool DownloadGroups(const Run& run, GroupCursor& cursor) {
    RunResult& result = *run.conversation->result;
    ResetCursor(cursor);
    while (const wchar_t* group = CurrentGroup(cursor)) {
        result.severity = kInformation;
        DownloadGroup(run, group);
        if (result.severity == kError) return false;
        AdvanceCursor(cursor);
    }
    return true;
}

}  // namespace

bool RunSession(const SessionRequest& request) {
    std::unique_ptr<Session> session(new (std::nothrow) Session);
    if (!session) {
        SetResult(*request.result, kProgramCaption, IDS_NO_MEMORY, kError);
        return Fail(kErrorNoMemory);
    }
    Conversation& conversation = session->conversation;
    conversation.server = request.server;
    conversation.result = request.result;
    const Run run = {&conversation, &session->pipeline, request.folder, request.limit, request.progress};
    const bool done = Open(conversation) && DownloadGroups(run, *request.cursor);
    const ErrorKeeper keeper;
    Close(conversation);
    return done;
}
