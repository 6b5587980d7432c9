#include "nntp/run_result.h"

#include "text/convert.h"
#include "text/last_error.h"

void SetResult(RunResult& result, const wchar_t* title, const wchar_t* text, uint32_t severity) {
    CopyCut(result.title, kTextCapacity, title ? title : L"");
    CopyCut(result.text, kTextCapacity, text ? text : L"");
    result.severity = severity;
}

void SetResult(RunResult& result, const wchar_t* title, UINT id, uint32_t severity) {
    TextBuffer text;
    SetResult(result, title, LoadResString(id, text), severity);
}

bool FailWithError(RunResult& result, const wchar_t* title, UINT id) {
    const ErrorKeeper keeper;
    TextBuffer format, text;
    SetResult(result, title, FormatLastError(LoadResString(id, format), text), kError);
    return false;
}

bool FailWithReply(RunResult& result, UINT titleId, const char* reply) {
    const WideText text = ToWide(reply);
    TextBuffer title;
    SetResult(result, LoadResString(titleId, title), text ? text.get() : L"", kError);
    return Fail(kErrorInvalidData);
}
