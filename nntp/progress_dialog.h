// The modal "Articles" dialog that stands while a run goes on. It is made on the user-interface thread; the
// worker moves it by messages only. It has no buttons: Esc or Enter closes it early, and the run goes on
// without it.
#pragma once

#include <cstdint>

#include "platform/platform.h"

struct ProgressDialog {
    HWND dialog = nullptr;    // null before the dialog is there and after it has gone
    uint32_t rangeCount = 0;  // articles of the current group's range
    uint32_t stepCount = 0;
    HANDLE shown = nullptr;  // event, set once the dialog is there; not owned, may be null
};

// Runs the dialog; returns when it is closed. `progress` outlives the call. The event is set also when no
// dialog can be made.
void RunProgressDialog(ProgressDialog& progress, HINSTANCE instance, HWND owner);

// For the worker.
void StartGroup(ProgressDialog& progress, const wchar_t* group, uint32_t count, uint32_t limit);
void StepProgress(ProgressDialog& progress);
void CloseProgress(const ProgressDialog& progress);
