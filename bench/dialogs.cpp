#include "bench/dialogs.h"

#include <utility>

namespace {

std::function<void(HWND)> actInDialog;

void CALLBACK OnDialogTick(HWND, UINT, UINT_PTR timer, DWORD) {
    const HWND dialog = FindWindowW(L"#32770", nullptr);
    if (!dialog || !IsWindowVisible(dialog)) return;
    KillTimer(nullptr, timer);
    actInDialog(dialog);
    SendMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
}

}  // namespace

void ActInNextDialog(std::function<void(HWND)> act) {
    constexpr UINT kPeriod = 10;  // milliseconds
    actInDialog = std::move(act);
    SetTimer(nullptr, 0, kPeriod, OnDialogTick);
}
