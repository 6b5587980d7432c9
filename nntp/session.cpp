#include "nntp/session.h"

#include <utility>

#include "nntp/article_download.h"
#include "resources/resource.h"
#include "text/last_error.h"

namespace {

struct Session {
    Conversation conversation;
    Pipeline pipeline;
    GroupCursor ahead;
};

// Two cursors take turns, so that the next row is read only once, and early.
bool DownloadGroups(const Run& run, GroupCursor* cursor, GroupCursor* ahead) {
    RunResult& result = *run.conversation->result;
    ResetCursor(*cursor);
    const wchar_t* group = CurrentGroup(*cursor);
    while (group) {
        *ahead = *cursor;
        AdvanceCursor(*ahead);
        const wchar_t* next = CurrentGroup(*ahead);
        result.severity = kInformation;
        DownloadGroup(run, group, next);
        if (result.severity == kError) return false;
        std::swap(cursor, ahead);
        group = next;
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
    const bool done = Open(conversation) && DownloadGroups(run, request.cursor, &session->ahead);
    const ErrorKeeper keeper;
    Close(conversation);
    return done;
}
