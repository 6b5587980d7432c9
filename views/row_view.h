// The child window that the subject and the article view share: rows of equal height, a scroll bar at the
// right edge and, for a view that wants one, a header above the rows. Keys and scroll bar move by line and by
// page. Each row is drawn off the screen, so nothing flickers. User-interface thread only.
#pragma once

#include "platform/owners.h"
#include "views/scrolling.h"

// What the window reports to its parent: the high word of a WM_COMMAND whose low word is the control id and
// whose lParam is the window. A view may add its own.
enum RowNotice : WORD {
    kRowBack = 1,   // Escape
    kRowAtEnd = 2,  // going on past the end
};

struct RowView;

// What a view adds to the window. `direction` is below 0 for up. The last two functions may be null.
struct RowViewKind {
    const wchar_t* className;
    const wchar_t* scrollBarText;
    int scrollBarId;
    int headerId;        // 0: no header
    int leastRowHeight;  // with a font
    bool drawsCutRow;    // also the row that the bottom edge cuts

    // Counts the rows once their height and number a page are known. False with the last error: none.
    bool (*layOut)(RowView& view, HDC dc);
    void (*drawRow)(const RowView& view, HDC dc, uint32_t row);    // at (0, 0); `row` counts from the top row
    void (*onSize)(RowView& view);                                 // the row area has changed
    void (*onStep)(RowView& view, int direction);                  // Up and Down
    void (*onKey)(RowView& view, WPARAM key);                      // a key that the window does not know
    void (*onTopChanged)(RowView& view, int direction) = nullptr;  // 0: by any number of rows
    bool (*onMessage)(RowView& view, UINT message, LPARAM lParam) = nullptr;  // true: handled
};

struct RowView {
    const RowViewKind* kind = nullptr;
    HWND parent = nullptr;
    HWND window = nullptr;     // owned by its parent
    HWND scrollBar = nullptr;  // owned by the window, as is the header
    HWND header = nullptr;
    int id = 0;
    HINSTANCE instance = nullptr;
    RECT client = {};
    RECT rowArea = {};
    int rowHeight = 0;
    ScrollState scroll;
    HFONT font = nullptr;        // the settings' font; not owned, may be null
    bool lineScroll = false;     // the `KeyMode` setting: Up and Down move by line
    bool layoutValid = false;    // the rows are measured and counted
    bool scrollPending = false;  // rows were moved on the screen and not painted since
};

[[nodiscard]] bool RegisterRowView(const RowViewKind& kind, HINSTANCE instance);

// Makes the hidden child window.
[[nodiscard]] bool CreateRowView(RowView& view, const RowViewKind& kind, HINSTANCE instance, HWND parent,
                                 int id, const RECT& rectangle);

void ShowRowView(const RowView& view, int showCommand);
void NotifyParent(const RowView& view, WORD notice);

// Measures and counts the rows where that is due, and shows them from the first. False with the last error;
// there are no rows then.
[[nodiscard]] bool EnsureLayout(RowView& view);

uint32_t RowsPerPage(const RowView& view);  // at least 1

void InvalidateRows(const RowView& view);
void InvalidateRow(const RowView& view, uint32_t row);

// Up for a direction below 0. A line is ignored while the one before waits to be painted.
void MoveByLine(RowView& view, int direction);
void MoveByPage(RowView& view, int direction);

// Show what the view did to its scroll state.
void Follow(RowView& view, ScrollResult result);
void ShowPage(RowView& view);             // after any change of the top row
void ShowScrollBar(const RowView& view);  // range and position
