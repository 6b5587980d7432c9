// The first pane: a report list of the subscribed groups with their counts. User-interface thread only; a
// worker reads the rows by messages to the list control.
#pragma once

#include <cstdint>

#include "platform/platform.h"

struct GroupView {
    HWND list = nullptr;  // the control; owned by its parent window
};

// Makes the control as a child of `parent` and its columns with the stored widths. False with the last error
// when the control cannot be made or the widths' registry key cannot be opened.
[[nodiscard]] bool CreateGroupView(GroupView& view, HWND parent, const wchar_t* caption,
                                   const RECT& rectangle, int id, HINSTANCE instance);

void ShowGroupView(const GroupView& view, int showCommand);

// Fills the rows anew from "group.dat" and each group's index header, and selects the first. A failure is
// shown to the user; the rows made so far stay.
[[nodiscard]] bool ReloadGroupView(const GroupView& view, const wchar_t* folder);

// The selected row's group name, cut to `capacity` units; `row`, when given, its index. False when no row is
// selected.
bool SelectedGroup(const GroupView& view, wchar_t* name, int capacity, uint32_t* row);

// Moves the selection to the next row; `moved` says whether there was one. False when no row is selected.
bool SelectNextGroup(const GroupView& view, bool& moved);

void SetGroupUnread(const GroupView& view, uint32_t row, uint32_t count);

// Stores the columns' widths; stops at the first that cannot be written.
[[nodiscard]] bool SaveGroupViewWidths(const GroupView& view);
