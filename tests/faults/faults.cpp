#include "tests/faults/faults.h"

#include <cstdlib>
#include <mutex>
#include <set>
#include <utility>
#include <vector>

#include "platform/memory.h"
#include "platform/platform.h"
#include "store/file.h"

namespace {

struct Plan {
    FaultKind kind = FaultKind::kCallFails;
    int at = 0;
    int count = 0;
    DWORD thread = 0;
    bool active = false;
};
Plan plan;

bool IsArmed() {
    return plan.active && plan.thread == GetCurrentThreadId();
}

DWORD FailCall(FileCall call) {
    if (!IsArmed() || IsOfMemory(plan.kind)) return 0;
    const bool countsWrites = plan.kind != FaultKind::kCallFails && plan.kind != FaultKind::kCrash;
    if (!countsWrites || call == FileCall::kWrite) ++plan.count;
    if (plan.count < plan.at) return 0;
    const bool first = plan.count == plan.at && (!countsWrites || call == FileCall::kWrite);
    switch (plan.kind) {
        case FaultKind::kCallFails:
            return first ? ERROR_IO_DEVICE : 0;
        case FaultKind::kDiskFull:
            return call == FileCall::kWrite ? ERROR_DISK_FULL : 0;
        case FaultKind::kWriteTorn:
            return first ? kTornWrite : 0;
        case FaultKind::kTornCrash:
            return first ? kTornWrite : ERROR_IO_DEVICE;
        default:
            return ERROR_IO_DEVICE;
    }
}

bool AllowMemory() {
    if (!IsArmed() || !IsOfMemory(plan.kind)) return true;
    ++plan.count;
    return plan.kind == FaultKind::kNoBlock ? plan.count != plan.at : plan.count < plan.at;
}

// The suite's own containers release through the same operators, so what is held is known by address, and the
// set of addresses must not use those operators itself.
template <class T>
struct PlainAllocator {
    using value_type = T;
    PlainAllocator() = default;
    template <class U>
    PlainAllocator(const PlainAllocator<U>&) {}
    T* allocate(std::size_t count) { return static_cast<T*>(std::malloc(count * sizeof(T))); }
    void deallocate(T* memory, std::size_t) { std::free(memory); }
    bool operator==(const PlainAllocator&) const { return true; }
    bool operator!=(const PlainAllocator&) const { return false; }
};

std::mutex heldMutex;

auto& Held() {
    static std::set<void*, std::less<void*>, PlainAllocator<void*>> held;
    return held;
}

void NoteTaken(void* memory) {
    const std::lock_guard<std::mutex> lock(heldMutex);
    Held().insert(memory);
}

void NoteReleased(void* memory) {
    const std::lock_guard<std::mutex> lock(heldMutex);
    Held().erase(memory);
}

constexpr MemoryWatch kWatch = {AllowMemory, NoteTaken, NoteReleased};

std::string boxes;
std::function<void(HWND)> dialogUser;
INT_PTR dialogResult = 0;

int WINAPI AnswerBox(HWND, const wchar_t* text, const wchar_t*, UINT) {
    AddBox(text);
    return IDOK;
}

// The dialog is real, but its user needs no message loop.
INT_PTR WINAPI RunDialogForUser(HINSTANCE instance, const DLGTEMPLATE* layout, HWND owner, DLGPROC procedure,
                                LPARAM parameter) {
    const HWND dialog = CreateDialogIndirectParamW(instance, layout, owner, procedure, parameter);
    dialogResult = -1;
    if (!dialog) return dialogResult;
    const auto user = std::exchange(dialogUser, nullptr);
    if (user) user(dialog);
    DestroyWindow(dialog);
    return dialogResult;
}

// All pages stand at once; the user works on the first, and OK asks each.
INT_PTR WINAPI RunSheetForUser(const PROPSHEETHEADERW* sheet) {
    std::vector<HWND> pages;
    for (UINT i = 0; i < sheet->nPages; ++i) {
        const PROPSHEETPAGEW& page = sheet->ppsp[i];
        pages.push_back(CreateDialogParamW(page.hInstance, page.pszTemplate, nullptr, page.pfnDlgProc,
                                           reinterpret_cast<LPARAM>(&page)));
    }
    const auto user = std::exchange(dialogUser, nullptr);
    if (user) user(pages.front());
    INT_PTR result = 1;
    for (const HWND page : pages) {
        NMHDR notice = {page, 0, static_cast<UINT>(PSN_APPLY)};
        SendMessageW(page, WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&notice));
        if (GetWindowLongPtrW(page, DWLP_MSGRESULT) != PSNRET_NOERROR) result = -1;
        DestroyWindow(page);
    }
    return result;
}

BOOL WINAPI NoteDialogResult(HWND, INT_PTR result) {
    dialogResult = result;
    return TRUE;
}

}  // namespace

// In the place of the system's, for all that is linked into the suite.
extern "C" {
extern decltype(&AnswerBox) replacedMessageBox __asm__("__imp_MessageBoxW");
extern decltype(&RunDialogForUser) replacedDialogBox __asm__("__imp_DialogBoxIndirectParamW");
extern decltype(&RunSheetForUser) replacedSheet __asm__("__imp_PropertySheetW");
extern decltype(&NoteDialogResult) replacedEndDialog __asm__("__imp_EndDialog");
decltype(&AnswerBox) replacedMessageBox = AnswerBox;
decltype(&RunDialogForUser) replacedDialogBox = RunDialogForUser;
decltype(&RunSheetForUser) replacedSheet = RunSheetForUser;
decltype(&NoteDialogResult) replacedEndDialog = NoteDialogResult;
}

const char* NameOf(FaultKind kind) {
    constexpr const char* kNames[] = {"a call fails",  "disk full", "torn write",          "no block",
                                      "out of memory", "crash",     "crash inside a write"};
    return kNames[static_cast<int>(kind)];
}

DWORD NumberOf(FaultKind kind) {
    if (IsOfMemory(kind)) return ERROR_NOT_ENOUGH_MEMORY;
    return kind == FaultKind::kCallFails ? ERROR_IO_DEVICE : ERROR_DISK_FULL;
}

void StartFault(FaultKind kind, int at) {
    memoryWatch = &kWatch;
    SetFileFault(FailCall);
    plan = {kind, at, 0, GetCurrentThreadId(), true};
}

bool EndFault() {
    plan.active = false;
    return plan.count >= plan.at;
}

int HeldBlocks() {
    memoryWatch = &kWatch;
    const std::lock_guard<std::mutex> lock(heldMutex);
    return static_cast<int>(Held().size());
}

std::string TakeBoxes() {
    return std::exchange(boxes, std::string());
}

void AddBox(const wchar_t* text) {
    char bytes[2048] = "?";
    WideCharToMultiByte(CP_UTF8, 0, text ? text : L"(no text)", -1, bytes, sizeof(bytes), nullptr, nullptr);
    boxes += bytes + std::string("\n");
}

void UseNextDialog(std::function<void(HWND)> user) {
    dialogUser = std::move(user);
}
