// The outcome that a run leaves for the user: the caption and text of a message box, or a group's new status
// text.
#pragma once

#include <cstdint>

#include "text/messages.h"

enum Severity : uint32_t {
    kInformation = 0,
    kWarning = 1,  // this group is passed over, the run goes on
    kError = 2,    // the run stops and the user is shown the text
};

struct RunResult {
    wchar_t title[kTextCapacity] = {};
    wchar_t text[kTextCapacity] = {};
    uint32_t severity = kInformation;
};

void SetResult(RunResult& result, const wchar_t* title, const wchar_t* text, uint32_t severity);

// An error whose text is string `id` with the last error for its "%d", which stays the last error. Answers
// false.
bool FailWithError(RunResult& result, const wchar_t* title, UINT id);

// An error whose caption is string `titleId` and whose text is the server's reply line. Answers false.
bool FailWithReply(RunResult& result, UINT titleId, const char* reply);
