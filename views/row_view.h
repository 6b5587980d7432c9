// The window that the subject and the article view share: rows of equal height, a scroll bar at the right
// edge, and above the rows a header, where the view wants one. Each row is drawn off the screen, so that
// nothing flickers. Keys and the scroll bar move by line and by page. User-interface thread only.
#pragma once

#include "platform/owners.h"
#include "views/scrolling.h"

// What the user wants of the parent: the high word of a WM_COMMAND whose low word is the control id and whose
// lParam is the window. The views add their own.
enum RowNotice : WORD {
    kRowBack = 1,   // Escape
    kRowAtEnd = 2,  // going on past the end
};

struct RowView;

// What a view adds to the window. The last two functions may be null.
struct RowViewKind {
    const wchar_t* className;
    const wchar_t* scrollBarText;
    int scrollBarId;
    int headerId;        // 0: no header
    int leastRowHeight;  // with a font
    bool drawsCutRow;    // also the row that the bottom edge cuts

    // Counts the rows; their height and the page are known. False with the last error: there are none.
    bool (*layOut)(RowView& view, HDC dc);
    void (*drawRow)(const RowView& view, HDC dc, uint32_t row);    // at (0, 0); `row` counts from the top row
    void (*onSize)(RowView& view);                                 // the row area has changed
    void (*onStep)(RowView& view, int direction);                  // Up and Down
    void (*onKey)(RowView& view, WPARAM key);                      // what the window does not handle
    void (*onTopChanged)(RowView& view, int direction) = nullptr;  // 0: by more than a line
    bool (*onMessage)(RowView& view, UINT message, LPARAM lParam) = nullptr;  // true: answered with 0
};

struct RowView {
    const RowViewKind* kind = nullptr;
    HWND window = nullptr;     // owned by the parent
    HWND scrollBar = nullptr;  // owned by the window, as is the header
    HWND header = nullptr;
    HWND parent = nullptr;
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

// Lays the rows out from the first, unless they are. False with the last error.
bool EnsureLayout(RowView& view);

uint32_t RowsPerPage(const RowView& view);  // at least 1

void InvalidateRows(const RowView& view);
void InvalidateRow(const RowView& view, uint32_t row);

// Moves by a line or a page, up for a direction below 0. A line is ignored while one waits to be painted.
void MoveByLine(RowView& view, int direction);
void MoveByPage(RowView& view, int direction);

// Shows what the view did to its scroll state.
void Follow(RowView& view, ScrollResult result);
void ShowScrollBar(const RowView& view);  // range and position
