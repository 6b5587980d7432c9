// Windows that draw themselves answer WM_GETTEXT and WM_GETTEXTLENGTH like any other, so that a screen reader
// finds a text. It is asked for rather than set: the system keeps set texts, however long, in memory that all
// programs share.
#include "platform/platform.h"

namespace {

constexpr WCHAR kOwnProcedure[] = L"PelnorReadableProcedure";  // the properties that keep them
constexpr WCHAR kText[] = L"PelnorReadableText";

const wchar_t* TextOf(HWND window) {
    const auto text = reinterpret_cast<WindowText>(GetPropW(window, kText));
    const wchar_t* found = text ? text(window) : nullptr;
    return found ? found : L"";
}

LRESULT OnGetText(HWND window, wchar_t* buffer, WPARAM capacity) {
    constexpr WPARAM kMost = 0x7FFFFFFF;
    if (capacity == 0) return 0;
    lstrcpynW(buffer, TextOf(window), static_cast<int>(capacity < kMost ? capacity : kMost));
    return lstrlenW(buffer);
}

LRESULT CALLBACK ReadableProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    const auto procedure = reinterpret_cast<WNDPROC>(GetPropW(window, kOwnProcedure));
    if (message == WM_GETTEXT) return OnGetText(window, reinterpret_cast<wchar_t*>(lParam), wParam);
    if (message == WM_GETTEXTLENGTH) return lstrlenW(TextOf(window));
    const LRESULT result = CallWindowProcW(procedure, window, message, wParam, lParam);
    if (message == WM_NCDESTROY) {
        RemovePropW(window, kOwnProcedure);
        RemovePropW(window, kText);
    }
    return result;
}

}  // namespace

// Without the properties the window stays silent.
void MakeReadable(HWND window, WindowText text) {
    const LONG_PTR procedure = GetWindowLongPtrW(window, GWLP_WNDPROC);
    if (!SetPropW(window, kText, reinterpret_cast<HANDLE>(text)) ||
        !SetPropW(window, kOwnProcedure, reinterpret_cast<HANDLE>(procedure)))
        return;
    SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(ReadableProcedure));
}

void AnnounceText(HWND window) {
    NotifyWinEvent(EVENT_OBJECT_NAMECHANGE, window, OBJID_CLIENT, CHILDID_SELF);
}
