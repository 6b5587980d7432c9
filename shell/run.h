// A download run as the frame sees it: its start and its end.
#pragma once

#include "shell/app_frame.h"

// The command "記事取得": dials first when the settings say so. A second run is refused while one goes on.
void GetArticles(AppFrame& frame);

// Asks for a missing password, starts the worker and stands behind the progress dialog until it closes.
void StartRun(AppFrame& frame);

// The worker has ended: tells the user how, shows the new data, and frees the job.
void FinishRun(AppFrame& frame, DownloadJob* job);
