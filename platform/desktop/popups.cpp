#include "platform/desktop/popups.h"

namespace {

// A menu's message hook gets no other context.
struct Tracking {
    MenuBar* bar = nullptr;  // whose popup is open; null for none, or once the bar has ended
    int next = kNone;        // the popup to open when this one has closed
    bool byKey = false;      // and whether a key asks for it
    POINT mouse{};           // on the screen, when this popup was opened
};
Tracking tracking;

void SwitchPopup(int target, bool byKey) {
    tracking.next = target;
    tracking.byKey = byKey;
    EndMenu();
}

// The next drop-down in that direction, `from` itself when there is no other.
int NextDropDown(const MenuBar& bar, int from, int direction) {
    int index = Step(bar, from, direction);
    while (index != from && !(bar.buttons[index].popup && bar.buttons[index].enabled)) {
        index = Step(bar, index, direction);
    }
    return index;
}

// The popups have no popups of their own, which would need left and right.
void OnArrow(const MenuBar& bar, WPARAM key) {
    SwitchPopup(NextDropDown(bar, bar.open, key == VK_LEFT ? -1 : 1), true);
}

// True when the menu must not see the message.
bool OnMouse(const MenuBar& bar, UINT message, POINT point) {
    // A window that opens causes a WM_MOUSEMOVE without a movement.
    if (message == WM_MOUSEMOVE && point.x == tracking.mouse.x && point.y == tracking.mouse.y) return false;
    ScreenToClient(bar.window, &point);
    const int target = ButtonAt(bar, point);
    if (target == kNone) return false;
    if (message == WM_LBUTTONDOWN && target == bar.open) {
        EndMenu();
        return true;
    }
    if (target != bar.open && bar.buttons[target].popup) SwitchPopup(target, false);
    if (message == WM_LBUTTONDOWN && !bar.buttons[target].popup) {
        EndMenu();
        SendCommand(bar, bar.buttons[target].command);
    }
    return target != bar.open;
}

// True when the menu must not see the message.
bool OnMenuMessage(const MenuBar& bar, const MSG& message) {
    switch (message.message) {
        case WM_KEYDOWN:
            if (message.wParam != VK_LEFT && message.wParam != VK_RIGHT) return false;
            OnArrow(bar, message.wParam);
            return true;
        case WM_MOUSEMOVE:
        case WM_LBUTTONDOWN:
            return OnMouse(bar, message.message, message.pt);
        default:
            return false;
    }
}

LRESULT CALLBACK FilterMenuMessage(int code, WPARAM wParam, LPARAM lParam) {
    if (code == MSGF_MENU && tracking.bar &&
        OnMenuMessage(*tracking.bar, *reinterpret_cast<const MSG*>(lParam))) {
        return 1;
    }
    return CallNextHookEx(nullptr, code, wParam, lParam);
}

// Shows one popup above its button until it closes. Returns the command chosen, 0 for none.
UINT TrackPopup(MenuBar& bar, int index) {
    const Button& button = bar.buttons[index];
    bar.open = index;
    tracking.next = kNone;
    GetCursorPos(&tracking.mouse);
    if (bar.selected != kNone) bar.selected = index;
    Redraw(bar);
    UpdateWindow(bar.window);
    // To the parent, which ignores the key should the menu never read it.
    if (tracking.byKey) PostMessageW(bar.parent, WM_KEYDOWN, VK_DOWN, 0);
    TPMPARAMS keepClear{};
    keepClear.cbSize = sizeof(keepClear);
    keepClear.rcExclude = button.area;
    MapWindowPoints(bar.window, nullptr, reinterpret_cast<POINT*>(&keepClear.rcExclude), 2);
    const BOOL command =
        TrackPopupMenuEx(button.popup, TPM_BOTTOMALIGN | TPM_VERTICAL | TPM_RETURNCMD,
                         keepClear.rcExclude.left, keepClear.rcExclude.top, bar.parent, &keepClear);
    return static_cast<UINT>(command);
}

}  // namespace

void OpenPopups(MenuBar& bar, int index, bool byKey) {
    // Without the hook each popup still works, but leads to no other.
    const HookOwner hook(SetWindowsHookExW(WH_MSGFILTER, FilterMenuMessage, nullptr, GetCurrentThreadId()));
    tracking.bar = &bar;
    tracking.byKey = byKey;
    UINT command = 0;
    while (index != kNone && tracking.bar) {
        command = TrackPopup(bar, index);
        index = tracking.next;
    }
    if (!tracking.bar) return;
    tracking.bar = nullptr;
    bar.open = kNone;
    Redraw(bar);
    if (command) SendCommand(bar, command);
}

bool IsPopupOpen() {
    return tracking.bar != nullptr;
}

// The popup's loop notices its end with the next message.
void ClosePopup() {
    if (!tracking.bar) return;
    EndMenu();
    PostThreadMessageW(GetCurrentThreadId(), WM_NULL, 0, 0);
}

void ForgetBar(const MenuBar& bar) {
    if (tracking.bar == &bar) tracking.bar = nullptr;
}
