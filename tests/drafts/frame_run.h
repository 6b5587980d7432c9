// The program's own frame on a thread of its own.
#pragma once

#include "shell/app_frame.h"
#include "tests/support/ui_thread.h"
#include "text/messages.h"

class FrameRun {
  public:
    FrameRun() : thread([this] { return Run(); }) {}

    HWND Window() const { return thread.Window(L"Pelnor"); }

    // Does not wait: a command may open a dialog.
    void Command(UINT id) const { PostMessageW(frame.mainWindow, WM_COMMAND, id, 0); }

    AppFrame frame;
    UiThread thread;

  private:
    INT_PTR Run() {
        const HINSTANCE instance = GetModuleHandleW(nullptr);
        SetResourceInstance(instance);
        InitCommonControls();
        for (const wchar_t* name : {kFrameClass, L"PELNORSubjectViewWnd", L"PELNORArticleViewWnd"})
            UnregisterClassW(name, instance);
        if (!OpenFrame(frame, instance, SW_SHOW)) return -1;
        MSG message = {};
        while (GetMessageW(&message, nullptr, 0, 0) > 0) {
            if (TranslateAcceleratorW(frame.mainWindow, frame.accelerators, &message)) continue;
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
        return static_cast<INT_PTR>(message.wParam);
    }
};
