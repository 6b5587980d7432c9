// Walks the group view's rows from the worker thread. The rows belong to the user-interface thread: every
// access is a message that it answers.
#pragma once

#include <cstdint>

#include "platform/platform.h"
#include "text/messages.h"

struct GroupCursor {
    wchar_t name[kTextCapacity] = {};
    uint32_t currentRow = 0;
    uint32_t rowCount = 0;
    HWND list = nullptr;  // the group view's list control; not owned
    uint32_t spare = 0;
};

// To row 0; asks the list for its row count.
void ResetCursor(GroupCursor& cursor);

// The current row's name, in the cursor's buffer; null when the list returns no text.
const wchar_t* CurrentGroup(GroupCursor& cursor);

inline void AdvanceCursor(GroupCursor& cursor) {
    ++cursor.currentRow;
}
