#include "platform/desktop/dialog_place.h"

#include "platform/desktop/window_place.h"

namespace {

constexpr WCHAR kPlacedProperty[] = L"PelnorDialogPlaced";
constexpr WCHAR kDisabledProperty[] = L"PelnorDialogDisabled";  // the owner that is to stay so

HWND placingFrame = nullptr;  // a hook gets no other context

bool Shows(HWND window) {
    return window && IsWindowVisible(window) && !IsIconic(window);
}

// What a dialog is centred on: its owner, else the frame, else the monitor.
RECT GroundOf(HWND dialog, const RECT& monitor) {
    RECT ground = monitor;
    HWND owner = GetWindow(dialog, GW_OWNER);
    if (!Shows(owner)) owner = placingFrame;
    if (Shows(owner)) GetWindowRect(owner, &ground);
    return ground;
}

void PlaceDialog(HWND dialog) {
    HWND base = Shows(placingFrame) ? placingFrame : dialog;
    RECT place{};
    MONITORINFO monitor{};
    monitor.cbSize = sizeof(monitor);
    if (!GetMonitorInfoW(MonitorFromWindow(base, MONITOR_DEFAULTTONEAREST), &monitor)) return;
    const RECT ground = GroundOf(dialog, monitor.rcWork);
    GetWindowRect(dialog, &place);
    OffsetRect(&place, (ground.left + ground.right - place.left - place.right) / 2,
               (ground.top + ground.bottom - place.top - place.bottom) / 2);
    place = MovedInto(place, monitor.rcWork);
    SetWindowPos(dialog, nullptr, place.left, place.top, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

// A box without an owner would go behind the frame as soon as that comes forward.
void GiveOwner(HWND dialog) {
    if (GetWindow(dialog, GW_OWNER) || !Shows(placingFrame)) return;
    HWND owner = GetLastActivePopup(placingFrame);
    if (owner == dialog || !Shows(owner)) owner = placingFrame;
    SetWindowLongPtrW(dialog, GWLP_HWNDPARENT, reinterpret_cast<LONG_PTR>(owner));
    if (!IsWindowEnabled(owner)) SetPropW(dialog, kDisabledProperty, owner);
}

// Once: from then on the user moves it.
void OnActivate(HWND window) {
    WCHAR name[32] = L"";
    GetClassNameW(window, name, 32);
    if (lstrcmpW(name, L"#32770") != 0 || GetPropW(window, kPlacedProperty)) return;
    SetPropW(window, kPlacedProperty, window);
    GiveOwner(window);
    PlaceDialog(window);
}

// A dialog that ends enables its owner; what was disabled before the dialog had one stays so.
void OnDestroy(HWND window) {
    RemovePropW(window, kPlacedProperty);
    if (HANDLE owner = RemovePropW(window, kDisabledProperty)) EnableWindow(static_cast<HWND>(owner), FALSE);
}

// A dialog is activated with its final size, just before it shows.
LRESULT CALLBACK FollowActivation(int code, WPARAM wParam, LPARAM lParam) {
    if (code == HCBT_ACTIVATE) OnActivate(reinterpret_cast<HWND>(wParam));
    if (code == HCBT_DESTROYWND) OnDestroy(reinterpret_cast<HWND>(wParam));
    return CallNextHookEx(nullptr, code, wParam, lParam);
}

}  // namespace

// Without the hook dialogs open where the system puts them.
HookOwner PlaceDialogsOver(HWND frame) {
    placingFrame = frame;
    return HookOwner(SetWindowsHookExW(WH_CBT, FollowActivation, nullptr, GetCurrentThreadId()));
}
