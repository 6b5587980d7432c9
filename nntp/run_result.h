// A run's outcome for the user: the caption and text of a message box, or a group's new status text.
#pragma once

#include <cstdint>

#include "text/messages.h"

enum Severity : uint32_t {
    kInformation = 0,
    kWarning = 1,  // this group is skipped, the run goes on
    kError = 2,    // the run stops and shows the text
};

struct RunResult {
    wchar_t title[kTextCapacity] = {};
    wchar_t text[kTextCapacity] = {};
    uint32_t severity = kInformation;
};

void SetResult(RunResult& result, const wchar_t* title, const wchar_t* text, uint32_t severity);

// The same with string `id` for its text.
void SetResult(RunResult& result, const wchar_t* title, UINT id, uint32_t severity);

// An error whose text is string `id` with the last error for its "%d". Keeps the last error. Returns false.
bool FailWithError(RunResult& result, const wchar_t* title, UINT id);

// An error whose caption is string `titleId` and whose text is the server's reply line. Returns false.
bool FailWithReply(RunResult& result, UINT titleId, const char* reply);
