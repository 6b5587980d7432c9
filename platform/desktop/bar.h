// A menu bar without its behaviour: what its resource holds, where its buttons are, how it looks.
#pragma once

#include <array>
#include <memory>

#include "platform/owners.h"

constexpr int kNone = -1;  // no button, no image

struct Button {
    UINT command = 0;
    int image = kNone;
    bool enabled = false;
    HMENU popup = nullptr;  // part of the bar's menu; null for a plain button
    std::array<WCHAR, 32> caption{};
    RECT area{};  // in the bar
};

struct MenuBar {
    HWND window = nullptr;  // the record ends with it
    HWND parent = nullptr;  // receives the commands
    MenuOwner menu;
    ImageListOwner images;
    FontOwner font;
    std::unique_ptr<Button[]> buttons;
    int count = 0;
    int height = 0;
    int selected = kNone;        // while the bar has the focus
    int pressed = kNone;         // while the mouse button is down on a plain button
    int open = kNone;            // while its popup shows
    HWND focusBefore = nullptr;  // not owned
};

// Loads menu, images and buttons and arranges them in a row; sets `height`. Error 13 when the resource is cut
// off or names an image or a popup that does not exist, 8 when memory runs out, else the system's error.
[[nodiscard]] bool LoadBar(MenuBar& bar, const SHMENUBARINFO& info);

// Handles WM_PAINT.
void PaintBar(const MenuBar& bar);

// Marks the whole bar for painting.
void Redraw(const MenuBar& bar);

// The enabled button at `point` of the bar, or kNone.
int ButtonAt(const MenuBar& bar, POINT point);

// The button beside `index`, `direction` 1 or -1, from the last on to the first; kNone in an empty bar.
int Step(const MenuBar& bar, int index, int direction);

// Returns the focus from the bar to the window that had it before.
void GiveFocusBack(const MenuBar& bar);

// Gives the focus back, so that the command finds it where it was, and posts the command to the parent.
void SendCommand(const MenuBar& bar, UINT command);
