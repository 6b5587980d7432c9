// The Pocket PC menu bar where no shell offers one: a child window along the bottom of its parent. It draws
// its buttons itself, because a toolbar of the common controls neither opens popups from the keyboard nor
// goes on from one open popup to the next.
#include "platform/menubar.h"

#include <memory>
#include <new>

#include "platform/desktop/bar.h"
#include "platform/desktop/dock.h"
#include "platform/desktop/popups.h"

namespace {

POINT PointOf(LPARAM lParam) {
    return {static_cast<short>(LOWORD(lParam)), static_cast<short>(HIWORD(lParam))};
}

void PressButton(MenuBar& bar, int index, bool byKey) {
    const Button& button = bar.buttons[index];
    if (!button.enabled || IsPopupOpen()) return;
    if (button.popup) {
        OpenPopups(bar, index, byKey);
    } else {
        SendCommand(bar, button.command);
    }
}

void OnButtonDown(MenuBar& bar, POINT point) {
    const int index = ButtonAt(bar, point);
    if (index == kNone) return;
    if (bar.buttons[index].popup) {
        PressButton(bar, index, false);
        return;
    }
    bar.pressed = index;
    SetCapture(bar.window);
    Redraw(bar);
}

void OnButtonUp(MenuBar& bar, POINT point) {
    const int index = bar.pressed;
    if (index == kNone) return;
    ReleaseCapture();
    if (ButtonAt(bar, point) == index) PressButton(bar, index, false);
}

void OnCaptureLost(MenuBar& bar) {
    bar.pressed = kNone;
    Redraw(bar);
}

void OnKey(MenuBar& bar, WPARAM key) {
    if (bar.selected == kNone) return;
    switch (key) {
        case VK_LEFT:
        case VK_RIGHT:
            bar.selected = Step(bar, bar.selected, key == VK_LEFT ? -1 : 1);
            Redraw(bar);
            break;
        case VK_UP:
        case VK_DOWN:
            if (bar.buttons[bar.selected].popup) PressButton(bar, bar.selected, true);
            break;
        case VK_RETURN:
        case VK_SPACE: {
            // The key's character is in the queue already; an opened popup would take it for a choice.
            MSG character;
            PeekMessageW(&character, bar.window, WM_CHAR, WM_CHAR, PM_REMOVE);
            PressButton(bar, bar.selected, true);
            break;
        }
        case VK_ESCAPE:
            GiveFocusBack(bar);
            break;
    }
}

void OnSetFocus(MenuBar& bar, HWND loser) {
    bar.focusBefore = loser;
    bar.selected = bar.count ? 0 : kNone;
    Redraw(bar);
}

void OnKillFocus(MenuBar& bar) {
    bar.selected = kNone;
    Redraw(bar);
}

// Alt or F10.
void OnKeyMenu(const MenuBar& bar) {
    if (GetFocus() == bar.window) {
        GiveFocusBack(bar);
    } else {
        SetFocus(bar.window);
    }
}

void OnGetLeastSize(const MenuBar& bar, MINMAXINFO& limits) {
    limits.ptMinTrackSize = {bar.count ? bar.buttons[bar.count - 1].area.right : 0, bar.height};
}

HMENU OnGetSubMenu(const MenuBar& bar, UINT command) {
    for (int i = 0; i < bar.count; ++i) {
        if (bar.buttons[i].command == command) return bar.buttons[i].popup;
    }
    return nullptr;
}

void OnEnd(MenuBar* bar) {
    ForgetBar(*bar);
    SetWindowLongPtrW(bar->window, GWLP_USERDATA, 0);
    delete bar;
}

LRESULT CALLBACK BarProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    auto bar = reinterpret_cast<MenuBar*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (!bar) return DefWindowProcW(window, message, wParam, lParam);
    switch (message) {
        case WM_PAINT:
            PaintBar(*bar);
            return 0;
        case WM_LBUTTONDOWN:
            OnButtonDown(*bar, PointOf(lParam));
            return 0;
        case WM_LBUTTONUP:
            OnButtonUp(*bar, PointOf(lParam));
            return 0;
        case WM_CAPTURECHANGED:
            OnCaptureLost(*bar);
            return 0;
        case WM_KEYDOWN:
            OnKey(*bar, wParam);
            return 0;
        case WM_SETFOCUS:
            OnSetFocus(*bar, reinterpret_cast<HWND>(wParam));
            return 0;
        case WM_KILLFOCUS:
            OnKillFocus(*bar);
            return 0;
        case WM_SYSCOMMAND:
            OnKeyMenu(*bar);
            return 0;
        case WM_GETMINMAXINFO:
            OnGetLeastSize(*bar, *reinterpret_cast<MINMAXINFO*>(lParam));
            return 0;
        case SHCMBM_GETSUBMENU:
            return reinterpret_cast<LRESULT>(OnGetSubMenu(*bar, static_cast<UINT>(lParam)));
        case WM_NCDESTROY:
            OnEnd(bar);
            return 0;
        default:
            return DefWindowProcW(window, message, wParam, lParam);
    }
}

[[nodiscard]] bool RegisterBarClass(HINSTANCE module) {
    WNDCLASSW barClass{};
    barClass.lpfnWndProc = BarProcedure;
    barClass.hInstance = module;
    barClass.hCursor = LoadCursorW(nullptr, MAKEINTRESOURCEW(32512));  // IDC_ARROW
    barClass.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
    barClass.lpszClassName = kMenuBarClass;
    return RegisterClassW(&barClass) || GetLastError() == ERROR_CLASS_ALREADY_EXISTS;
}

[[nodiscard]] bool CreateBarWindow(MenuBar& bar, HINSTANCE module) {
    bar.window = CreateWindowExW(0, kMenuBarClass, nullptr, WS_CHILD | WS_CLIPSIBLINGS, 0, 0, 0, bar.height,
                                 bar.parent, nullptr, module, nullptr);
    if (!bar.window) return false;
    SetWindowLongPtrW(bar.window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(&bar));
    PlaceBar(bar.window);
    ShowWindow(bar.window, SW_SHOWNA);
    return true;
}

}  // namespace

extern "C" BOOL WINAPI SHCreateMenuBar(SHMENUBARINFO* info) {
    if (info) info->hwndMB = nullptr;
    if (!info || !IsWindow(info->hwndParent)) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    std::unique_ptr<MenuBar> bar(new (std::nothrow) MenuBar);
    if (!bar) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return FALSE;
    }
    bar->parent = info->hwndParent;
    if (!RegisterBarClass(info->hInstRes) || !LoadBar(*bar, *info) || !MakeDock(bar->parent) ||
        !CreateBarWindow(*bar, info->hInstRes)) {
        return FALSE;
    }
    info->hwndMB = bar.release()->window;
    return TRUE;
}
