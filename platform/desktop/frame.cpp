// The program's frame as a window of the desktop. A subclass handles what the device does not have.
#include "platform/desktop/dialog_place.h"
#include "platform/desktop/dock.h"
#include "platform/desktop/wheel.h"
#include "platform/desktop/window_place.h"
#include "platform/platform.h"

#include <imm.h>

namespace {

constexpr SIZE kFirstSize = {640, 480};     // all columns of the subject view are in sight
constexpr UINT kMaximise = WM_APP + 0x100;  // beyond the frame's own messages

struct DesktopFrame {
    HWND window = nullptr;
    WNDPROC procedure = nullptr;   // the window's own
    const wchar_t* key = nullptr;  // not owned
    UINT wakeMessage = 0;
    int wheelRest = 0;
    bool maximisesLater = false;  // once the window is shown
    HookOwner dialogs;            // places them
};
DesktopFrame desktopFrame;  // a second start makes none

void AddBorder(HWND window) {
    const LONG style = GetWindowLongW(window, GWL_STYLE);
    SetWindowLongW(window, GWL_STYLE, style | static_cast<LONG>(WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN));
    SetWindowPos(window, nullptr, 0, 0, 0, 0,
                 SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE | SWP_FRAMECHANGED);
}

// For the task bar and for switching with Alt+Tab; the frame sets the small one itself.
void SetLargeIcon(HWND window, int id) {
    const auto module = reinterpret_cast<HINSTANCE>(GetWindowLongPtrW(window, GWLP_HINSTANCE));
    HANDLE icon = LoadImageW(module, MAKEINTRESOURCEW(id), IMAGE_ICON, GetSystemMetrics(SM_CXICON),
                             GetSystemMetrics(SM_CYICON), LR_SHARED);
    if (icon) SendMessageW(window, WM_SETICON, ICON_BIG, reinterpret_cast<LPARAM>(icon));
}

// A window that a dialog has disabled does not scroll.
void OnWheel(DesktopFrame& frame, int turn) {
    const HWND pane = IsWindowEnabled(frame.window) ? ShownPane(frame.window) : nullptr;
    if (pane) TurnWheel(pane, turn, frame.wheelRest);
}

// The panes' classes have no cursor because the device has none. Without this the cursor of the border, or of
// whatever the mouse came from, would stay.
bool OnSetCursor(HWND under, WORD place) {
    if (place != HTCLIENT || GetClassLongPtrW(under, GCLP_HCURSOR)) return false;
    SetCursor(LoadCursorW(nullptr, MAKEINTRESOURCEW(32512)));  // IDC_ARROW
    return true;
}

// The system ends the program as soon as this returns, so what closing saves is saved now.
void OnEndSession(const DesktopFrame& frame, bool ends) {
    if (ends) SendMessageW(frame.window, WM_CLOSE, 0, 0);
}

void OnDestroy(DesktopFrame& frame) {
    frame.dialogs.Reset();
    SavePlace(frame.window, frame.key);
}

// A dialog that runs before the window is shown handles the message too early; it is posted again when the
// window shows.
void OnMaximise(DesktopFrame& frame) {
    const bool visible = IsWindowVisible(frame.window) != 0;
    frame.maximisesLater = !visible;
    if (visible && !IsIconic(frame.window)) ShowWindow(frame.window, SW_SHOWMAXIMIZED);
}

BOOL CALLBACK TakeIfUsable(HWND window, LPARAM parameter) {
    if (!IsWindowVisible(window) || !IsWindowEnabled(window)) return TRUE;
    *reinterpret_cast<HWND*>(parameter) = window;
    return FALSE;
}

// A box without an owner may be open while the frame is disabled for it.
HWND WindowInFront(HWND frame) {
    HWND front = GetLastActivePopup(frame);
    if (!IsWindowVisible(front)) front = frame;
    if (!IsWindowEnabled(front))
        EnumThreadWindows(GetCurrentThreadId(), TakeIfUsable, reinterpret_cast<LPARAM>(&front));
    return front;
}

void OnWake(HWND window) {
    if (IsIconic(window)) ShowWindow(window, SW_RESTORE);
    SetForegroundWindow(WindowInFront(window));
}

// A frame that comes back from the task bar and keeps the focus for itself would leave the keyboard without
// effect.
void AfterSetFocus(HWND window) {
    const HWND pane = GetFocus() == window ? ShownPane(window) : nullptr;
    if (pane) SetFocus(pane);
}

// The panes' keys are commands, which an input method would take for the start of a word.
void OnChild(HWND child, WORD event) {
    if (event == WM_CREATE) ImmAssociateContext(child, nullptr);
}

LRESULT CALLBACK FrameProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    DesktopFrame& frame = desktopFrame;
    switch (message) {
        case WM_MOUSEWHEEL:
            OnWheel(frame, GET_WHEEL_DELTA_WPARAM(wParam));
            return 0;
        case WM_SETCURSOR:
            if (OnSetCursor(reinterpret_cast<HWND>(wParam), LOWORD(lParam))) return TRUE;
            break;
        case WM_PARENTNOTIFY:
            OnChild(reinterpret_cast<HWND>(lParam), LOWORD(wParam));
            break;
        case WM_ENDSESSION:
            OnEndSession(frame, wParam != 0);
            return 0;
        case WM_DESTROY:
            OnDestroy(frame);
            break;
        case kMaximise:
            OnMaximise(frame);
            return 0;
        case WM_SHOWWINDOW:
            if (wParam && frame.maximisesLater) PostMessageW(window, kMaximise, 0, 0);
            break;
        default:
            if (message == frame.wakeMessage) OnWake(window);
    }
    const LRESULT result = CallWindowProcW(frame.procedure, window, message, wParam, lParam);
    if (message == WM_SETFOCUS) AfterSetFocus(window);
    return result;
}

// Scaled with the system's texts, as Wine needs it. Windows enlarges the whole window instead, as the
// manifest asks, and always answers the usual number of dots.
SIZE FirstSize(HWND window) {
    constexpr int kUsualDots = 96;  // an inch
    const WindowDc dc(window);
    const int dots = GetDeviceCaps(dc.Get(), LOGPIXELSY);
    return {MulDiv(kFirstSize.cx, dots, kUsualDots), MulDiv(kFirstSize.cy, dots, kUsualDots)};
}

}  // namespace

// The window's maker shows it at its normal size. Only then can it be maximised.
void SetUpDesktopFrame(HWND window, int icon, const wchar_t* key, UINT wakeMessage) {
    const LONG_PTR procedure = GetWindowLongPtrW(window, GWLP_WNDPROC);
    desktopFrame = DesktopFrame();
    desktopFrame.window = window;
    desktopFrame.procedure = reinterpret_cast<WNDPROC>(procedure);
    desktopFrame.key = key;
    desktopFrame.wakeMessage = wakeMessage;
    SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(FrameProcedure));
    AddBorder(window);
    SetLargeIcon(window, icon);
    if (RestorePlace(window, key, FirstSize(window))) PostMessageW(window, kMaximise, 0, 0);
    desktopFrame.dialogs = PlaceDialogsOver(window);
}

void NameInTitle(HWND frame, const wchar_t* group) {
    WCHAR title[128] = L"Pelnor";
    if (group) wsprintfW(title, L"%.100s - Pelnor", group);
    SetWindowTextW(frame, title);
}
