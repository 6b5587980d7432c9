#include "views/subject_view.h"

#include <cstring>

#include "resources/resource.h"
#include "settings/registry.h"
#include "settings/settings.h"
#include "store/index.h"
#include "text/convert.h"
#include "text/last_error.h"
#include "text/messages.h"

namespace {

constexpr wchar_t kClassName[] = L"PELNORSubjectViewWnd";
constexpr wchar_t kKeyPath[] = L"Software\\marrowby\\Pelnor\\SubjectView";

constexpr int kBorder = 1;
constexpr int kHeaderHeight = 20;
constexpr int kMarkSize = 10;
constexpr int kLeastRowHeight = 10;
constexpr int kTextLeft = 2;  // from the column's edges to its text
constexpr int kTextRight = 4;
constexpr int kColumnCount = 4;
constexpr int kSenderColumn = 2;
constexpr int kSubjectColumn = 3;

struct Column {
    UINT stringId;
    const wchar_t* valueName;
    int defaultWidth;
};

constexpr Column kColumns[kColumnCount] = {
    {IDS_COLUMN_MARKS, L"markWidth", 25},
    {IDS_COLUMN_DATE, L"dateWidth", 40},
    {IDS_COLUMN_FROM, L"fromWidth", 160},
    {IDS_COLUMN_SUBJECT, L"subjectWidth", 400},
};

// Columns of the header control.

void InsertColumn(HWND header, int index, const Column& column, int width) {
    wchar_t heading[kTextCapacity];
    const wchar_t* text = LoadResString(column.stringId);
    CopyCut(heading, kTextCapacity, text ? text : L"");
    HDITEMW item = {};
    item.mask = HDI_TEXT | HDI_FORMAT | HDI_WIDTH;
    item.fmt = HDF_LEFT | HDF_STRING;
    item.cxy = width;
    item.pszText = heading;
    SendMessageW(header, HDM_INSERTITEMW, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(&item));
}

void InsertColumns(HWND header) {
    RegistryKeyOwner key;
    const bool opened = OpenKey(HKEY_CURRENT_USER, kKeyPath, key);
    for (int i = 0; i < kColumnCount; ++i) {
        uint32_t width = 0;
        const bool stored = opened && ReadDword(key, kColumns[i].valueName, width);
        InsertColumn(header, i, kColumns[i], stored ? static_cast<int>(width) : kColumns[i].defaultWidth);
    }
}

int ColumnWidth(HWND header, int index) {
    HDITEMW item = {};
    item.mask = HDI_WIDTH;
    SendMessageW(header, HDM_GETITEMW, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(&item));
    return item.cxy;
}

void SetColumnWidth(HWND header, int index, int width) {
    HDITEMW item = {};
    item.mask = HDI_WIDTH;
    item.cxy = width;
    SendMessageW(header, HDM_SETITEMW, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(&item));
}

void SaveColumnWidths(const SubjectView& view) {
    RegistryKeyOwner key;
    if (!OpenKey(HKEY_CURRENT_USER, kKeyPath, key)) return;
    for (int i = 0; i < kColumnCount; ++i) {
        const auto width = static_cast<uint32_t>(ColumnWidth(view.header, i));
        if (!WriteDword(key, kColumns[i].valueName, width)) return;
    }
}

// A column that shows its longest text whole, at half a row's height a byte.
int FittingWidth(const SubjectView& view, int column) {
    if (column != kSenderColumn && column != kSubjectColumn) return kColumns[column].defaultWidth;
    const uint32_t longest = column == kSenderColumn ? LongestFrom(view.list) : LongestSubject(view.list);
    return static_cast<int>(longest + 1) * view.rowHeight / 2 + 4;
}

// Layout.

void PlaceChildren(SubjectView& view) {
    PlaceRowArea(view, kHeaderHeight);
    MoveWindow(view.header, view.client.left + kBorder, view.client.top + kBorder,
               view.client.right - 2 * kBorder, kHeaderHeight, TRUE);
}

// What the list selects is the cursor's record.
void TellListCursor(SubjectView& view) {
    view.list.currentInPage = view.scroll.cursor;
}

// Measures the rows and fills the page. False with the last error; the view is empty then.
bool EnsureLayout(SubjectView& view) {
    if (view.layoutValid) return true;
    view.layoutValid = true;
    MeasureRowHeight(view, kLeastRowHeight);
    SendMessageW(view.header, WM_SETFONT, reinterpret_cast<WPARAM>(view.font), TRUE);
    view.scroll = ListScroll();
    view.scroll.rows.page = RowsPerPage(view);
    const bool built = !view.list.open || BuildArticleList(view.list, view.scroll.rows.page);
    view.scroll.rows.total = built ? view.list.visibleCount : 0;
    const ErrorKeeper keeper;
    TellListCursor(view);
    SetScrollBar(view, ListScrollMaximum(view.scroll.rows), view.scroll.rows.top);
    return built;
}

bool Rebuild(SubjectView& view) {
    view.layoutValid = false;
    InvalidateRows(view);
    return EnsureLayout(view);
}

// Drawing.

void DrawMark(const SubjectView& view, HDC dc, const BitmapOwner& bitmap, int x) {
    const DcOwner source(CreateCompatibleDC(dc));
    if (!bitmap || !source) return;
    const HGDIOBJ old = SelectObject(source.Get(), bitmap.Get());
    BitBlt(dc, x, (view.rowHeight - kMarkSize) / 2, kMarkSize, kMarkSize, source.Get(), 0, 0, SRCCOPY);
    SelectObject(source.Get(), old);
}

// The column edges that a row is drawn between, relative to the row area.
struct ColumnEdges {
    int edge[kColumnCount + 1];
};

ColumnEdges MeasureColumns(const SubjectView& view) {
    ColumnEdges edges = {};
    for (int i = 0; i < kColumnCount; ++i)
        edges.edge[i + 1] = edges.edge[i] + ColumnWidth(view.header, i);
    return edges;
}

void DrawCell(const SubjectView& view, HDC dc, const ColumnEdges& edges, int column, const wchar_t* text,
              int length) {
    RECT cell = {edges.edge[column] + kTextLeft, 0, edges.edge[column + 1] - kTextRight, view.rowHeight};
    DrawTextW(dc, text, length, &cell, DT_SINGLELINE | DT_EXPANDTABS | DT_NOPREFIX);
}

// `field` is NUL-padded and may fill its `size` bytes in a damaged index.
template <std::size_t Size>
void DrawField(const SubjectView& view, HDC dc, const ColumnEdges& edges, int column,
               const char (&field)[Size]) {
    char terminated[Size + 1] = {};
    std::memcpy(terminated, field, Size);
    const WideText text = ToWide(terminated);
    if (text) DrawCell(view, dc, edges, column, text.get(), -1);
}

void DrawTexts(const SubjectView& view, HDC dc, const ColumnEdges& edges, const IndexRecord& record) {
    const auto digit = [&](int i) {
        return static_cast<wchar_t>(static_cast<unsigned char>(record.date[i]));
    };
    const wchar_t date[] = {digit(0), digit(1), L'/', digit(2), digit(3)};
    DrawCell(view, dc, edges, 1, date, 5);
    DrawField(view, dc, edges, kSenderColumn, record.from);
    DrawField(view, dc, edges, kSubjectColumn, record.subject);
}

void DrawRow(const SubjectView& view, HDC dc, const ColumnEdges& edges, const IndexRecord& record) {
    if (IsRead(record)) DrawMark(view, dc, view.readMark, edges.edge[0]);
    const uint32_t priority = PriorityOf(record);
    if (priority != kPriorityNormal) {
        DrawMark(view, dc, priority == kPriorityHigh ? view.highMark : view.lowMark,
                 edges.edge[0] + kMarkSize);
    }
    if (view.font) DrawTexts(view, dc, edges, record);
}

void PaintRows(const SubjectView& view, HDC dc, const RECT& update) {
    const int width = view.rowArea.right - view.rowArea.left;
    RowCanvas canvas(dc, width, view.rowHeight, view.font);
    if (!canvas.IsReady()) return;
    const ColumnEdges edges = MeasureColumns(view);
    for (uint32_t i = 0; i < view.scroll.rows.page; ++i) {
        const RECT row = RowRectangle(view, i);
        if (row.bottom <= update.top || row.top >= update.bottom) continue;
        canvas.Clear();
        const bool hasRecord = i < view.list.rowsInPage;
        if (hasRecord) DrawRow(view, canvas.Dc(), edges, view.list.page[i]);
        if (hasRecord && i == view.scroll.cursor) {
            PatBlt(canvas.Dc(), 0, 0, width, view.rowHeight, DSTINVERT);
        }
        canvas.CopyTo(row);
    }
}

LRESULT OnPaint(SubjectView& view) {
    PAINTSTRUCT paint;
    const HDC dc = BeginPaint(view.window, &paint);
    (void)EnsureLayout(view);
    PaintRows(view, dc, paint.rcPaint);
    PaintAround(view, dc, view.scroll.rows.page);
    view.scrollPending = false;
    EndPaint(view.window, &paint);
    return 0;
}

// Moving.

// After the top row changed: the new page, drawn whole.
void ShowPage(SubjectView& view) {
    (void)LoadPage(view.list, view.scroll.rows.top);
    TellListCursor(view);
    ShowScrollPosition(view, view.scroll.rows.top);
    InvalidateRows(view);
}

void ShowCursor(SubjectView& view, uint32_t oldCursor) {
    TellListCursor(view);
    if (oldCursor == view.scroll.cursor) return;
    InvalidateRow(view, oldCursor);
    InvalidateRow(view, view.scroll.cursor);
}

void Follow(SubjectView& view, ScrollResult result, uint32_t oldCursor) {
    if (result == ScrollResult::kMoved) ShowPage(view);
    if (result == ScrollResult::kNothing) ShowCursor(view, oldCursor);
    if (result == ScrollResult::kAtEnd) NotifyParent(view, kSubjectAtEnd);
}

// Moves what is on the screen and draws only the rows that are new or bear the cursor.
void ScrollRows(SubjectView& view, int direction) {
    const uint32_t cursor = view.scroll.cursor;
    (void)LoadPage(view.list, view.scroll.rows.top);
    TellListCursor(view);
    ShowScrollPosition(view, view.scroll.rows.top);
    RECT rows = view.rowArea;
    rows.bottom = RowRectangle(view, view.scroll.rows.page - 1).bottom;
    ScrollRowPixels(view, rows, direction);
    InvalidateRow(view, cursor);
    if (direction > 0 && cursor > 0) InvalidateRow(view, cursor - 1);
    if (direction < 0) InvalidateRow(view, cursor + 1);
    InvalidateRow(view, direction > 0 ? view.scroll.rows.page - 1 : 0);
}

void OneLine(SubjectView& view, int direction) {
    if (view.scrollPending) return;
    const ScrollResult result = direction > 0 ? LineDown(view.scroll) : LineUp(view.scroll);
    if (result == ScrollResult::kMoved) ScrollRows(view, direction);
}

void MoveCursor(SubjectView& view, int direction) {
    ListScroll moved = view.scroll;
    const ScrollResult result =
        direction > 0 ? CursorDown(moved, view.lineScroll) : CursorUp(moved, view.lineScroll);
    const bool scrollsByLine = view.lineScroll && result == ScrollResult::kMoved;
    if (scrollsByLine && view.scrollPending) return;
    const uint32_t oldCursor = view.scroll.cursor;
    view.scroll = moved;
    if (scrollsByLine) {
        ScrollRows(view, direction);
    } else {
        Follow(view, result, oldCursor);
    }
}

void OpenCurrent(const SubjectView& view) {
    if (view.list.visibleCount > 0) NotifyParent(view, kSubjectOpen);
}

LRESULT OnKey(SubjectView& view, WPARAM key) {
    const uint32_t cursor = view.scroll.cursor;
    switch (key) {
        case VK_UP:
            MoveCursor(view, -1);
            break;
        case VK_DOWN:
            MoveCursor(view, 1);
            break;
        case VK_LEFT:
        case VK_PRIOR:
            Follow(view, PageUp(view.scroll), cursor);
            break;
        case VK_RIGHT:
        case VK_NEXT:
            Follow(view, PageDown(view.scroll), cursor);
            break;
        case VK_RETURN:
        case VK_SPACE:
            OpenCurrent(view);
            break;
        case VK_ESCAPE:
            NotifyParent(view, kSubjectBack);
            break;
    }
    return 0;
}

LRESULT OnScroll(SubjectView& view, WORD code, WORD position) {
    const uint32_t cursor = view.scroll.cursor;
    switch (code) {
        case SB_LINEUP:
            OneLine(view, -1);
            break;
        case SB_LINEDOWN:
            OneLine(view, 1);
            break;
        case SB_PAGEUP:
            Follow(view, PageUp(view.scroll), cursor);
            break;
        case SB_PAGEDOWN:
            Follow(view, PageDown(view.scroll), cursor);
            break;
        case SB_THUMBPOSITION:
        case SB_THUMBTRACK:
            Follow(view, ThumbTo(view.scroll, ThumbPosition(view, position)), cursor);
            ShowScrollPosition(view, view.scroll.rows.top);  // also where the thumb was dragged too far
            break;
    }
    return 0;
}

// False when no row of the list is there.
bool PutCursorAt(SubjectView& view, int y) {
    if (y < view.rowArea.top) return false;
    const auto row = static_cast<uint32_t>((y - view.rowArea.top) / view.rowHeight);
    if (row >= view.scroll.rows.page || view.scroll.rows.top + row >= view.scroll.rows.total) return false;
    const uint32_t oldCursor = view.scroll.cursor;
    view.scroll.cursor = row;
    ShowCursor(view, oldCursor);
    return true;
}

LRESULT OnTap(SubjectView& view, int y, bool twice) {
    SetFocus(view.window);
    if (PutCursorAt(view, y) && twice) OpenCurrent(view);
    return 0;
}

LRESULT OnHeader(SubjectView& view, const NMHEADERW& notice) {
    if (notice.hdr.hwndFrom != view.header) return 0;
    if (notice.hdr.code == HDN_ENDTRACKW || notice.hdr.code == HDN_ITEMCHANGEDW) InvalidateRows(view);
    if (notice.hdr.code == HDN_DIVIDERDBLCLICKW && notice.iItem >= 0 && notice.iItem < kColumnCount) {
        SetColumnWidth(view.header, notice.iItem, FittingWidth(view, notice.iItem));
        InvalidateRows(view);
    }
    return 0;
}

// The window itself.

BitmapOwner LoadMark(const SubjectView& view, int id) {
    return BitmapOwner(LoadBitmapW(view.instance, MAKEINTRESOURCEW(id)));
}

LRESULT OnCreate(SubjectView& view) {
    view.readMark = LoadMark(view, IDB_MARK_READ);
    view.highMark = LoadMark(view, IDB_MARK_HIGH);
    view.lowMark = LoadMark(view, IDB_MARK_LOW);
    view.header = CreateWindowExW(0, WC_HEADERW, L"", WS_CHILD | WS_VISIBLE | HDS_BUTTONS, 0, 0, 0, 0,
                                  view.window, ChildId(IDW_SUBJECT_HEADER), view.instance, nullptr);
    if (!view.header || !CreateScrollBar(view, L"VSSUBJ", IDW_SUBJECT_SCROLL)) return -1;
    InsertColumns(view.header);
    PlaceChildren(view);
    return 0;
}

// The rows stay those that the list was made with: what was read since is still there.
void ResizeList(SubjectView& view) {
    const uint32_t page = RowsPerPage(view);
    if (!SetPageSize(view.list, page)) return;
    ResizePage(view.scroll, page);
    SetScrollBar(view, ListScrollMaximum(view.scroll.rows), view.scroll.rows.top);
    ShowPage(view);
}

LRESULT OnSize(SubjectView& view) {
    PlaceChildren(view);
    if (view.client.bottom == 0) return 0;        // minimised
    InvalidateRect(view.window, nullptr, FALSE);  // the line around the view has moved
    if (!view.layoutValid || RowsPerPage(view) == view.scroll.rows.page) return 0;
    if (view.list.open) {
        ResizeList(view);
    } else {
        view.layoutValid = false;  // the next group is laid out anyway
    }
    return 0;
}

LRESULT Dispatch(SubjectView& view, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_CREATE:
            return OnCreate(view);
        case WM_DESTROY:
            SaveColumnWidths(view);
            return 0;
        case WM_SIZE:
            return OnSize(view);
        case WM_ERASEBKGND:
            return 1;  // every pixel is painted
        case WM_PAINT:
            return OnPaint(view);
        case WM_KEYDOWN:
            return OnKey(view, wParam);
        case WM_VSCROLL:
            return OnScroll(view, LOWORD(wParam), HIWORD(wParam));
        case WM_LBUTTONDOWN:
        case WM_LBUTTONDBLCLK:
            return OnTap(view, static_cast<short>(HIWORD(lParam)), message == WM_LBUTTONDBLCLK);
        case WM_NOTIFY:
            return OnHeader(view, *reinterpret_cast<const NMHEADERW*>(lParam));
        default:
            return DefWindowProcW(view.window, message, wParam, lParam);
    }
}

LRESULT CALLBACK SubjectViewProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    SubjectView* view = ViewOf<SubjectView>(window, message, lParam);
    if (!view) return DefWindowProcW(window, message, wParam, lParam);
    return Dispatch(*view, message, wParam, lParam);
}

bool ChangeReadMark(SubjectView& view, bool read) {
    const uint32_t row = CursorRow(view.scroll);
    const bool changed = read ? SetFlags(view.list, row, kReadFlag) : ClearFlags(view.list, row, kReadFlag);
    InvalidateRow(view, view.scroll.cursor);  // also where the mark was written and the header was not
    return changed;
}

}  // namespace

bool RegisterSubjectViewClass(HINSTANCE instance) {
    return RegisterRowViewClass(kClassName, SubjectViewProcedure, instance);
}

bool CreateSubjectView(SubjectView& view, HINSTANCE instance, HWND parent, int id, const RECT& rectangle,
                       uint32_t viewRead, uint32_t level) {
    view.instance = instance;
    view.parent = parent;
    view.id = id;
    view.list.showRead = viewRead != 0;
    view.list.priorityLevel = level;
    return CreateRowView(view, kClassName, rectangle, &view);
}

void ShowSubjectView(const SubjectView& view, int showCommand) {
    ShowRowView(view, showCommand);
}

void SetSubjectAppearance(SubjectView& view, HFONT font, bool lineScroll) {
    view.lineScroll = lineScroll;
    if (view.font == font) return;
    view.font = font;
    view.layoutValid = false;
}

bool OpenSubjectGroup(SubjectView& view, const wchar_t* folder, const wchar_t* group) {
    CloseSubjectGroup(view);
    view.layoutValid = false;
    InvalidateRows(view);
    if (!OpenArticleList(view.list, folder, group)) return false;
    view.list.open = EnsureLayout(view);  // there is nothing to write back of a group that was never shown
    return view.list.open;
}

bool CloseSubjectGroup(SubjectView& view) {
    TellListCursor(view);
    return CloseArticleList(view.list);
}

bool SetSubjectOptions(SubjectView& view, uint32_t viewRead, uint32_t level) {
    view.list.showRead = viewRead != 0;
    view.list.priorityLevel = level;
    return Rebuild(view);
}

bool RefilterSubjects(SubjectView& view) {
    const bool refiltered = Refilter(view.list.store);
    const unsigned error = GetError();
    return Rebuild(view) && (refiltered || Fail(error));
}

const IndexRecord* CurrentSubject(const SubjectView& view) {
    const bool hasRow = view.list.open && view.scroll.cursor < view.list.rowsInPage;
    return hasRow ? &view.list.page[view.scroll.cursor] : nullptr;
}

bool ToggleSubjectRead(SubjectView& view) {
    const IndexRecord* record = CurrentSubject(view);
    if (!record) return Fail(kErrorInvalidArgument);
    return ChangeReadMark(view, !IsRead(*record));
}

bool MarkSubjectRead(SubjectView& view) {
    if (!CurrentSubject(view)) return Fail(kErrorInvalidArgument);
    return ChangeReadMark(view, true);
}

bool AdvanceSubject(SubjectView& view) {
    const uint32_t top = view.scroll.rows.top;
    const uint32_t cursor = view.scroll.cursor;
    if (!MoveTo(view.scroll, CursorRow(view.scroll) + 1)) return false;
    if (view.scroll.rows.top != top) {
        ShowPage(view);
    } else {
        ShowCursor(view, cursor);
    }
    return true;
}
