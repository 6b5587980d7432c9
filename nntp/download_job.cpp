#include "nntp/download_job.h"

#include "nntp/session.h"
#include "text/convert.h"

namespace {

SessionRequest RequestOf(DownloadJob& job) {
    SessionRequest request;
    request.server = {job.server, job.port, job.user.get(), job.password.get()};
    request.folder = job.folder;
    request.limit = job.limit;
    request.cursor = job.cursor.get();
    request.progress = &job.progress;
    request.result = job.result.get();
    return request;
}

DWORD WINAPI DownloadWorker(void* parameter) {
    auto job = static_cast<DownloadJob*>(parameter);
    const HWND mainWindow = job->mainWindow;
    const bool done = RunSession(RequestOf(*job));
    CloseProgress(job->progress);
    // The job is the main window's from here on.
    SendMessageW(mainWindow, kRunFinishedMessage, 0, reinterpret_cast<LPARAM>(job));
    return done;
}

bool AllocateParts(DownloadJob& job) {
    job.cursor.reset(new (std::nothrow) GroupCursor);
    job.result.reset(new (std::nothrow) RunResult);
    return job.cursor && job.result;
}

bool CopyLogin(DownloadJob& job, const Settings& settings, Secret typedPassword) {
    if (settings.UserID) job.user = CopyText(settings.UserID.get());
    job.password = settings.Password ? Secret(CopyText(settings.Password.get())) : std::move(typedPassword);
    return (!settings.UserID || job.user) && (!settings.Password || job.password);
}

}  // namespace

std::unique_ptr<DownloadJob> MakeDownloadJob(const Settings& settings, HWND groupList, HWND mainWindow,
                                             Secret typedPassword) {
    std::unique_ptr<DownloadJob> job(new (std::nothrow) DownloadJob);
    if (!job || !AllocateParts(*job) || !CopyLogin(*job, settings, std::move(typedPassword))) return nullptr;
    CopyCut(job->server, kServerSize, settings.Server);
    CopyCut(job->folder, kDataPathSize, settings.DataPath);
    job->port = static_cast<uint16_t>(settings.Port);
    job->limit = settings.Limit;
    job->mainWindow = mainWindow;
    job->cursor->list = groupList;
    return job;
}

bool StartDownloadWorker(DownloadJob& job) {
    DWORD threadId = 0;
    const ThreadOwner thread(CreateThread(nullptr, 0, DownloadWorker, &job, 0, &threadId));
    return static_cast<bool>(thread);
}
