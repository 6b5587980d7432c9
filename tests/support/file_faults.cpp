#include "tests/support/file_faults.h"

#include <type_traits>

#include "tests/support/imports.h"

namespace {

// Nothing is watched with a count below zero.
struct Plan {
    FileCall kind = FileCall::kAny;
    DWORD error = 0;
    int failing = 0;
    int count = -1;
};
Plan plan;

DWORD ErrorOf(FileCall call) {
    const bool counts = plan.count >= 0 && (plan.kind == FileCall::kAny || plan.kind == call);
    return counts && ++plan.count == plan.failing ? plan.error : 0;
}

// Stands in the place of the function `kName`.
template <const char* kName, FileCall kCall, class Function>
struct Asking;

template <const char* kName, FileCall kCall, class Result, class... Arguments>
struct Asking<kName, kCall, Result(WINAPI*)(Arguments...)> {
    static Result WINAPI Call(Arguments... arguments) {
        static const auto happen = RealFunction<Result(WINAPI*)(Arguments...)>(kName);
        const DWORD error = ErrorOf(kCall);
        if (error == 0) return happen(arguments...);
        SetLastError(error);
        if constexpr (std::is_same_v<Result, HANDLE>) return INVALID_HANDLE_VALUE;
        return Result();
    }
};

}  // namespace

#define ASK_BEFORE(Name, call)              \
    constexpr char kNameOf##Name[] = #Name; \
    IN_PLACE_OF(Name, (Asking<kNameOf##Name, FileCall::call, decltype(&Name)>::Call))

ASK_BEFORE(CreateFileW, kOpen)
ASK_BEFORE(ReadFile, kRead)
ASK_BEFORE(WriteFile, kWrite)
ASK_BEFORE(SetEndOfFile, kWrite)
ASK_BEFORE(DeleteFileW, kDelete)
ASK_BEFORE(MoveFileW, kRename)

FileCalls::FileCalls(FileCall kind, DWORD error, int failing) {
    plan = {kind, error, failing, 0};
}
FileCalls::~FileCalls() {
    plan.count = -1;
}
int FileCalls::Count() const {
    return plan.count;
}
