#include "subscribe/group_list.h"

#include <cstring>

#include "files/data_file.h"
#include "nntp/login.h"
#include "resources/resource.h"
#include "store/string_set.h"
#include "text/convert.h"
#include "text/last_error.h"
#include "text/messages.h"

namespace {

bool IsAbandoned(GroupListJob& job) {
    const Locked locked(job.shared.lock);
    return job.shared.abandoned;
}

// Nothing is sent to a dialog that is gone: its handle may be another window's by now.
void PostNotice(GroupListJob& job) {
    if (!IsAbandoned(job)) PostMessageW(job.notifyWindow, WM_COMMAND, job.notifyCommand, 0);
}

void ShowCount(GroupListJob& job) {
    if (job.shownCount == job.groupCount || IsAbandoned(job)) return;
    wchar_t text[32];
    wsprintfW(text, L"%d group(s).", job.groupCount);
    SetDlgItemTextW(job.notifyWindow, IDC_GROUP_LIST_COUNT, text);
    job.shownCount = job.groupCount;
}

// Each change of the counter waits for the dialog's thread, so what arrived together is counted together.
// Once the list is abandoned, nothing more is received.
void BeforeReceive(void* context) {
    auto& job = *static_cast<GroupListJob*>(context);
    ShowCount(job);
    if (IsAbandoned(job)) job.connection.readerSocket = INVALID_SOCKET;
}

// Failures: the first text stays. All return false.

bool FailWith(GroupListJob& job, const wchar_t* text) {
    const ErrorKeeper keeper;
    if (!job.errorText && !job.outOfMemory) {
        job.lastError = GetError();
        job.errorText = text ? CopyText(text) : nullptr;
        job.outOfMemory = !job.errorText;
    }
    return false;
}

bool FailWithError(GroupListJob& job, const wchar_t* format) {
    TextBuffer text;
    return FailWith(job, FormatLastError(format, text));
}

bool FailWithString(GroupListJob& job, UINT id) {
    TextBuffer format;
    return FailWithError(job, LoadResString(id, format));
}

bool FailWithReply(GroupListJob& job, const wchar_t* format) {
    const WideText reply = ToWide(job.line);
    TextBuffer text;
    return FailWith(job, reply ? FormatText(format, reply.get(), text) : nullptr);
}

// The conversation.

bool ReadLineOf(GroupListJob& job, bool strip) {
    if (ReadReplyLine(job.connection, job.line, strip)) return true;
    if (GetError() == 0) SetError(kErrorInvalidData);  // a 0 byte sets no error, and does not end the list
    return false;
}

bool Send(GroupListJob& job, const char* command) {
    return command && SendLine(job.connection, command);
}

// Each login command carries a line end of its own, so an empty line follows it: this dialog has always sent
// it that way.
bool Open(GroupListJob& job) {
    const ServerAccount server = {nullptr, static_cast<uint16_t>(job.port), job.user.get(),
                                  job.password.get(), "\r\n"};
    switch (OpenConversation(job.connection, job.server.get(), server, job.line)) {
        case Opening::kNotConnected:
            return FailWith(job, L"Can't connect to server");
        case Opening::kNoGreeting:
            return FailWith(job, L"Recv fail: Can't connect to server");
        case Opening::kRefused:
            return FailWithReply(job, L"Connection refused : %s");
        case Opening::kUserNotSent:
        case Opening::kPasswordNotSent:
            return FailWith(job, L"Can't send data");
        case Opening::kUserNotAnswered:
        case Opening::kPasswordNotAnswered:
            return FailWith(job, L"Can't redv data");
        case Opening::kWrongUser:
        case Opening::kWrongPassword:
            return FailWithReply(job, L"%s");
        case Opening::kOpen:
            break;
    }
    return true;
}

bool RefuseList(GroupListJob& job) {
    const WideText reply = ToWide(job.line);
    if (!reply) return FailWithString(job, IDS_LIST_REFUSED_NO_MEMORY);
    TextBuffer format, text;
    return FailWith(job, FormatText(LoadResString(IDS_LIST_REFUSED, format), reply.get(), text));
}

// Servers that do not know the longer command may know the shorter.
bool AskForList(GroupListJob& job) {
    if (!Send(job, "LIST active")) return FailWithString(job, IDS_LIST_SEND_FAILED);
    if (!ReadLineOf(job, false)) return FailWithString(job, IDS_LIST_RECEIVE_FAILED);
    if (IsSuccess(job.line)) return true;
    if (!Send(job, "LIST")) return FailWith(job, L"LIST failed.");
    if (!ReadLineOf(job, false)) return FailWithString(job, IDS_LIST_RECEIVE_FAILED);
    return IsSuccess(job.line) || RefuseList(job);
}

// The files.

bool WriteName(DataFile& file, const char* name, std::size_t length) {
    return WriteBytes(file, name, static_cast<uint32_t>(length)) && WriteBytes(file, "\r\n", 2);
}

bool StoreCategory(GroupListJob& job, StringSet& categories) {
    if (FindString(categories, job.line)) return true;
    if (!AddString(categories, job.line)) return FailWithString(job, IDS_LIST_HASH_WRITE_FAILED);
    return WriteName(job.shared.category, job.line, std::strlen(job.line)) ||
           FailWithString(job, IDS_LIST_WRITE_FAILED);
}

// The reply line is a name, a blank and the article numbers.
bool StoreGroup(GroupListJob& job, StringSet& categories) {
    const Locked locked(job.shared.lock);
    if (job.shared.abandoned) return false;
    char* blank = std::strchr(job.line, ' ');
    if (blank) *blank = '\0';
    if (!WriteName(job.shared.active, job.line, std::strlen(job.line)))
        return FailWithString(job, IDS_LIST_WRITE_FAILED);
    job.line[CategoryLength(job.line)] = '\0';
    if (!StoreCategory(job, categories)) return false;
    ++job.groupCount;
    return true;
}

bool StoreGroups(GroupListJob& job, StringSet& categories) {
    while (ReadLineOf(job, true)) {
        if (job.line[0] == '.') return true;
        if (!StoreGroup(job, categories)) return false;
    }
    return FailWithString(job, IDS_LIST_INCOMPLETE);
}

bool TransferList(GroupListJob& job) {
    StringSet categories;
    if (!CreateStringSet(categories)) return FailWithString(job, IDS_LIST_HASH_FAILED);
    const bool transferred = AskForList(job) && StoreGroups(job, categories);
    ShowCount(job);
    return transferred;
}

// The dialog is notified here, and once more when the worker ends.
bool FailToOpen(GroupListJob& job, const wchar_t* format) {
    FailWithError(job, format);
    CloseConnection(job.connection);
    PostNotice(job);
    return false;
}

bool OpenFiles(GroupListJob& job) {
    const Locked locked(job.shared.lock);
    if (job.shared.abandoned) return false;
    if (!OpenDataFile(job.shared.active, job.activePath.get(), FileMode::kReplace)) {
        return FailToOpen(job, L"Can't open active file(%d)");
    }
    if (!OpenDataFile(job.shared.category, job.categoryPath.get(), FileMode::kReplace)) {
        return FailToOpen(job, L"Can't open category file(%d)");
    }
    return true;
}

// False when not everything that was stored reached the disk.
bool CloseFiles(GroupListShare& shared) {
    const Locked locked(shared.lock);
    const bool activeClosed = CloseDataFile(shared.active);
    return CloseDataFile(shared.category) && activeClosed;
}

DWORD WINAPI GroupListWorker(void* parameter) {
    auto job = static_cast<GroupListJob*>(parameter);
    FetchGroupList(*job);
    PostNotice(*job);
    ReleaseGroupListJob(job);
    return 0;
}

template <class Text>
bool CopyOptional(const char* text, Text& copy) {
    if (text) copy = CopyText(text);
    return !text || copy;
}

}  // namespace

GroupListJob* MakeGroupListJob(const GroupListRequest& request, HWND notifyWindow) {
    std::unique_ptr<GroupListJob> job(new (std::nothrow) GroupListJob);
    if (!job) return nullptr;
    job->activePath = CopyText(request.activePath);
    job->categoryPath = CopyText(request.categoryPath);
    job->server = ToNarrow(request.server);
    job->port = request.port;
    job->notifyWindow = notifyWindow;
    InitConnection(job->connection);
    job->connection.beforeReceive = BeforeReceive;
    job->connection.context = job.get();
    const bool copied =
        CopyOptional(request.user, job->user) && CopyOptional(request.password, job->password);
    return copied && job->activePath && job->categoryPath && job->server ? job.release() : nullptr;
}

void ReleaseGroupListJob(GroupListJob* job) {
    {
        const Locked locked(job->shared.lock);
        job->shared.abandoned = true;
        (void)CloseFiles(job->shared);
    }
    if (InterlockedDecrement(&job->owners) == 0) delete job;
}

bool StartGroupListWorker(GroupListJob* job) {
    DWORD threadId = 0;
    InterlockedIncrement(&job->owners);
    const ThreadOwner thread(CreateThread(nullptr, 0, GroupListWorker, job, 0, &threadId));
    if (thread) return true;
    const ErrorKeeper keeper;
    ReleaseGroupListJob(job);
    return false;
}

void FetchGroupList(GroupListJob& job) {
    const bool stored = Open(job) && OpenFiles(job) && TransferList(job);
    CloseConnection(job.connection);
    if (!CloseFiles(job.shared) && stored) FailWithString(job, IDS_LIST_WRITE_FAILED);
}

std::size_t CategoryLength(const char* name) {
    const char* dot = std::strchr(name, '.');
    return dot ? static_cast<std::size_t>(dot - name) : std::strlen(name);
}
