// A download run as the frame sees it: its start and its end.
#pragma once

#include "shell/app_frame.h"

// Does `command`, one of those that need the group view's rows and their files to themselves. While another
// one is at it nothing happens; while a run is, its progress is shown instead.
void RunAlone(AppFrame& frame, void (*command)(AppFrame&));

// The command "記事取得": dials first when the settings say so.
void GetArticles(AppFrame& frame);

// Asks for a missing password, starts the worker and shows the progress dialog.
void StartRun(AppFrame& frame);

// The worker of `job` has ended: tells the user how, shows the new data, and frees the job. Anything but the
// job that the frame holds, once, is ignored: the message may come from anywhere.
void FinishRun(AppFrame& frame, const DownloadJob* job);
