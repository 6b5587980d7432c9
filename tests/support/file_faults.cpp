#include "tests/support/file_faults.h"

#include <type_traits>

#include "tests/support/imports.h"

namespace {

FileFault fileFault = nullptr;

// Stands in the place of the function `kName`.
template <const char* kName, FileCall kCall, class Function>
struct Asking;

template <const char* kName, FileCall kCall, class Result, class... Arguments>
struct Asking<kName, kCall, Result(WINAPI*)(Arguments...)> {
    static Result WINAPI Call(Arguments... arguments) {
        static const auto happen = RealFunction<Result(WINAPI*)(Arguments...)>(kName);
        const DWORD error = fileFault ? fileFault(kCall) : 0;
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

void SetFileFault(FileFault fault) {
    fileFault = fault;
}
