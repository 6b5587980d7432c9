#include "shell/run.h"

#include "dialup/dialup.h"
#include "nntp/password_prompt.h"
#include "resources/resource.h"
#include "text/messages.h"

namespace {

// False when the user gave none.
bool AskForPassword(const AppFrame& frame, Secret& password) {
    const Settings& settings = frame.settings;
    if (!settings.UserID || settings.Password) return true;
    const INT_PTR result =
        RunPasswordPrompt(frame.instance, frame.mainWindow, settings.UserID.get(), password);
    return result == IDOK && password;
}

bool StartWorker(AppFrame& frame, std::unique_ptr<DownloadJob> job) {
    MakeProgressDialog(job->progress, frame.instance, frame.mainWindow);
    frame.job = job.get();
    if (StartDownloadWorker(*job)) {
        job.release();  // owned by the worker until it reports its end
        return true;
    }
    frame.job = nullptr;
    ShowLastError(IDS_NO_THREAD, kProgramCaption);
    return false;
}

// Shows nothing once the program has been closed.
void ReportEnd(AppFrame& frame, const RunResult& result) {
    if (frame.ended) return;
    if (result.severity == kError) {
        MessageBoxW(nullptr, result.text, result.title, MB_OK | MB_ICONERROR);
        return;
    }
    MessageBoxW(frame.mainWindow, LoadResString(IDS_DOWNLOAD_DONE), L"Disconnect", MB_OK);
    if (!frame.ended) (void)ReloadData(frame);
}

}  // namespace

void RunAlone(AppFrame& frame, void (*command)(AppFrame&)) {
    // A disabled frame gets commands only from other programs.
    if (frame.alone || !IsWindowEnabled(frame.mainWindow)) return;
    if (frame.job) {
        ShowProgress(frame.job->progress);
        return;
    }
    frame.alone = true;
    command(frame);
    frame.alone = false;
}

void GetArticles(AppFrame& frame) {
    if (!frame.settings.Dialup || IsLineUp()) {
        StartRun(frame);
    } else {
        StartDial(frame.mainWindow, frame.instance, frame.settings.EntryName, &frame.connection);
    }
}

void StartRun(AppFrame& frame) {
    frame.busy = true;
    Secret typedPassword;
    if (!AskForPassword(frame, typedPassword)) return;
    std::unique_ptr<DownloadJob> job =
        MakeDownloadJob(frame.settings, frame.groupView->list, frame.mainWindow, std::move(typedPassword));
    if (!job) MessageBoxW(nullptr, LoadResString(IDS_NO_MEMORY), kProgramCaption, MB_OK);
    if (!job || !StartWorker(frame, std::move(job))) {
        frame.busy = false;
        return;
    }
    ShowProgress(frame.job->progress);
}

void FinishRun(AppFrame& frame, const DownloadJob* job) {
    if (!job || job != frame.job || job->ended) return;
    const std::unique_ptr<DownloadJob> finished(frame.job);
    finished->ended = true;
    EndProgress(finished->progress);
    if (frame.settings.Dialup && frame.dialled) {
        RunDisconnectDialog(frame.mainWindow, frame.instance, frame.settings.DisconnectWaitTime);
    }
    frame.dialled = false;
    ReportEnd(frame, *finished->result);
    frame.busy = false;
    frame.job = nullptr;
}
