#include "platform/desktop/dock.h"

#include <algorithm>

#include "platform/desktop/popups.h"

namespace {

constexpr WCHAR kOwnProcedure[] = L"PelnorDockedProcedure";  // the property that keeps it

bool IsMenuBar(HWND child) {
    WCHAR name[32] = L"";
    GetClassNameW(child, name, 32);
    return lstrcmpW(name, kMenuBarClass) == 0;
}

// The bar behind `bar`, the first for null; null when there is no other.
HWND NextBar(HWND window, HWND bar) {
    return FindWindowExW(window, bar, kMenuBarClass, nullptr);
}

int HeightOf(HWND bar) {
    RECT area{};
    GetWindowRect(bar, &area);
    return area.bottom - area.top;
}

// On the device the shell keeps the window's size; here the user drags it.
void OnSize(HWND window) {
    const HWND bar = NextBar(window, nullptr);
    if (!bar) return;
    RECT client{};
    GetClientRect(window, &client);
    const int paneHeight = client.bottom - HeightOf(bar);
    for (HWND child = GetWindow(window, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
        if (IsMenuBar(child)) {
            PlaceBar(child);
        } else {
            MoveWindow(child, 0, 0, client.right, paneHeight, TRUE);
        }
    }
}

// The panes keep the height of a few rows.
void OnGetLeastSize(HWND window, MINMAXINFO& limits) {
    constexpr LONG kLeastPaneHeight = 100;
    RECT area{};
    for (HWND bar = NextBar(window, nullptr); bar; bar = NextBar(window, bar)) {
        MINMAXINFO least{};
        SendMessageW(bar, WM_GETMINMAXINFO, 0, reinterpret_cast<LPARAM>(&least));
        area.right = std::max(area.right, least.ptMinTrackSize.x);
        area.bottom = kLeastPaneHeight + least.ptMinTrackSize.y;
    }
    AdjustWindowRectEx(&area, static_cast<DWORD>(GetWindowLongW(window, GWL_STYLE)), FALSE,
                       static_cast<DWORD>(GetWindowLongW(window, GWL_EXSTYLE)));
    limits.ptMinTrackSize = {area.right - area.left, area.bottom - area.top};
}

// False when no bar shows.
bool OnKeyMenu(HWND window) {
    HWND bar = NextBar(window, nullptr);
    while (bar && !(GetWindowLongW(bar, GWL_STYLE) & WS_VISIBLE))
        bar = NextBar(window, bar);
    if (bar) SendMessageW(bar, WM_SYSCOMMAND, SC_KEYMENU, 0);
    return bar != nullptr;
}

LRESULT CALLBACK DockProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    const auto procedure = reinterpret_cast<WNDPROC>(GetPropW(window, kOwnProcedure));
    switch (message) {
        case WM_SYSCOMMAND:
            // With a character (Alt+Space and the like) it is not for the bar.
            if ((wParam & 0xFFF0) == SC_KEYMENU && !lParam && OnKeyMenu(window)) return 0;
            break;
        case WM_SIZE:
            if (wParam != SIZE_MINIMIZED) OnSize(window);
            break;
        case WM_GETMINMAXINFO:
            OnGetLeastSize(window, *reinterpret_cast<MINMAXINFO*>(lParam));
            break;
        case WM_CLOSE:
            ClosePopup();
            break;
    }
    const LRESULT result = CallWindowProcW(procedure, window, message, wParam, lParam);
    if (message == WM_NCDESTROY) RemovePropW(window, kOwnProcedure);
    return result;
}

}  // namespace

bool MakeDock(HWND window) {
    if (GetPropW(window, kOwnProcedure)) return true;
    const LONG_PTR procedure = GetWindowLongPtrW(window, GWLP_WNDPROC);
    if (!SetPropW(window, kOwnProcedure, reinterpret_cast<HANDLE>(procedure))) return false;
    SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(DockProcedure));
    return true;
}

// Painted anew: what was there may not have been painted yet, or a pane may have painted over it.
void PlaceBar(HWND bar) {
    RECT client{};
    GetClientRect(GetParent(bar), &client);
    const int height = HeightOf(bar);
    SetWindowPos(bar, nullptr, 0, client.bottom - height, client.right, height,
                 SWP_NOZORDER | SWP_NOACTIVATE | SWP_NOCOPYBITS);
}

HWND ShownPane(HWND window) {
    HWND child = GetWindow(window, GW_CHILD);
    while (child && (!IsWindowVisible(child) || IsMenuBar(child)))
        child = GetWindow(child, GW_HWNDNEXT);
    return child;
}
