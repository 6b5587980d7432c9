#include "platform/desktop/window_place.h"

#include <algorithm>

#include "platform/owners.h"

namespace {

constexpr WCHAR kPlaceValue[] = L"WindowPlace";

struct WindowPlace {
    RECT normal;  // when neither maximised nor minimised
    DWORD maximised;
};
static_assert(sizeof(WindowPlace) == 20, "five words");

// Edges beyond any screen were not written by this program, and would overflow the sums below.
bool IsPlace(const RECT& area) {
    constexpr RECT kScreens = {-0x8000, -0x8000, 0x8000, 0x8000};
    RECT common{};
    return IntersectRect(&common, &area, &kScreens) && EqualRect(&common, &area);
}

bool ReadPlace(const WCHAR* path, WindowPlace& place) {
    HKEY opened = nullptr;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, path, 0, KEY_QUERY_VALUE, &opened)) return false;
    const RegistryKeyOwner key(opened);
    DWORD size = sizeof(place);
    DWORD type = 0;
    const LONG error =
        RegQueryValueExW(key.Get(), kPlaceValue, nullptr, &type, reinterpret_cast<BYTE*>(&place), &size);
    return !error && type == REG_BINARY && size == sizeof(place) && IsPlace(place.normal);
}

void WritePlace(const WCHAR* path, const WindowPlace& place) {
    HKEY opened = nullptr;
    if (RegCreateKeyExW(HKEY_CURRENT_USER, path, 0, nullptr, 0, KEY_SET_VALUE, nullptr, &opened, nullptr))
        return;
    const RegistryKeyOwner key(opened);
    RegSetValueExW(key.Get(), kPlaceValue, 0, REG_BINARY, reinterpret_cast<const BYTE*>(&place),
                   sizeof(place));
}

// Whether the middle of the caption, by which the window is dragged, and of the menu bar are on a monitor.
bool IsReachable(const RECT& place) {
    const int half = GetSystemMetrics(SM_CYCAPTION) / 2;
    const LONG middle = (place.left + place.right) / 2;
    return MonitorFromPoint({middle, place.top + half}, MONITOR_DEFAULTTONULL) &&
           MonitorFromPoint({middle, place.bottom - half}, MONITOR_DEFAULTTONULL);
}

// The one with most of the place; false when the system does not say.
bool NearestMonitor(const RECT& place, MONITORINFO& monitor) {
    monitor = {};
    monitor.cbSize = sizeof(monitor);
    return GetMonitorInfoW(MonitorFromRect(&place, MONITOR_DEFAULTTONEAREST), &monitor) != 0;
}

// Monitors come and go and change their size. A window that would open out of reach moves to the nearest one.
RECT BroughtIntoReach(const RECT& place) {
    MONITORINFO monitor;
    if (IsReachable(place) || !NearestMonitor(place, monitor)) return place;
    RECT area = monitor.rcWork;  // whose corner counts as 0, 0
    OffsetRect(&area, monitor.rcMonitor.left - area.left, monitor.rcMonitor.top - area.top);
    return MovedInto(place, area);
}

// Or less, where the work area has no room for it.
void SetClientSize(HWND window, SIZE client) {
    RECT area = {0, 0, client.cx, client.cy};
    AdjustWindowRectEx(&area, static_cast<DWORD>(GetWindowLongW(window, GWL_STYLE)), FALSE,
                       static_cast<DWORD>(GetWindowLongW(window, GWL_EXSTYLE)));
    RECT place{};
    GetWindowRect(window, &place);
    place.right = place.left + area.right - area.left;
    place.bottom = place.top + area.bottom - area.top;
    MONITORINFO monitor;
    if (NearestMonitor(place, monitor)) place = MovedInto(place, monitor.rcWork);
    SetWindowPos(window, nullptr, place.left, place.top, place.right - place.left, place.bottom - place.top,
                 SWP_NOZORDER | SWP_NOACTIVATE);
}

}  // namespace

RECT MovedInto(const RECT& place, const RECT& area) {
    const LONG width = std::min(place.right - place.left, area.right - area.left);
    const LONG height = std::min(place.bottom - place.top, area.bottom - area.top);
    const LONG left = std::clamp(place.left, area.left, area.right - width);
    const LONG top = std::clamp(place.top, area.top, area.bottom - height);
    return {left, top, left + width, top + height};
}

void SavePlace(HWND window, const WCHAR* key) {
    WINDOWPLACEMENT placement{};
    placement.length = sizeof(placement);
    if (!GetWindowPlacement(window, &placement)) return;
    const bool maximised = IsZoomed(window) || (placement.flags & WPF_RESTORETOMAXIMIZED);
    WritePlace(key, {placement.rcNormalPosition, maximised});
}

bool RestorePlace(HWND window, const WCHAR* key, SIZE first) {
    WindowPlace place{};
    WINDOWPLACEMENT placement{};
    placement.length = sizeof(placement);
    if (!ReadPlace(key, place) || !GetWindowPlacement(window, &placement)) {
        SetClientSize(window, first);
        return false;
    }
    placement.rcNormalPosition = BroughtIntoReach(place.normal);
    placement.showCmd = IsWindowVisible(window) ? SW_SHOWNA : SW_HIDE;
    SetWindowPlacement(window, &placement);
    return place.maximised != 0;
}
