// The "Articles" dialog of a run. It is made before the worker starts and lives until the run's end is
// reported: Esc or Enter only puts it away, so the worker always has a window to send to, and shown again it
// stands where the run is. It has no buttons: a run cannot be cancelled.
#pragma once

#include <cstdint>

#include "platform/owners.h"
#include "platform/platform.h"

struct ProgressDialog {
    WindowOwner dialog;       // none when it could not be made; then the run goes on unseen
    bool shown = false;       // the user-interface thread's: it stands over its disabled owner
    uint32_t rangeCount = 0;  // the worker's: articles of the current group's range
    uint32_t stepCount = 0;
};

// For the user-interface thread.

// Makes the dialog, hidden; `progress` outlives it.
void MakeProgressDialog(ProgressDialog& progress, HINSTANCE instance, HWND owner);

// Shows it modally, but does not wait: the owner is disabled until the dialog is put away.
void ShowProgress(ProgressDialog& progress);

// For the message loop, before it dispatches: true when the message was the dialog's and is done with.
bool TakeProgressKey(const ProgressDialog& progress, MSG& message);

// Puts it away for good.
void EndProgress(ProgressDialog& progress);

// For the worker.
void StartGroup(ProgressDialog& progress, const wchar_t* group, uint32_t count, uint32_t limit);
void StepProgress(ProgressDialog& progress);
void CloseProgress(const ProgressDialog& progress);
