#include "platform/desktop/frame.h"

#include <algorithm>
#include <cstdlib>

#include "platform/desktop/dialog_place.h"
#include "resources/resource.h"

namespace {

constexpr WCHAR kProgramKey[] = L"Software\\marrowby\\Pelnor";
constexpr WCHAR kPlaceValue[] = L"WindowPlace";
constexpr SIZE kDeviceScreen = {240, 320};
constexpr UINT kMaximise = WM_APP + 0x100;
constexpr UINT kWake = WM_APP + 2;  // posted by a second start of the program

// The value in the registry.
struct WindowPlace {
    RECT normal;  // when neither maximised nor minimised; counted as WINDOWPLACEMENT does
    DWORD maximised;
};
static_assert(sizeof(WindowPlace) == 20, "five words");

// The remembered place.

// What no screen reaches was not written by this program, and would overflow the sums below.
bool IsPlace(const RECT& area) {
    constexpr RECT kScreens = {-0x8000, -0x8000, 0x8000, 0x8000};
    RECT common{};
    return IntersectRect(&common, &area, &kScreens) && EqualRect(&common, &area);
}

bool ReadPlace(WindowPlace& place) {
    DWORD size = sizeof(place);
    DWORD type = 0;
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, kProgramKey, 0, KEY_QUERY_VALUE, &key)) return false;
    const LONG error =
        RegQueryValueExW(key, kPlaceValue, nullptr, &type, reinterpret_cast<BYTE*>(&place), &size);
    RegCloseKey(key);
    return !error && type == REG_BINARY && size == sizeof(place) && IsPlace(place.normal);
}

// A place that cannot be kept is no reason to trouble the user: the next start takes the one before.
void WritePlace(const WindowPlace& place) {
    HKEY key = nullptr;
    if (RegCreateKeyExW(HKEY_CURRENT_USER, kProgramKey, 0, nullptr, 0, KEY_SET_VALUE, nullptr, &key, nullptr))
        return;
    RegSetValueExW(key, kPlaceValue, 0, REG_BINARY, reinterpret_cast<const BYTE*>(&place), sizeof(place));
    RegCloseKey(key);
}

void SavePlace(HWND window) {
    WINDOWPLACEMENT placement{};
    placement.length = sizeof(placement);
    if (!GetWindowPlacement(window, &placement)) return;
    const bool maximised = IsZoomed(window) || (placement.flags & WPF_RESTORETOMAXIMIZED);
    WritePlace({placement.rcNormalPosition, maximised});
}

// The middle of the caption, where the window can be dragged, and of the menu bar are on a monitor.
bool IsReachable(const RECT& place) {
    const int half = GetSystemMetrics(SM_CYCAPTION) / 2;
    const LONG middle = (place.left + place.right) / 2;
    return MonitorFromPoint({middle, place.top + half}, MONITOR_DEFAULTTONULL) &&
           MonitorFromPoint({middle, place.bottom - half}, MONITOR_DEFAULTTONULL);
}

// Monitors come and go and change their size: a window that would open out of reach comes to the nearest one.
RECT BroughtIntoReach(const RECT& place) {
    MONITORINFO monitor{};
    monitor.cbSize = sizeof(monitor);
    if (IsReachable(place) || !GetMonitorInfoW(MonitorFromRect(&place, MONITOR_DEFAULTTONEAREST), &monitor)) {
        return place;
    }
    RECT area = monitor.rcWork;  // in whose corner the counting starts
    OffsetRect(&area, monitor.rcMonitor.left - area.left, monitor.rcMonitor.top - area.top);
    return MovedInto(place, area);
}

RECT OuterSize(HWND window, SIZE client) {
    RECT area = {0, 0, client.cx, client.cy};
    AdjustWindowRectEx(&area, static_cast<DWORD>(GetWindowLongW(window, GWL_STYLE)), FALSE,
                       static_cast<DWORD>(GetWindowLongW(window, GWL_EXSTYLE)));
    return area;
}

void UseDefaultPlace(HWND window) {
    const RECT area = OuterSize(window, kDeviceScreen);
    SetWindowPos(window, nullptr, 0, 0, area.right - area.left, area.bottom - area.top,
                 SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
}

// Does not show a window that is still being made. Its maker shows it at its normal size: only after that it
// can be maximised.
void RestorePlace(HWND window) {
    WindowPlace place{};
    WINDOWPLACEMENT placement{};
    placement.length = sizeof(placement);
    if (!ReadPlace(place) || !GetWindowPlacement(window, &placement)) {
        UseDefaultPlace(window);
        return;
    }
    placement.rcNormalPosition = BroughtIntoReach(place.normal);
    placement.showCmd = IsWindowVisible(window) ? SW_SHOWNA : SW_HIDE;
    SetWindowPlacement(window, &placement);
    if (place.maximised) PostMessageW(window, kMaximise, 0, 0);
}

// The larger icon is for the task bar and for switching with Alt+Tab; the small one the frame sets itself.
void SetLargeIcon(HWND window, HINSTANCE module) {
    HANDLE icon = LoadImageW(module, MAKEINTRESOURCEW(IDI_PELNOR), IMAGE_ICON, GetSystemMetrics(SM_CXICON),
                             GetSystemMetrics(SM_CYICON), LR_SHARED);
    if (icon) SendMessageW(window, WM_SETICON, ICON_BIG, reinterpret_cast<LPARAM>(icon));
}

// The panes.

// The visible child that is no menu bar; null when there is none.
HWND ShownPane(HWND frame) {
    HWND child = GetWindow(frame, GW_CHILD);
    for (; child; child = GetWindow(child, GW_HWNDNEXT)) {
        WCHAR name[32] = L"";
        GetClassNameW(child, name, 32);
        if (IsWindowVisible(child) && lstrcmpW(name, kMenuBarClass) != 0) break;
    }
    return child;
}

// The wheel. Lists and trees turn by themselves; what arrives here was refused by a pane with a scroll bar of
// its own, which only knows the bar's messages.

// Whole steps of a turn: a finger on a trackpad turns by less than one, and the rest counts for the next. A
// turn the other way begins anew.
int StepsOf(int& rest, int turn) {
    if ((rest < 0) != (turn < 0)) rest = 0;
    rest += turn;
    const int steps = rest / WHEEL_DELTA;
    rest -= steps * WHEEL_DELTA;
    return steps;
}

// As if the thumb had been dragged: unlike the arrows it never leads past the end, which would open the next
// article under a wheel that turns on. The pane asks the bar for what the message's 16 bits do not hold.
void ScrollLines(HWND pane, HWND bar, int lines) {
    int least = 0;
    int most = 0;
    GetScrollRange(bar, SB_CTL, &least, &most);
    const int before = GetScrollPos(bar, SB_CTL);
    const int position = std::clamp(before + lines, least, std::max(least, most));
    if (position == before) return;
    SetScrollPos(bar, SB_CTL, position, FALSE);
    SendMessageW(pane, WM_VSCROLL, MAKEWPARAM(SB_THUMBPOSITION, position), reinterpret_cast<LPARAM>(bar));
}

void ScrollPages(HWND pane, HWND bar, int pages) {
    for (int i = 0; i < std::abs(pages); ++i) {
        int least = 0;
        int most = 0;
        GetScrollRange(bar, SB_CTL, &least, &most);
        if (pages > 0 && GetScrollPos(bar, SB_CTL) >= most) return;
        SendMessageW(pane, WM_VSCROLL, pages > 0 ? SB_PAGEDOWN : SB_PAGEUP, reinterpret_cast<LPARAM>(bar));
    }
}

void OnWheel(DesktopFrame& frame, int turn) {
    HWND pane = IsWindowEnabled(frame.window) ? ShownPane(frame.window) : nullptr;
    HWND bar = pane ? FindWindowExW(pane, nullptr, L"SCROLLBAR", nullptr) : nullptr;
    UINT lines = 3;
    SystemParametersInfoW(SPI_GETWHEELSCROLLLINES, 0, &lines, 0);
    if (!bar || !lines) return;
    if (lines == WHEEL_PAGESCROLL) {
        ScrollPages(pane, bar, -StepsOf(frame.wheelRest, turn));
    } else {
        constexpr UINT kMostLines = 1000;
        ScrollLines(pane, bar,
                    -StepsOf(frame.wheelRest, turn * static_cast<int>(std::min(lines, kMostLines))));
    }
}

// The panes' classes have no cursor, since the device has none. Here the one of the border, or of whatever
// the mouse came from, would stay.
bool ShowArrow(HWND under, WORD place) {
    if (place != HTCLIENT || GetClassLongPtrW(under, GCLP_HCURSOR)) return false;
    SetCursor(LoadCursorW(nullptr, MAKEINTRESOURCEW(32512)));  // IDC_ARROW
    return true;
}

// A dialog that stands before the window is shown takes the message too early: it comes again with the
// window.
void Maximise(DesktopFrame& frame) {
    const bool visible = IsWindowVisible(frame.window) != 0;
    frame.maximisesLater = !visible;
    if (visible && !IsIconic(frame.window)) ShowWindow(frame.window, SW_SHOWMAXIMIZED);
}

BOOL CALLBACK TakeIfUsable(HWND window, LPARAM parameter) {
    if (!IsWindowVisible(window) || !IsWindowEnabled(window)) return TRUE;
    *reinterpret_cast<HWND*>(parameter) = window;
    return FALSE;
}

// A box without an owner may stand before a frame that is disabled for it.
HWND WindowInFront(HWND frame) {
    HWND front = GetLastActivePopup(frame);
    if (!IsWindowVisible(front)) front = frame;
    if (!IsWindowEnabled(front))
        EnumThreadWindows(GetCurrentThreadId(), TakeIfUsable, reinterpret_cast<LPARAM>(&front));
    return front;
}

}  // namespace

void DressFrame(DesktopFrame& frame, HWND window, HINSTANCE module) {
    const LONG style = GetWindowLongW(window, GWL_STYLE);
    if (style & WS_CHILD) return;
    frame.window = window;
    SetWindowLongW(window, GWL_STYLE, style | static_cast<LONG>(WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN));
    SetWindowPos(window, nullptr, 0, 0, 0, 0,
                 SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE | SWP_FRAMECHANGED);
    SetLargeIcon(window, module);
    RestorePlace(window);
    PlaceDialogsOver(window);
}

bool OnFrameMessage(DesktopFrame& frame, UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result) {
    if (!frame.window) return false;
    switch (message) {
        case WM_MOUSEWHEEL:
            OnWheel(frame, GET_WHEEL_DELTA_WPARAM(wParam));
            result = 0;
            return true;
        case WM_SETCURSOR:
            result = TRUE;
            return ShowArrow(reinterpret_cast<HWND>(wParam), LOWORD(lParam));
        case WM_ENDSESSION:
            // The system ends the program as soon as this is answered: what closing saves has to be saved
            // now.
            if (wParam) SendMessageW(frame.window, WM_CLOSE, 0, 0);
            result = 0;
            return true;
        case WM_DESTROY:
            StopPlacingDialogs();
            SavePlace(frame.window);
            return false;
        case kMaximise:
            Maximise(frame);
            result = 0;
            return true;
        case WM_SHOWWINDOW:
            if (wParam && frame.maximisesLater) PostMessageW(frame.window, kMaximise, 0, 0);
            return false;
        case kWake:
            if (IsIconic(frame.window)) ShowWindow(frame.window, SW_RESTORE);
            SetForegroundWindow(WindowInFront(frame.window));
            return false;
        default:
            return false;
    }
}

void AfterFrameMessage(HWND window, UINT message) {
    // A frame that keeps the focus for itself, as it comes back from the task bar, would leave the keyboard
    // without effect.
    if (message != WM_SETFOCUS || GetFocus() != window) return;
    if (HWND pane = ShownPane(window)) SetFocus(pane);
}
