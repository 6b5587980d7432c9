#include "shell/app_frame.h"

#include "resources/resource.h"
#include "text/last_error.h"
#include "text/messages.h"

namespace {

constexpr int kClassNameSize = 1024;

WinsockOwner StartWinsock() {
    WSADATA data;
    return WinsockOwner(WSAStartup(MAKEWORD(2, 2), &data) == 0);
}

// Brings a frame of this program forward, and ends the enumeration there.
BOOL CALLBACK WakeFrame(HWND window, LPARAM parameter) {
    wchar_t name[kClassNameSize] = {};
    GetClassNameW(window, name, kClassNameSize);
    if (wcscmp(name, kFrameClass) != 0) return TRUE;
    SetForegroundWindow(window);
    PostMessageW(window, kWakeMessage, 0, 0);
    *reinterpret_cast<bool*>(parameter) = true;
    return FALSE;
}

bool WakeFirstInstance() {
    bool found = false;
    EnumWindows(WakeFrame, reinterpret_cast<LPARAM>(&found));
    return found;
}

// Two starts at once would both find no frame, so they search one after the other. When the one before
// hangs, this one goes ahead.
TurnOwner AwaitTurn() {
    constexpr DWORD kPatience = 5000;  // milliseconds
    TurnOwner turn(CreateEventW(nullptr, FALSE, TRUE, L"PelnorStart"));
    if (turn) WaitForSingleObject(turn.Get(), kPatience);
    return turn;
}

bool AllocateViews(AppFrame& frame) {
    frame.articleView.reset(new (std::nothrow) ArticleView);
    frame.subjectView.reset(new (std::nothrow) SubjectView);
    frame.groupView.reset(new (std::nothrow) GroupView);
    frame.draftTree.reset(new (std::nothrow) DraftTree);
    const bool allocated = frame.articleView && frame.subjectView && frame.groupView && frame.draftTree;
    return allocated || Fail(kErrorNoMemory);
}

bool CreateFrame(AppFrame& frame) {
    if (!AllocateViews(frame)) return false;
    const HWND window =
        CreateWindowExW(0, kFrameClass, L"Pelnor", WS_VISIBLE, CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT,
                        CW_USEDEFAULT, nullptr, nullptr, frame.instance, &frame);
    // The user can end the program while the frame is being made; that is no failure.
    return window || frame.ended;
}

void ShowFrame(AppFrame& frame, int showCommand) {
    frame.accelerators = LoadAcceleratorsW(frame.instance, MAKEINTRESOURCEW(IDA_MAIN));
    ShowWindow(frame.mainWindow, showCommand);
    UpdateWindow(frame.mainWindow);
}

int RunMessageLoop(const AppFrame& frame) {
    MSG message = {};
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        if (frame.job && TakeProgressKey(frame.job->progress, message)) continue;
        if (TranslateAcceleratorW(frame.mainWindow, frame.accelerators, &message)) continue;
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    return static_cast<int>(message.wParam);
}

int RunFrame(HINSTANCE instance, int showCommand, TurnOwner turn, WinsockOwner& winsock) {
    AppFrame frame;
    const WinsockOwner endsBeforeTheFrame(std::move(winsock));
    frame.turn = std::move(turn);
    if (OpenFrame(frame, instance, showCommand)) return RunMessageLoop(frame);
    MessageBoxW(nullptr, FormatLastError(L"FAILED(%d)"), kProgramCaption, MB_OK | MB_ICONERROR);
    return 1;
}

}  // namespace

bool OpenFrame(AppFrame& frame, HINSTANCE instance, int showCommand) {
    const bool registered = RegisterArticleViewClass(instance) && RegisterSubjectViewClass(instance) &&
                            RegisterFrameClass(instance);
    frame.instance = instance;
    InitSettings(frame.settings);
    if (!registered || !CreateFrame(frame)) return false;
    ShowFrame(frame, showCommand);
    return true;
}

int RunPelnor(HINSTANCE instance, int showCommand) {
    SetResourceInstance(instance);
    InitCommonControls();
    WinsockOwner winsock = StartWinsock();
    if (!winsock) {
        MessageBoxW(nullptr, L"Init winsock failed.", L"Error", MB_OK | MB_ICONERROR);
        return 1;
    }
    TurnOwner turn = AwaitTurn();
    return WakeFirstInstance() ? 0 : RunFrame(instance, showCommand, std::move(turn), winsock);
}
