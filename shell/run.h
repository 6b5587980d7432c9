// How the frame starts and ends a download run.
#pragma once

#include "shell/app_frame.h"

// Runs a command that needs the group view's rows and their files to itself. Does nothing while another
// such command is active; during a run, shows its progress instead.
void RunAlone(AppFrame& frame, void (*command)(AppFrame&));

// The command "記事取得": dials first when the settings say so.
void GetArticles(AppFrame& frame);

// Asks for a missing password, starts the worker and shows the progress dialog.
void StartRun(AppFrame& frame);

// The worker of `job` has ended: shows its result and the new data, and frees the job. The message may come
// from anywhere, so any other job is ignored, and the frame's own counts once.
void FinishRun(AppFrame& frame, const DownloadJob* job);
