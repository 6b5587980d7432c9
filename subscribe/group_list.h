// Fetches the server's whole list of newsgroups (RFC 977: LIST; RFC 2980, section 2.1.2: LIST ACTIVE) into
// "active.dat", every name, and "category.dat", the distinct first components of the names in the order of
// their first appearance. Both are 8-bit text, a name a line, CR LF.
#pragma once

#include "files/data_file.h"
#include "nntp/connection.h"
#include "platform/lock.h"
#include "text/owned.h"

// Posted to the job's window when the worker is done: WM_COMMAND with this id.
constexpr UINT kGroupListDone = 103;

// What the dialog and the worker share until the dialog has gone.
struct GroupListShare {
    Lock lock;  // for all that follows
    bool abandoned = false;
    DataFile active, category;
};

// What the worker works on; nobody else uses any of it but `shared`. It has two owners, the dialog and the
// worker; the last one to release it frees it.
struct GroupListJob {
    LONG owners = 1;
    GroupListShare shared;
    WideText activePath;
    WideText categoryPath;
    NarrowText server;
    uint32_t port = 0;
    NarrowText user;  // null: no login; an empty one counts as given
    Secret password;  // the same
    HWND notifyWindow = nullptr;
    UINT notifyCommand = kGroupListDone;
    bool outOfMemory = false;  // the error text itself could not be made
    WideText errorText;        // the run's one failure; null means success
    unsigned lastError = 0;    // the system's error at the failure
    NntpConnection connection;
    ReplyLine line;
    uint32_t groupCount = 0;  // groups stored so far
    uint32_t shownCount = 0;  // what the counter on the screen shows
};

// What the user has configured. Nothing is owned; user and password may be null.
struct GroupListRequest {
    const wchar_t* activePath = nullptr;
    const wchar_t* categoryPath = nullptr;
    const wchar_t* server = nullptr;
    uint32_t port = 0;
    const char* user = nullptr;
    const char* password = nullptr;
};

// A job with one owner; null when memory runs out.
GroupListJob* MakeGroupListJob(const GroupListRequest& request, HWND notifyWindow);

// Releases the job. Closes the files, with what was stored so far; a worker that still runs opens and writes
// none any more, and ends with the server's next bytes or its silence.
void ReleaseGroupListJob(GroupListJob* job);

// Starts the worker, which becomes a second owner. False, with the last error, when there is no thread.
[[nodiscard]] bool StartGroupListWorker(GroupListJob* job);

// The worker's work, without its closing notice: the conversation and both files. The outcome is in `job`.
void FetchGroupList(GroupListJob& job);

// The category of a name: its bytes before the first '.', or all of them.
std::size_t CategoryLength(const char* name);
