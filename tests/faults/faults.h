// Lets one run of the program meet a fault at a chosen place, notes what the program tells its user, and
// counts what it does not give back. For the test's own thread, on which all that is tested here runs.
#pragma once

#include <functional>
#include <string>

#include "platform/platform.h"

enum class FaultKind {
    kCallFails,  // the N-th call to the file system, with error 1117
    kDiskFull,   // the N-th write and all behind it, with 112
    kWriteTorn,  // the N-th write stops half-way, with 112
    kNoBlock,    // the N-th allocation
    kNoMemory,   // the N-th allocation and all behind it
    kCrash,      // the process ends before the N-th call: nothing reaches the disk any more
    kTornCrash,  // the process ends inside the N-th write
};

constexpr FaultKind kAllKinds[] = {FaultKind::kCallFails, FaultKind::kDiskFull, FaultKind::kWriteTorn,
                                   FaultKind::kNoBlock,   FaultKind::kNoMemory, FaultKind::kCrash,
                                   FaultKind::kTornCrash};

const char* NameOf(FaultKind kind);
inline bool EndsProcess(FaultKind kind) {
    return kind == FaultKind::kCrash || kind == FaultKind::kTornCrash;
}
inline bool IsOfMemory(FaultKind kind) {
    return kind == FaultKind::kNoBlock || kind == FaultKind::kNoMemory;
}
// The number that the program has to tell.
DWORD NumberOf(FaultKind kind);

void StartFault(FaultKind kind, int at);
// The disk and the memory are well again. True when the fault has happened.
bool EndFault();

// Blocks and private heaps that the program holds now.
int HeldBlocks();

// The texts of all message boxes since the last call, each with a line end. Boxes are answered with OK.
std::string TakeBoxes();
void AddBox(const wchar_t* text);

// What the user does in the next modal dialog or on the first page of the next sheet, once it stands. The
// dialog ends when its code ends it.
void UseNextDialog(std::function<void(HWND)> user);
