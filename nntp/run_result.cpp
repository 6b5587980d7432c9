#include "nntp/run_result.h"

#include "text/convert.h"
#include "text/last_error.h"

void SetResult(RunResult& result, const wchar_t* title, const wchar_t* text, uint32_t severity) {
    CopyCut(result.title, kTextCapacity, title ? title : L"");
    CopyCut(result.text, kTextCapacity, text ? text : L"");
    result.severity = severity;
}

bool FailWithError(RunResult& result, const wchar_t* title, UINT id) {
    const unsigned error = GetError();
    const wchar_t* format = LoadResString(id);
    SetError(error);
    SetResult(result, title, FormatLastError(format), kError);
    return Fail(error);
}

bool FailWithReply(RunResult& result, UINT titleId, const char* reply) {
    const WideText text = ToWide(reply);
    SetResult(result, LoadResString(titleId), text ? text.get() : L"", kError);
    return Fail(kErrorInvalidData);
}
