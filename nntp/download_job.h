// One download run: everything that its worker thread uses, copied, so that nothing it reads can change or
// vanish while it runs. The user-interface thread makes the job and frees it when the run-finished message
// arrives; the worker is never joined.
#pragma once

#include "nntp/group_cursor.h"
#include "nntp/progress_dialog.h"
#include "nntp/run_result.h"
#include "settings/settings.h"

// Sent by the worker to the main window as its last act; lParam is the job.
constexpr UINT kRunFinishedMessage = 0x8001;

struct DownloadJob {
    wchar_t server[kServerSize] = {};
    uint16_t port = 0;
    wchar_t folder[kDataPathSize] = {};
    std::unique_ptr<GroupCursor> cursor;
    std::unique_ptr<RunResult> result;
    HWND mainWindow = nullptr;
    uint32_t limit = 0;
    NarrowText user;          // null: no login
    Secret password;          // the stored one, else the one typed at the prompt
    ProgressDialog progress;  // made, or known to be missing, before the worker starts
    bool ended = false;       // the main window has had the run-finished message
};

// Fills a job from the settings; takes `typedPassword` when no password is stored. Null when memory runs out.
std::unique_ptr<DownloadJob> MakeDownloadJob(const Settings& settings, HWND groupList, HWND mainWindow,
                                             Secret typedPassword);

// Starts the worker; it ends with kRunFinishedMessage. False, with the last error, when there is no thread.
[[nodiscard]] bool StartDownloadWorker(DownloadJob& job);
