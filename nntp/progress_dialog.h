// The "Articles" dialog of a run. It is made before the worker starts and kept until the run has ended: Esc
// or Enter only hides it, so the worker always has a window to send to, and the dialog is up to date when it
// is shown again. It has no buttons: a run cannot be cancelled.
#pragma once

#include <cstdint>

#include "platform/owners.h"
#include "platform/platform.h"

struct ProgressDialog {
    WindowOwner dialog;       // none when it could not be made; then the run goes on unseen
    bool shown = false;       // the user-interface thread's: shown over its disabled owner
    uint32_t rangeCount = 0;  // the worker's: articles of the current group's range
    uint32_t stepCount = 0;
};

// For the user-interface thread.

// Makes the dialog, hidden; `progress` outlives it.
void MakeProgressDialog(ProgressDialog& progress, HINSTANCE instance, HWND owner);

// Shows it modally, but does not wait: the owner is disabled until the dialog is put away.
void ShowProgress(ProgressDialog& progress);

// For the message loop, before it dispatches: true when the message was for the dialog, which has handled it.
bool TakeProgressKey(const ProgressDialog& progress, MSG& message);

// Hides and destroys it.
void EndProgress(ProgressDialog& progress);

// For the worker.
void StartGroup(ProgressDialog& progress, const wchar_t* group, uint32_t count, uint32_t limit);
void StepProgress(ProgressDialog& progress);
void CloseProgress(const ProgressDialog& progress);
