// The Pocket PC menu bar where no shell offers one: a child window along the bottom of its parent. It draws
// its buttons itself, because a toolbar of the common controls neither opens popups from the keyboard nor
// passes from one open popup to the next.
//
// A parent's bars hang on one Dock, which subclasses the parent: it keeps the bars at the bottom, and hands
// Alt and F10 to the bar that shows, and makes it a window of the desktop. A bar belongs to its window and
// ends with it; the Dock ends with its last bar.
#include "platform/menubar.h"

#include <commctrl.h>

#include <algorithm>
#include <array>
#include <memory>
#include <new>

#include "platform/desktop/frame.h"

namespace {

constexpr WCHAR kDockProperty[] = L"PelnorMenuBarDock";
constexpr WORD kNoWordPopup = 0xFFFF;
constexpr WORD kNoWordImage = 0xFFFE;
constexpr WORD kEnabledState = 4;
constexpr int kNone = -1;
constexpr int kImageSide = 16;
constexpr int kMinimumHeight = 26;
constexpr int kPadding = 6;
constexpr int kGap = 5;         // between caption and arrow
constexpr int kArrowWidth = 7;  // of the drop-downs' upward arrow
constexpr int kArrowHeight = 4;

// The resource: this head, then `count` times ButtonWords.
struct BarWords {
    WORD menu;
    WORD count;
};

struct ButtonWords {
    WORD image;
    WORD command;
    WORD state;
    WORD style;  // tells no more than `popup` and `caption` do
    WORD caption;
    WORD zero;
    WORD popup;
};
static_assert(sizeof(BarWords) == 4 && sizeof(ButtonWords) == 14, "words without padding");

struct Button {
    UINT command = 0;
    int image = kNone;
    bool enabled = false;
    HMENU popup = nullptr;  // part of the bar's menu
    std::array<WCHAR, 32> caption{};
    RECT area{};  // in the bar
};

struct Dock;

struct MenuBar {
    MenuBar() = default;
    MenuBar(const MenuBar&) = delete;
    MenuBar& operator=(const MenuBar&) = delete;
    ~MenuBar();

    HWND window = nullptr;
    HWND parent = nullptr;
    HMENU menu = nullptr;         // owned
    HIMAGELIST images = nullptr;  // owned
    HFONT font = nullptr;         // owned
    std::unique_ptr<Button[]> buttons;
    int count = 0;
    int height = kMinimumHeight;
    int selected = kNone;        // while the bar has the focus
    int pressed = kNone;         // while the mouse button is down on a plain button
    int open = kNone;            // while its popup shows
    int next = kNone;            // popup to open when the open one has closed
    bool preselect = false;      // the next popup is opened by a key, which expects its first item selected
    POINT mouse{};               // on the screen, when a popup was last opened
    HWND focusBefore = nullptr;  // not owned
    Dock* dock = nullptr;        // not owned
    MenuBar* neighbour = nullptr;
};

MenuBar::~MenuBar() {
    if (menu) DestroyMenu(menu);
    if (images) ImageList_Destroy(images);
    if (font) DeleteObject(font);
}

struct Dock {
    HWND parent = nullptr;
    WNDPROC procedure = nullptr;  // the parent's own
    MenuBar* first = nullptr;
    DesktopFrame frame;
};

// The bar whose popup shows. A menu's message hook gets no other context; menus block their thread, and only
// the user-interface thread has bars.
MenuBar* trackedBar = nullptr;

// Contents, from the resources.

[[nodiscard]] bool Invalid() {
    SetLastError(ERROR_INVALID_DATA);
    return false;
}

// Answers the resource's words once they are known to be complete.
const BarWords* FindBarWords(HINSTANCE module, UINT id) {
    HRSRC resource = FindResourceW(module, MAKEINTRESOURCEW(id), MAKEINTRESOURCEW(10));  // RT_RCDATA
    HGLOBAL loaded = resource ? LoadResource(module, resource) : nullptr;
    auto words = loaded ? static_cast<const BarWords*>(LockResource(loaded)) : nullptr;
    if (!words) return nullptr;
    const DWORD size = SizeofResource(module, resource);
    if (size < sizeof(BarWords) || size < sizeof(BarWords) + words->count * sizeof(ButtonWords)) {
        SetLastError(ERROR_INVALID_DATA);
        return nullptr;
    }
    return words;
}

[[nodiscard]] bool LoadButton(const MenuBar& bar, HINSTANCE module, const ButtonWords& words,
                              Button& button) {
    button.command = words.command;
    button.enabled = (words.state & kEnabledState) != 0;
    if (words.image != kNoWordImage) {
        button.image = words.image;
        if (!bar.images || button.image >= ImageList_GetImageCount(bar.images)) return Invalid();
    }
    if (words.popup != kNoWordPopup) {
        button.popup = GetSubMenu(bar.menu, words.popup);
        if (!button.popup) return Invalid();
    }
    if (!words.caption) return true;
    return LoadStringW(module, words.caption, button.caption.data(),
                       static_cast<int>(button.caption.size())) > 0;
}

[[nodiscard]] bool LoadButtons(MenuBar& bar, HINSTANCE module, const BarWords& words) {
    bar.count = words.count;
    bar.buttons.reset(new (std::nothrow) Button[words.count]);
    if (!bar.buttons) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return false;
    }
    auto each = reinterpret_cast<const ButtonWords*>(&words + 1);
    for (int i = 0; i < bar.count; ++i) {
        if (!LoadButton(bar, module, each[i], bar.buttons[i])) return false;
    }
    return true;
}

[[nodiscard]] bool LoadContents(MenuBar& bar, const SHMENUBARINFO& info) {
    const BarWords* words = FindBarWords(info.hInstRes, info.nToolBarId);
    if (!words) return false;
    bar.menu = LoadMenuW(info.hInstRes, MAKEINTRESOURCEW(words->menu));
    if (!bar.menu) return false;
    if (info.cBmpImages > 0) {
        constexpr COLORREF kGround = RGB(0xC0, 0xC0, 0xC0);
        bar.images = ImageList_LoadImageW(info.hInstRes, MAKEINTRESOURCEW(info.nBmpId), kImageSide, 0,
                                          kGround, IMAGE_BITMAP, LR_CREATEDIBSECTION);
        if (!bar.images) return false;
    }
    return LoadButtons(bar, info.hInstRes, *words);
}

// Places and looks.

int WidthOf(const Button& button, HDC dc) {
    int width = 2 * kPadding;
    if (button.image != kNone) width += kImageSide;
    SIZE text{};
    const int length = lstrlenW(button.caption.data());
    if (length && GetTextExtentPoint32W(dc, button.caption.data(), length, &text)) width += text.cx;
    if (button.popup) width += kGap + kArrowWidth;
    return width;
}

// Gives the bar its font and height and each button its area.
[[nodiscard]] bool ArrangeButtons(MenuBar& bar) {
    NONCLIENTMETRICSW metrics{};
    metrics.cbSize = sizeof(metrics);
    if (!SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof(metrics), &metrics, 0)) return false;
    bar.font = CreateFontIndirectW(&metrics.lfMenuFont);
    HDC dc = bar.font ? GetDC(bar.parent) : nullptr;
    if (!dc) return false;
    HGDIOBJ fontBefore = SelectObject(dc, bar.font);
    TEXTMETRICW text{};
    GetTextMetricsW(dc, &text);
    bar.height = std::max<int>(kMinimumHeight, text.tmHeight + 2 * kPadding);
    int left = 2;
    for (int i = 0; i < bar.count; ++i) {
        Button& button = bar.buttons[i];
        button.area = {left, 3, left + WidthOf(button, dc), bar.height - 1};
        left = button.area.right;
    }
    SelectObject(dc, fontBefore);
    ReleaseDC(bar.parent, dc);
    return true;
}

void PlaceBar(const MenuBar& bar) {
    RECT client{};
    GetClientRect(bar.parent, &client);
    // Drawn anew: what stood there may not have been painted yet, or may have been painted over by the panes.
    SetWindowPos(bar.window, nullptr, 0, client.bottom - bar.height, client.right, bar.height,
                 SWP_NOZORDER | SWP_NOACTIVATE | SWP_NOCOPYBITS);
}

void Redraw(const MenuBar& bar) {
    InvalidateRect(bar.window, nullptr, TRUE);
}

void DrawArrow(HDC dc, const RECT& content, COLORREF colour) {
    const int right = content.right - kPadding;
    const int top = (content.top + content.bottom - kArrowHeight) / 2;
    HGDIOBJ brushBefore = SelectObject(dc, GetStockObject(DC_BRUSH));
    SetDCBrushColor(dc, colour);
    for (int row = 0; row < kArrowHeight; ++row) {
        PatBlt(dc, right - kArrowWidth / 2 - 1 - row, top + row, 2 * row + 1, 1, PATCOPY);
    }
    SelectObject(dc, brushBefore);
}

void DrawButton(HDC dc, const MenuBar& bar, int index) {
    const Button& button = bar.buttons[index];
    RECT content = button.area;
    if (index == bar.open || index == bar.pressed) {
        DrawEdge(dc, &content, BDR_SUNKENOUTER, BF_RECT);
        OffsetRect(&content, 1, 1);
    } else if (index == bar.selected) {
        DrawEdge(dc, &content, BDR_RAISEDINNER, BF_RECT);
    }
    const COLORREF colour = GetSysColor(button.enabled ? COLOR_BTNTEXT : COLOR_GRAYTEXT);
    if (button.popup) DrawArrow(dc, content, colour);
    content.left += kPadding;
    if (button.image != kNone) {
        ImageList_Draw(bar.images, button.image, dc, content.left,
                       (content.top + content.bottom - kImageSide) / 2, ILD_TRANSPARENT);
        content.left += kImageSide;
    }
    SetTextColor(dc, colour);
    DrawTextW(dc, button.caption.data(), -1, &content, DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX);
}

void OnPaint(const MenuBar& bar) {
    PAINTSTRUCT paint{};
    HDC dc = BeginPaint(bar.window, &paint);
    if (!dc) return;
    RECT area{};
    GetClientRect(bar.window, &area);
    DrawEdge(dc, &area, EDGE_ETCHED, BF_TOP);
    HGDIOBJ fontBefore = SelectObject(dc, bar.font);
    SetBkMode(dc, TRANSPARENT);
    for (int i = 0; i < bar.count; ++i)
        DrawButton(dc, bar, i);
    SelectObject(dc, fontBefore);
    EndPaint(bar.window, &paint);
}

// Pressing.

// The enabled button at `point` of the bar, or kNone.
int ButtonAt(const MenuBar& bar, POINT point) {
    for (int i = 0; i < bar.count; ++i) {
        if (bar.buttons[i].enabled && PtInRect(&bar.buttons[i].area, point)) return i;
    }
    return kNone;
}

int Step(const MenuBar& bar, int index, int direction) {
    return bar.count ? (index + direction + bar.count) % bar.count : kNone;
}

void GiveFocusBack(const MenuBar& bar) {
    if (GetFocus() != bar.window) return;
    SetFocus(IsWindow(bar.focusBefore) ? bar.focusBefore : bar.parent);
}

// The focus goes first, so that the command finds it where it was. Posted, because the command may hide the
// bar or end it, and we may stand in one of its messages.
void SendCommand(const MenuBar& bar, UINT command) {
    GiveFocusBack(bar);
    PostMessageW(bar.parent, WM_COMMAND, MAKEWPARAM(command, 0), 0);
}

void SwitchPopup(MenuBar& bar, int target, bool byKey) {
    bar.next = target;
    bar.preselect = byKey;
    EndMenu();
}

// The next drop-down that way round, `from` itself when there is no other.
int NextDropDown(const MenuBar& bar, int from, int direction) {
    int index = Step(bar, from, direction);
    while (index != from && !(bar.buttons[index].popup && bar.buttons[index].enabled)) {
        index = Step(bar, index, direction);
    }
    return index;
}

// A message of the open popup's loop: left, right and the mouse over another drop-down lead to that one's
// popup, a click on the open one's button closes it, one on a button without a popup is that button's. True
// when the menu must not see the message. The popups have no popups of their own, which would need left and
// right.
bool OnMenuMessage(MenuBar& bar, const MSG& message) {
    if (message.message == WM_KEYDOWN && (message.wParam == VK_LEFT || message.wParam == VK_RIGHT)) {
        SwitchPopup(bar, NextDropDown(bar, bar.open, message.wParam == VK_LEFT ? -1 : 1), true);
        return true;
    }
    if (message.message != WM_MOUSEMOVE && message.message != WM_LBUTTONDOWN) return false;
    POINT point = message.pt;
    // A window that opens makes the mouse report itself without having moved.
    if (message.message == WM_MOUSEMOVE && point.x == bar.mouse.x && point.y == bar.mouse.y) return false;
    ScreenToClient(bar.window, &point);
    const int target = ButtonAt(bar, point);
    if (target == kNone) return false;
    if (message.message == WM_LBUTTONDOWN && target == bar.open) {
        EndMenu();
        return true;
    }
    if (target != bar.open && bar.buttons[target].popup) SwitchPopup(bar, target, false);
    if (message.message == WM_LBUTTONDOWN && !bar.buttons[target].popup) {
        EndMenu();
        SendCommand(bar, bar.buttons[target].command);
    }
    return target != bar.open;
}

LRESULT CALLBACK FilterMenuMessage(int code, WPARAM wParam, LPARAM lParam) {
    if (code == MSGF_MENU && trackedBar && OnMenuMessage(*trackedBar, *reinterpret_cast<MSG*>(lParam))) {
        return 1;
    }
    return CallNextHookEx(nullptr, code, wParam, lParam);
}

// Shows one popup above its button until it closes. Returns the command chosen, 0 for none.
UINT TrackPopup(MenuBar& bar, int index) {
    const Button& button = bar.buttons[index];
    bar.open = index;
    bar.next = kNone;
    GetCursorPos(&bar.mouse);
    if (bar.selected != kNone) bar.selected = index;
    Redraw(bar);
    UpdateWindow(bar.window);
    // To the parent: should the menu never read it, the key does nothing there.
    if (bar.preselect) PostMessageW(bar.parent, WM_KEYDOWN, VK_DOWN, 0);
    TPMPARAMS keepClear{};
    keepClear.cbSize = sizeof(keepClear);
    keepClear.rcExclude = button.area;
    MapWindowPoints(bar.window, nullptr, reinterpret_cast<POINT*>(&keepClear.rcExclude), 2);
    const BOOL command =
        TrackPopupMenuEx(button.popup, TPM_BOTTOMALIGN | TPM_VERTICAL | TPM_RETURNCMD,
                         keepClear.rcExclude.left, keepClear.rcExclude.top, bar.parent, &keepClear);
    return static_cast<UINT>(command);
}

void OpenPopups(MenuBar& bar, int index, bool byKey) {
    // Without the hook each popup still works, but leads to no other.
    HHOOK hook = SetWindowsHookExW(WH_MSGFILTER, FilterMenuMessage, nullptr, GetCurrentThreadId());
    trackedBar = &bar;
    bar.preselect = byKey;
    UINT command = 0;
    // A popup's loop runs everything, the end of the bar included.
    while (index != kNone && trackedBar) {
        command = TrackPopup(bar, index);
        index = trackedBar ? bar.next : kNone;
    }
    if (hook) UnhookWindowsHookEx(hook);
    if (!trackedBar) return;
    trackedBar = nullptr;
    bar.open = kNone;
    Redraw(bar);
    if (command) SendCommand(bar, command);
}

void PressButton(MenuBar& bar, int index, bool byKey) {
    const Button& button = bar.buttons[index];
    if (!button.enabled || trackedBar) return;
    if (button.popup) {
        OpenPopups(bar, index, byKey);
    } else {
        SendCommand(bar, button.command);
    }
}

// Mouse and keyboard.

POINT PointOf(LPARAM lParam) {
    return {static_cast<short>(LOWORD(lParam)), static_cast<short>(HIWORD(lParam))};
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

HMENU OnGetSubMenu(const MenuBar& bar, UINT command) {
    for (int i = 0; i < bar.count; ++i) {
        if (bar.buttons[i].command == command) return bar.buttons[i].popup;
    }
    return nullptr;
}

// The dock.

bool IsShown(const MenuBar& bar) {
    return (GetWindowLongW(bar.window, GWL_STYLE) & WS_VISIBLE) != 0;
}

// Alt or F10, wherever in the frame it was pressed. False when no bar shows.
bool OnKeyMenu(const Dock& dock) {
    for (MenuBar* bar = dock.first; bar; bar = bar->neighbour) {
        if (!IsShown(*bar)) continue;
        if (GetFocus() == bar->window) {
            GiveFocusBack(*bar);
        } else {
            SetFocus(bar->window);
        }
        return true;
    }
    return false;
}

bool IsBar(const Dock& dock, HWND window) {
    const MenuBar* bar = dock.first;
    while (bar && bar->window != window)
        bar = bar->neighbour;
    return bar != nullptr;
}

// The panes fill what the bars leave. On the device the shell keeps the parent's size; here the user drags
// it.
void PlacePanes(const Dock& dock) {
    if (!dock.first) return;
    RECT client{};
    GetClientRect(dock.parent, &client);
    for (HWND pane = GetWindow(dock.parent, GW_CHILD); pane; pane = GetWindow(pane, GW_HWNDNEXT)) {
        if (!IsBar(dock, pane))
            MoveWindow(pane, 0, 0, client.right, client.bottom - dock.first->height, TRUE);
    }
}

void OnParentSize(const Dock& dock) {
    for (const MenuBar* bar = dock.first; bar; bar = bar->neighbour)
        PlaceBar(*bar);
    PlacePanes(dock);
}

// No button is ever cut off, and the panes keep the height of a few rows.
void SetLeastSize(const Dock& dock, MINMAXINFO& limits) {
    constexpr LONG kLeastPaneHeight = 100;
    RECT area{};
    for (const MenuBar* bar = dock.first; bar; bar = bar->neighbour) {
        if (bar->count) area.right = std::max(area.right, bar->buttons[bar->count - 1].area.right);
        area.bottom = kLeastPaneHeight + bar->height;
    }
    AdjustWindowRectEx(&area, static_cast<DWORD>(GetWindowLongW(dock.parent, GWL_STYLE)), FALSE,
                       static_cast<DWORD>(GetWindowLongW(dock.parent, GWL_EXSTYLE)));
    limits.ptMinTrackSize = {area.right - area.left, area.bottom - area.top};
}

// A popup whose owner is destroyed takes its window along, and its loop may then wait for ever; it has to end
// first, and to be woken to notice.
void OnParentClose() {
    if (!trackedBar) return;
    EndMenu();
    PostThreadMessageW(GetCurrentThreadId(), WM_NULL, 0, 0);
}

LRESULT CALLBACK DockProcedure(HWND parent, UINT message, WPARAM wParam, LPARAM lParam);

// A window that was subclassed again since must keep us until it ends.
void FreeDock(Dock* dock, bool parentEnds) {
    const LONG_PTR current = GetWindowLongPtrW(dock->parent, GWLP_WNDPROC);
    if (current == reinterpret_cast<LONG_PTR>(DockProcedure)) {
        SetWindowLongPtrW(dock->parent, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(dock->procedure));
    } else if (!parentEnds) {
        return;
    }
    RemovePropW(dock->parent, kDockProperty);
    delete dock;
}

LRESULT CALLBACK DockProcedure(HWND parent, UINT message, WPARAM wParam, LPARAM lParam) {
    auto dock = static_cast<Dock*>(GetPropW(parent, kDockProperty));
    if (!dock) return DefWindowProcW(parent, message, wParam, lParam);
    WNDPROC procedure = dock->procedure;
    // With a character (Alt+Space and the like) it is not for the bar.
    if (message == WM_SYSCOMMAND && (wParam & 0xFFF0) == SC_KEYMENU && !lParam && OnKeyMenu(*dock)) return 0;
    if (message == WM_SIZE && wParam != SIZE_MINIMIZED) OnParentSize(*dock);
    if (message == WM_CLOSE) OnParentClose();
    if (message == WM_GETMINMAXINFO) SetLeastSize(*dock, *reinterpret_cast<MINMAXINFO*>(lParam));
    LRESULT result = 0;
    if (OnFrameMessage(dock->frame, message, wParam, lParam, result)) return result;
    if (message == WM_NCDESTROY) FreeDock(dock, true);
    result = CallWindowProcW(procedure, parent, message, wParam, lParam);
    AfterFrameMessage(parent, message);
    return result;
}

// The parent's dock, made for its first bar.
Dock* DockOf(HWND parent, HINSTANCE module) {
    if (auto dock = static_cast<Dock*>(GetPropW(parent, kDockProperty))) return dock;
    std::unique_ptr<Dock> dock(new (std::nothrow) Dock);
    if (!dock) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    dock->parent = parent;
    dock->procedure = reinterpret_cast<WNDPROC>(GetWindowLongPtrW(parent, GWLP_WNDPROC));
    if (!SetPropW(parent, kDockProperty, dock.get())) return nullptr;
    SetWindowLongPtrW(parent, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(DockProcedure));
    DressFrame(dock->frame, parent, module);
    return dock.release();
}

void EnterDock(MenuBar& bar, Dock& dock) {
    bar.dock = &dock;
    bar.neighbour = dock.first;
    dock.first = &bar;
}

void LeaveDock(MenuBar& bar) {
    MenuBar** link = &bar.dock->first;
    while (*link != &bar)
        link = &(*link)->neighbour;
    *link = bar.neighbour;
    if (!bar.dock->first) FreeDock(bar.dock, false);
}

// The bar's window.

void OnEnd(MenuBar* bar) {
    if (trackedBar == bar) trackedBar = nullptr;
    SetWindowLongPtrW(bar->window, GWLP_USERDATA, 0);
    if (bar->dock) LeaveDock(*bar);
    delete bar;
}

LRESULT CALLBACK BarProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    auto bar = reinterpret_cast<MenuBar*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (!bar) return DefWindowProcW(window, message, wParam, lParam);
    switch (message) {
        case WM_PAINT:
            OnPaint(*bar);
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

// Makes the window and gives it the bar; until then, and after a failure, the bar is the caller's.
[[nodiscard]] bool CreateBarWindow(MenuBar& bar, HINSTANCE module) {
    Dock* dock = DockOf(bar.parent, module);
    if (!dock) return false;
    EnterDock(bar, *dock);
    bar.window = CreateWindowExW(0, kMenuBarClass, nullptr, WS_CHILD | WS_CLIPSIBLINGS, 0, 0, 0, 0,
                                 bar.parent, nullptr, module, nullptr);
    if (!bar.window) {
        const DWORD error = GetLastError();
        LeaveDock(bar);
        SetLastError(error);
        return false;
    }
    SetWindowLongPtrW(bar.window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(&bar));
    PlaceBar(bar);
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
    if (!RegisterBarClass(info->hInstRes) || !LoadContents(*bar, *info) || !ArrangeButtons(*bar) ||
        !CreateBarWindow(*bar, info->hInstRes)) {
        const DWORD error = GetLastError();
        bar.reset();
        SetLastError(error);
        return FALSE;
    }
    info->hwndMB = bar.release()->window;
    return TRUE;
}
