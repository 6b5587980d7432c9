#include "subscribe/group_list.h"

#include <cstring>

#include "nntp/reply.h"
#include "resources/resource.h"
#include "store/file.h"
#include "store/string_set.h"
#include "text/convert.h"
#include "text/last_error.h"
#include "text/messages.h"

namespace {

// Milliseconds between two changes of the counter while replies rush in.
constexpr DWORD kCounterInterval = 15;

// Failures: the first text stays. All answer false.

bool FailWith(GroupListJob& job, const wchar_t* text) {
    const unsigned error = GetError();
    if (!job.errorText && !job.outOfMemory) {
        job.lastError = error;
        job.errorText = text ? CopyText(text) : nullptr;
        job.outOfMemory = !job.errorText;
    }
    return Fail(error);
}

bool FailWithError(GroupListJob& job, const wchar_t* format) {
    return FailWith(job, FormatLastError(format));
}

bool FailWithString(GroupListJob& job, UINT id) {
    const unsigned error = GetError();
    const wchar_t* format = LoadResString(id);
    SetError(error);
    return FailWithError(job, format);
}

bool FailWithReply(GroupListJob& job, const wchar_t* format) {
    const WideText reply = ToWide(job.line);
    return FailWith(job, reply ? FormatText(format, reply.get()) : nullptr);
}

void PostNotice(const GroupListJob& job) {
    PostMessageW(job.notifyWindow, WM_COMMAND, job.notifyCommand, 0);
}

// The conversation.

bool ReadLineOf(GroupListJob& job, bool strip) {
    SetError(0);
    if (ReadReplyLine(job.connection, job.line, strip)) return true;
    if (GetError() == 0) SetError(kErrorInvalidData);  // a 0 byte names no error itself, and is no end either
    return false;
}

bool Send(GroupListJob& job, const char* command) {
    return command && SendLine(job.connection, command);
}

bool Open(GroupListJob& job) {
    if (!Connect(job.connection, job.server.get(), static_cast<uint16_t>(job.port))) {
        return FailWith(job, L"Can't connect to server");
    }
    if (!ReadLineOf(job, false)) return FailWith(job, L"Recv fail: Can't connect to server");
    return IsSuccess(job.line) || FailWithReply(job, L"Connection refused : %s");
}

// The command carries a line end of its own, so an empty line follows it: servers have always been sent that
// here.
bool AskLogin(GroupListJob& job, const char* word, const char* argument) {
    const NarrowText start = MakeCommand(word, argument);
    const NarrowText command = start ? MakeCommand(start.get(), "\r\n") : nullptr;
    if (!Send(job, command.get())) return FailWith(job, L"Can't send data");
    return ReadLineOf(job, false) || FailWith(job, L"Can't redv data");
}

bool LogIn(GroupListJob& job) {
    if (!job.user || !job.password) return true;
    if (!AskLogin(job, "authinfo user ", job.user.get())) return false;
    if (!AsksForMore(job.line)) return FailWithReply(job, L"%s");
    if (!AskLogin(job, "authinfo pass ", job.password.get())) return false;
    return IsSuccess(job.line) || FailWithReply(job, L"%s");
}

bool RefuseList(GroupListJob& job) {
    const WideText reply = ToWide(job.line);
    if (!reply) return FailWithString(job, IDS_LIST_REFUSED_NO_MEMORY);
    return FailWith(job, FormatText(LoadResString(IDS_LIST_REFUSED), reply.get()));
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

struct ListFiles {
    DataFile active;
    DataFile category;
    StringSet categories;
};

bool WriteName(DataFile& file, const char* name, std::size_t length) {
    return WriteBytes(file, name, static_cast<uint32_t>(length)) && WriteBytes(file, "\r\n", 2);
}

bool StoreCategory(GroupListJob& job, ListFiles& files) {
    if (FindString(files.categories, job.line)) return true;
    if (!AddString(files.categories, job.line)) return FailWithString(job, IDS_LIST_HASH_WRITE_FAILED);
    return WriteName(files.category, job.line, std::strlen(job.line)) ||
           FailWithString(job, IDS_LIST_WRITE_FAILED);
}

// Waits no longer than it is told to.
bool Arrives(SOCKET socket, DWORD milliseconds) {
    fd_set readable;
    readable.fd_count = 1;
    readable.fd_array[0] = socket;
    timeval limit = {0, static_cast<long>(milliseconds) * 1000};
    return select(0, &readable, nullptr, nullptr, &limit) != 0;
}

bool HasReply(const NntpConnection& connection) {
    const auto left = static_cast<std::size_t>(connection.endPosition - connection.readPosition);
    return left > 0 && std::memchr(connection.readPosition, '\n', left);
}

void ShowCount(GroupListJob& job) {
    wchar_t text[32];
    wsprintfW(text, L"%d group(s).", job.groupCount);
    SetDlgItemTextW(job.notifyWindow, IDC_GROUP_LIST_COUNT, text);
    job.shownCount = job.groupCount;
    job.shownAt = GetTickCount();
}

// Each change of the counter waits for the dialog's thread, so a change that nobody could see is left out:
// the next reply is here, or begins before the counter is due again.
void CountGroup(GroupListJob& job) {
    ++job.groupCount;
    const DWORD passed = GetTickCount() - job.shownAt;
    if (passed < kCounterInterval) {
        if (HasReply(job.connection)) return;
        if (Arrives(job.connection.readerSocket, kCounterInterval - passed)) return;
    }
    ShowCount(job);
}

// The reply line is a name, a blank and the article numbers.
bool StoreGroup(GroupListJob& job, ListFiles& files) {
    char* blank = std::strchr(job.line, ' ');
    if (blank) *blank = '\0';
    if (!WriteName(files.active, job.line, std::strlen(job.line)))
        return FailWithString(job, IDS_LIST_WRITE_FAILED);
    job.line[CategoryLength(job.line)] = '\0';
    if (!StoreCategory(job, files)) return false;
    CountGroup(job);
    return true;
}

bool StoreGroups(GroupListJob& job, ListFiles& files) {
    while (ReadLineOf(job, true)) {
        if (job.line[0] == '.') return true;
        if (!StoreGroup(job, files)) return false;
    }
    return FailWithString(job, IDS_LIST_INCOMPLETE);
}

// However it ended, what the counter left out so far shows now.
bool StoreGroupsAndCount(GroupListJob& job, ListFiles& files) {
    const bool stored = StoreGroups(job, files);
    const ErrorKeeper keeper;
    if (job.shownCount != job.groupCount) ShowCount(job);
    return stored;
}

bool TransferList(GroupListJob& job, ListFiles& files) {
    if (!CreateStringSet(files.categories)) return FailWithString(job, IDS_LIST_HASH_FAILED);
    const bool transferred = AskForList(job) && StoreGroupsAndCount(job, files);
    DestroyStringSet(files.categories);
    return transferred;
}

// A file that cannot be opened is told twice: here and when the worker ends.
bool FailToOpen(GroupListJob& job, const wchar_t* format) {
    FailWithError(job, format);
    CloseConnection(job.connection);
    PostNotice(job);
    return false;
}

bool OpenFiles(GroupListJob& job, ListFiles& files) {
    if (!OpenDataFile(files.active, job.activePath.get(), FileMode::kReplace)) {
        return FailToOpen(job, L"Can't open active file(%d)");
    }
    if (!OpenDataFile(files.category, job.categoryPath.get(), FileMode::kReplace)) {
        return FailToOpen(job, L"Can't open category file(%d)");
    }
    return true;
}

void StoreList(GroupListJob& job) {
    const std::unique_ptr<ListFiles> files(new (std::nothrow) ListFiles);
    if (!files) {
        SetError(kErrorNoMemory);
        FailToOpen(job, L"Can't open active file(%d)");
        return;
    }
    if (!OpenFiles(job, *files)) return;
    const bool transferred = TransferList(job, *files);
    CloseConnection(job.connection);
    const bool closed = CloseDataFile(files->active) && CloseDataFile(files->category);
    if (transferred && !closed) FailWithString(job, IDS_LIST_WRITE_FAILED);
}

DWORD WINAPI GroupListWorker(void* parameter) {
    auto job = static_cast<GroupListJob*>(parameter);
    FetchGroupList(*job);
    PostNotice(*job);
    ReleaseGroupListJob(job);
    return 0;
}

bool CopyOptional(const char* text, NarrowText& copy) {
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
    const bool copied =
        CopyOptional(request.user, job->user) && CopyOptional(request.password, job->password);
    return copied && job->activePath && job->categoryPath && job->server ? job.release() : nullptr;
}

void ReleaseGroupListJob(GroupListJob* job) {
    if (InterlockedDecrement(&job->owners) == 0) delete job;
}

bool StartGroupListWorker(GroupListJob* job) {
    DWORD threadId = 0;
    InterlockedIncrement(&job->owners);
    const HANDLE thread = CreateThread(nullptr, 0, GroupListWorker, job, 0, &threadId);
    if (!thread) {
        const ErrorKeeper keeper;
        ReleaseGroupListJob(job);
        return false;
    }
    CloseHandle(thread);
    return true;
}

void FetchGroupList(GroupListJob& job) {
    if (Open(job) && LogIn(job)) StoreList(job);
    CloseConnection(job.connection);
}

std::size_t CategoryLength(const char* name) {
    const char* dot = std::strchr(name, '.');
    return dot ? static_cast<std::size_t>(dot - name) : std::strlen(name);
}
