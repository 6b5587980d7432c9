#include "dialup/dialup.h"

#include <new>

#include "resources/resource.h"
#include "text/messages.h"

namespace {

enum Timer : UINT_PTR { kConnectedTimer = 1, kWaitTimer = 2, kDoneTimer = 3 };
constexpr UINT kShowMilliseconds = 500;  // how long the last status is shown

struct StateText {
    RASCONNSTATE state;
    UINT stringId;
};

constexpr StateText kStateTexts[] = {
    {RASCS_OpenPort, IDS_DIAL_OPEN_PORT},           {RASCS_PortOpened, IDS_DIAL_PORT_OPENED},
    {RASCS_ConnectDevice, IDS_DIAL_CONNECT_DEVICE}, {RASCS_DeviceConnected, IDS_DIAL_DEVICE_CONNECTED},
    {RASCS_Authenticate, IDS_DIAL_AUTHENTICATE},    {RASCS_Authenticated, IDS_DIAL_AUTHENTICATED},
    {RASCS_Connected, IDS_DIAL_CONNECTED},          {RASCS_Disconnected, IDS_DIAL_DISCONNECTED},
};

void ShowStatus(HWND dialog, UINT stringId) {
    const wchar_t* text = LoadResString(stringId);
    if (text) SetDlgItemTextW(dialog, IDC_DIAL_STATUS, text);
}

void DisableCancel(HWND dialog) {
    EnableWindow(GetDlgItem(dialog, IDCANCEL), FALSE);
}

// The connect dialog. Its user data is the frame until the call has ended, so that the end is reported once,
// whatever arrives while the dialog closes.

HWND TakeFrame(HWND dialog) {
    const auto frame = static_cast<HWND>(GetWindowPointer(dialog, kUserData));
    SetWindowPointer(dialog, kUserData, nullptr);
    return frame;
}

void EndCall(HWND dialog, UINT message) {
    const HWND frame = TakeFrame(dialog);
    if (!frame) return;
    PostMessageW(frame, message, 0, 0);
    PostMessageW(dialog, WM_CLOSE, 0, 0);
}

void OnConnected(HWND dialog) {
    DisableCancel(dialog);
    SetTimer(dialog, kConnectedTimer, kShowMilliseconds, nullptr);
}

void OnDialFailed(HWND dialog) {
    const HWND frame = TakeFrame(dialog);
    TextBuffer caption;
    ShowWindow(dialog, SW_HIDE);
    MessageBoxW(dialog, LoadResString(IDS_DIAL_FAILED), LoadResString(IDS_DIAL_ERROR_CAPTION, caption),
                MB_OK | MB_ICONEXCLAMATION);
    PostMessageW(frame, kHangUpMessage, 0, 0);
    PostMessageW(dialog, WM_CLOSE, 0, 0);
}

// A state that fails is reported a second time, with its error: the call is over then.
void OnRasEvent(HWND dialog, WPARAM state, LPARAM error) {
    if (!GetWindowPointer(dialog, kUserData)) return;
    const auto reached = error != 0 ? RASCS_Disconnected : static_cast<RASCONNSTATE>(state);
    for (const StateText& text : kStateTexts) {
        if (text.state == reached) ShowStatus(dialog, text.stringId);
    }
    if (reached == RASCS_Connected) OnConnected(dialog);
    if (reached == RASCS_Disconnected) OnDialFailed(dialog);
}

void OnConnectTimer(HWND dialog, WPARAM timer) {
    if (timer != kConnectedTimer) {
        DestroyWindow(dialog);
        return;
    }
    KillTimer(dialog, kConnectedTimer);
    EndCall(dialog, kStartRunMessage);
}

INT_PTR CALLBACK ConnectProcedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_RASDIALEVENT || message == RasEventMessage()) {
        OnRasEvent(dialog, wParam, lParam);
        return TRUE;
    }
    switch (message) {
        case WM_INITDIALOG:
            SetWindowPointer(dialog, kUserData, reinterpret_cast<void*>(lParam));
            return TRUE;
        case WM_TIMER:
            OnConnectTimer(dialog, wParam);
            return TRUE;
        case WM_COMMAND:
            if (LOWORD(wParam) == IDCANCEL) EndCall(dialog, kHangUpMessage);
            return TRUE;
        case WM_CLOSE:
            EndCall(dialog, kHangUpMessage);  // closed by Alt+F4: nobody else would enable the frame again
            DestroyWindow(dialog);
            return TRUE;
        default:
            return FALSE;
    }
}

// The disconnect dialog, from the same resource.

struct DisconnectDialog {
    HWND frame = nullptr;
    uint32_t seconds = 0;
};

void HangUpNow(HWND dialog, const DisconnectDialog& state) {
    SendMessageW(state.frame, kHangUpMessage, 0, 0);
    DisableCancel(dialog);
    ShowStatus(dialog, IDS_DIAL_DISCONNECTED);
    SetTimer(dialog, kDoneTimer, kShowMilliseconds, nullptr);
}

INT_PTR OnInitDisconnect(HWND dialog, DisconnectDialog* state) {
    SetWindowPointer(dialog, kUserData, state);
    const wchar_t* title = LoadResString(IDS_DIAL_DISCONNECTING);
    if (title) SetWindowTextW(dialog, title);
    if (state->seconds == 0) {
        HangUpNow(dialog, *state);
    } else {
        constexpr uint32_t kLongestWait = 0x7FFFFFFF / 1000;  // a timer takes milliseconds
        const uint32_t seconds = state->seconds < kLongestWait ? state->seconds : kLongestWait;
        ShowStatus(dialog, IDS_DIAL_WILL_DISCONNECT);
        SetTimer(dialog, kWaitTimer, seconds * 1000, nullptr);
    }
    return TRUE;
}

void OnDisconnectTimer(HWND dialog, const DisconnectDialog& state, WPARAM timer) {
    if (timer == kWaitTimer) {
        // The wait timer keeps running: the dialog is gone before it fires again.
        KillTimer(dialog, kConnectedTimer);
        HangUpNow(dialog, state);
    }
    if (timer == kDoneTimer) {
        KillTimer(dialog, kDoneTimer);
        PostMessageW(dialog, WM_CLOSE, 0, 0);
    }
}

INT_PTR CALLBACK DisconnectProcedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_INITDIALOG)
        return OnInitDisconnect(dialog, reinterpret_cast<DisconnectDialog*>(lParam));
    auto state = static_cast<const DisconnectDialog*>(GetWindowPointer(dialog, kUserData));
    if (!state) return FALSE;
    switch (message) {
        case WM_TIMER:
            OnDisconnectTimer(dialog, *state, wParam);
            return TRUE;
        case WM_COMMAND:
            if (LOWORD(wParam) == IDCANCEL) PostMessageW(dialog, WM_CLOSE, 0, 0);
            return TRUE;
        case WM_CLOSE:
            EndDialog(dialog, IDOK);
            return TRUE;
        default:
            return FALSE;
    }
}

void ReadEntry(const wchar_t* entry, RasDialParameters& parameters) {
    parameters.dwSize = sizeof(parameters);
    CopyCut(parameters.szEntryName, sizeof(parameters.szEntryName) / sizeof(wchar_t), entry);
    (void)ReadRasDialParameters(&parameters);
}

HWND ShowConnectDialog(HWND frame, HINSTANCE instance, const wchar_t* entry) {
    const HWND dialog = CreateModelessDialog(instance, IDD_CONNECT, frame, ConnectProcedure, frame);
    if (!dialog) return nullptr;
    SetWindowTextW(dialog, FormatText(LoadResString(IDS_DIAL_CONNECTING_TO), entry));
    ShowWindow(dialog, SW_SHOW);
    return dialog;
}

}  // namespace

bool IsLineUp() {
    RasConnection connection = {};
    connection.dwSize = sizeof(connection);
    DWORD size = sizeof(connection);
    DWORD count = 0;
    (void)ListRasConnections(&connection, &size, &count);
    return count > 0;
}

void StartDial(HWND frame, HINSTANCE instance, const wchar_t* entry, HRASCONN* connection) {
    RasDialParameters parameters = {};
    ReadEntry(entry, parameters);
    *connection = nullptr;
    EnableWindow(frame, FALSE);
    const HWND dialog = ShowConnectDialog(frame, instance, entry);
    if (!dialog) {  // without a window to report to, the call would block the program until it ends
        PostMessageW(frame, kHangUpMessage, 0, 0);
        return;
    }
    const DWORD error = StartRasDial(&parameters, dialog, connection);
    // A call that does not start reports nothing itself.
    if (error != 0) PostMessageW(dialog, WM_RASDIALEVENT, RASCS_Disconnected, static_cast<LPARAM>(error));
    Sleep(1);
}

void RunDisconnectDialog(HWND frame, HINSTANCE instance, uint32_t seconds) {
    DisconnectDialog state{frame, seconds};
    (void)RunDialog(instance, IDD_CONNECT, frame, DisconnectProcedure, &state);
}

std::unique_ptr<PhoneBook> ReadPhoneBook() {
    std::unique_ptr<PhoneBook> book(new (std::nothrow) PhoneBook);
    if (!book) return nullptr;
    DWORD size = sizeof(book->entries);
    book->entries[0].dwSize = sizeof(book->entries[0]);
    if (ListRasEntries(book->entries, &size, &book->count) != 0) return nullptr;
    if (book->count > PhoneBook::kCapacity) book->count = PhoneBook::kCapacity;
    return book;
}
