// What makes the program's frame a window as the desktop knows them, where the device's shell gives it the
// whole screen: a border to drag, a system menu, an icon, a place that is remembered from run to run, dialogs
// over it, the wheel. A window gets all this with its first menu bar; it keeps its own procedure.
#pragma once

#include <windows.h>

constexpr WCHAR kMenuBarClass[] = L"PelnorMenuBar";

struct DesktopFrame {
    HWND window = nullptr;        // not owned; null for a child window, which stays as it is
    int wheelRest = 0;            // what the wheel was turned and is less than a step yet
    bool maximisesLater = false;  // once the window is shown
};

// Dresses `window` and puts it where it was left last, or gives it the device's size where the system wants
// it. `module` holds the icon.
void DressFrame(DesktopFrame& frame, HWND window, HINSTANCE module);

// Looks at a message before the window's own procedure does. True when that must not see it; `result` is the
// answer then.
[[nodiscard]] bool OnFrameMessage(DesktopFrame& frame, UINT message, WPARAM wParam, LPARAM lParam,
                                  LRESULT& result);

// Follows the window's own procedure, which may have ended the window and its record.
void AfterFrameMessage(HWND window, UINT message);
