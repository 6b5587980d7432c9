// Where menu bars stand in their window: all of them along its bottom edge, one showing at a time. The
// window's other children are its panes and fill what the bar leaves.
#pragma once

#include <windows.h>

// Children of this class are bars. A bar has its full height from its creation, all bars of a window the same
// one. It answers WM_GETMINMAXINFO with the least size at which no button is cut off, and WM_SYSCOMMAND with
// SC_KEYMENU by taking the focus or giving it back.
constexpr WCHAR kMenuBarClass[] = L"PelnorMenuBar";

// Subclasses the window, once, until it ends: bars and panes follow its size, which stays large enough for
// both; Alt and F10 go to the bar that shows; closing it closes an open popup first. False with the last
// error.
[[nodiscard]] bool MakeDock(HWND window);

// Moves a bar to the bottom edge of its window.
void PlaceBar(HWND bar);

// The visible pane; null when there is none.
HWND ShownPane(HWND window);
