#include "views/subject_view.h"

#include <cstring>

#include "resources/resource.h"
#include "settings/view_options.h"
#include "store/group_changes.h"
#include "text/convert.h"
#include "text/last_error.h"
#include "text/messages.h"
#include "views/columns.h"

namespace {

constexpr int kMarkSize = 10;
constexpr int kTextLeft = 2;  // from the column's edges to its text
constexpr int kTextRight = 4;

enum HeaderColumn { kMarksColumn, kDateColumn, kSenderColumn, kSubjectColumn, kColumnCount };

constexpr Column kColumns[kColumnCount] = {
    {IDS_COLUMN_MARKS, L"markWidth", kMarksColumn, 25},
    {IDS_COLUMN_DATE, L"dateWidth", kDateColumn, 40},
    {IDS_COLUMN_FROM, L"fromWidth", kSenderColumn, 160},
    {IDS_COLUMN_SUBJECT, L"subjectWidth", kSubjectColumn, 400},
};

SubjectView& SubjectsOf(RowView& view) {
    return static_cast<SubjectView&>(view);
}

// Columns of the header control.

void InsertColumn(HWND header, int index, wchar_t* heading, int width) {
    HDITEMW item = {};
    item.mask = HDI_TEXT | HDI_FORMAT | HDI_WIDTH;
    item.fmt = HDF_LEFT | HDF_STRING;
    item.cxy = width;
    item.pszText = heading;
    SendMessageW(header, HDM_INSERTITEMW, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(&item));
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

constexpr ColumnTable kColumnTable = {kColumns, kColumnCount, InsertColumn, ColumnWidth};

// A column that shows its longest text whole, at half a row's height a byte.
int FittingWidth(const SubjectView& view, int column) {
    if (column != kSenderColumn && column != kSubjectColumn) return kColumns[column].defaultWidth;
    const uint32_t longest = column == kSenderColumn ? LongestFrom(view.list) : LongestSubject(view.list);
    return static_cast<int>(longest + 1) * view.rowHeight / 2 + 4;
}

// Layout.

// The list selects the cursor's record.
void SelectCursor(SubjectView& view) {
    view.list.currentInPage = view.scroll.cursor;
    AnnounceText(view.window);
}

bool LayOutList(RowView& rows, HDC) {
    SubjectView& view = SubjectsOf(rows);
    SendMessageW(view.header, WM_SETFONT, reinterpret_cast<WPARAM>(view.font), TRUE);
    const bool built = !view.list.open || BuildArticleList(view.list, view.scroll.page);
    if (built) view.scroll.total = view.list.visibleCount;
    SelectCursor(view);
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
    const Selection image(source.Get(), bitmap.Get());
    BitBlt(dc, x, (view.rowHeight - kMarkSize) / 2, kMarkSize, kMarkSize, source.Get(), 0, 0, SRCCOPY);
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

// NUL-padded; in a damaged index it may be full.
template <std::size_t Size>
WideText TextOf(const char (&field)[Size]) {
    char terminated[Size + 1] = {};
    std::memcpy(terminated, field, Size);
    return ToWide(terminated);
}

void DrawField(const SubjectView& view, HDC dc, const ColumnEdges& edges, int column, const WideText& text) {
    if (text) DrawCell(view, dc, edges, column, text.get(), -1);
}

struct ShownDate {
    wchar_t text[6];
};

ShownDate DateOf(const IndexRecord& record) {
    const auto digit = [&](int i) {
        return static_cast<wchar_t>(static_cast<unsigned char>(record.date[i]));
    };
    return {{digit(0), digit(1), L'/', digit(2), digit(3)}};
}

void DrawTexts(const SubjectView& view, HDC dc, const ColumnEdges& edges, const IndexRecord& record) {
    DrawCell(view, dc, edges, kDateColumn, DateOf(record).text, 5);
    DrawField(view, dc, edges, kSenderColumn, TextOf(record.from));
    DrawField(view, dc, edges, kSubjectColumn, TextOf(record.subject));
}

void DrawMarks(const SubjectView& view, HDC dc, int x, const IndexRecord& record) {
    if (IsRead(record)) DrawMark(view, dc, view.readMark, x);
    const uint32_t priority = PriorityOf(record);
    if (priority == kPriorityNormal) return;
    DrawMark(view, dc, priority == kPriorityHigh ? view.highMark : view.lowMark, x + kMarkSize);
}

void DrawRow(const RowView& rows, HDC dc, uint32_t row) {
    const auto& view = static_cast<const SubjectView&>(rows);
    if (row >= view.list.rowsInPage) return;
    const IndexRecord& record = view.list.page[row];
    const ColumnEdges edges = MeasureColumns(view);
    DrawMarks(view, dc, edges.edge[kMarksColumn], record);
    if (view.font) DrawTexts(view, dc, edges, record);
    if (row == view.scroll.cursor) {
        PatBlt(dc, 0, 0, view.rowArea.right - view.rowArea.left, view.rowHeight, DSTINVERT);
    }
}

// Moving.

// Scrolling by a line took the inverted row along: it is drawn again, as is the one that is the cursor's now.
void OnTopChanged(RowView& rows, int direction) {
    SubjectView& view = SubjectsOf(rows);
    const uint32_t cursor = view.scroll.cursor;
    (void)LoadPage(view.list, view.scroll.top);
    SelectCursor(view);
    if (direction == 0) return;
    InvalidateRow(view, cursor);
    if (direction > 0 && cursor > 0) InvalidateRow(view, cursor - 1);
    if (direction < 0) InvalidateRow(view, cursor + 1);
}

void ShowCursor(SubjectView& view, uint32_t oldCursor) {
    SelectCursor(view);
    if (oldCursor == view.scroll.cursor) return;
    InvalidateRow(view, oldCursor);
    InvalidateRow(view, view.scroll.cursor);
}

void OnStep(RowView& rows, int direction) {
    SubjectView& view = SubjectsOf(rows);
    const uint32_t oldCursor = view.scroll.cursor;
    ScrollState moved = view.scroll;
    const ScrollResult result =
        direction > 0 ? CursorDown(moved, view.lineScroll) : CursorUp(moved, view.lineScroll);
    if (result == ScrollResult::kMoved && view.lineScroll) {
        MoveByLine(view, direction);
        return;
    }
    view.scroll = moved;
    Follow(view, result);
    if (result == ScrollResult::kNothing) ShowCursor(view, oldCursor);
}

void OpenCurrent(const SubjectView& view) {
    if (view.list.visibleCount > 0) NotifyParent(view, kSubjectOpen);
}

void OnKey(RowView& view, WPARAM key) {
    if (key == VK_RETURN || key == VK_SPACE) OpenCurrent(SubjectsOf(view));
}

// False when no row of the list is there.
bool PutCursorAt(SubjectView& view, int y) {
    if (y < view.rowArea.top) return false;
    const auto row = static_cast<uint32_t>(y - view.rowArea.top) / static_cast<uint32_t>(view.rowHeight);
    if (row >= view.scroll.page || view.scroll.top + row >= view.scroll.total) return false;
    const uint32_t oldCursor = view.scroll.cursor;
    view.scroll.cursor = row;
    ShowCursor(view, oldCursor);
    return true;
}

void OnTap(SubjectView& view, int y, bool twice) {
    if (PutCursorAt(view, y) && twice) OpenCurrent(view);
}

void OnHeader(SubjectView& view, const NMHEADERW& notice) {
    if (notice.hdr.hwndFrom != view.header) return;
    if (notice.hdr.code == HDN_ENDTRACKW || notice.hdr.code == HDN_ITEMCHANGEDW) InvalidateRows(view);
    if (notice.hdr.code == HDN_DIVIDERDBLCLICKW && notice.iItem >= 0 && notice.iItem < kColumnCount) {
        SetColumnWidth(view.header, notice.iItem, FittingWidth(view, notice.iItem));
        InvalidateRows(view);
    }
}

// The window itself.

// The cursor's row as it is read aloud.
const wchar_t* RowText(HWND window) {
    static wchar_t text[256];
    TextBuffer read = L"";
    TextBuffer priority = L"";
    const auto& view = static_cast<const SubjectView&>(*static_cast<RowView*>(GetWindowPointer(window, 0)));
    const IndexRecord* record = CurrentSubject(view);
    const WideText from = record ? TextOf(record->from) : nullptr;
    const WideText subject = record ? TextOf(record->subject) : nullptr;
    if (!from || !subject) return nullptr;
    if (IsRead(*record)) LoadResString(IDS_MARK_READ, read);
    if (PriorityOf(*record) == kPriorityHigh) LoadResString(IDS_MARK_HIGH, priority);
    if (PriorityOf(*record) == kPriorityLow) LoadResString(IDS_MARK_LOW, priority);
    wsprintfW(text, L"%.32s%.32s%s, %s, %s", read, priority, DateOf(*record).text, from.get(), subject.get());
    return text;
}

BitmapOwner LoadMark(const SubjectView& view, int id) {
    return BitmapOwner(LoadBitmapW(view.instance, MAKEINTRESOURCEW(id)));
}

void OnDestroy(const SubjectView& view) {
    RegistryKeyOwner key;
    if (OpenViewSubkey(kSubjectViewSubkey, key)) (void)StoreColumnWidths(view.header, kColumnTable, key);
}

// The list keeps its rows: what was read since it was made stays in sight.
void ResizeList(SubjectView& view) {
    const uint32_t page = RowsPerPage(view);
    if (!SetPageSize(view.list, page)) return;
    ResizePage(view.scroll, page);
    ShowScrollBar(view);
    ShowPage(view);
}

void OnSize(RowView& rows) {
    SubjectView& view = SubjectsOf(rows);
    if (!view.layoutValid || RowsPerPage(view) == view.scroll.page) return;
    if (view.list.open) {
        ResizeList(view);
    } else {
        view.layoutValid = false;  // the next group is laid out anyway
    }
}

bool OnMessage(RowView& rows, UINT message, LPARAM lParam) {
    SubjectView& view = SubjectsOf(rows);
    switch (message) {
        case WM_DESTROY:
            OnDestroy(view);
            return true;
        case WM_LBUTTONDOWN:
        case WM_LBUTTONDBLCLK:
            OnTap(view, static_cast<short>(HIWORD(lParam)), message == WM_LBUTTONDBLCLK);
            return true;
        case WM_NOTIFY:
            OnHeader(view, *reinterpret_cast<const NMHEADERW*>(lParam));
            return true;
        default:
            return false;
    }
}

constexpr RowViewKind kSubjectKind = {
    L"PELNORSubjectViewWnd",
    L"VSSUBJ",
    IDW_SUBJECT_SCROLL,
    IDW_SUBJECT_HEADER,
    10,     // least row height
    false,  // draws no cut row
    LayOutList,
    DrawRow,
    OnSize,
    OnStep,
    OnKey,
    OnTopChanged,
    OnMessage,
};

bool ChangeReadMark(SubjectView& view, bool read) {
    const uint32_t row = CursorRow(view.scroll);
    const bool changed = read ? SetFlags(view.list, row, kReadFlag) : ClearFlags(view.list, row, kReadFlag);
    InvalidateRow(view, view.scroll.cursor);  // also when the mark was written and the header was not
    return changed;
}

}  // namespace

bool RegisterSubjectViewClass(HINSTANCE instance) {
    return RegisterRowView(kSubjectKind, instance);
}

bool CreateSubjectView(SubjectView& view, HINSTANCE instance, HWND parent, int id, const RECT& rectangle,
                       bool viewRead, uint32_t level) {
    view.list.showRead = viewRead;
    view.list.priorityLevel = level;
    if (!CreateRowView(view, kSubjectKind, instance, parent, id, rectangle)) return false;
    MakeReadable(view.window, RowText);
    view.readMark = LoadMark(view, IDB_MARK_READ);
    view.highMark = LoadMark(view, IDB_MARK_HIGH);
    view.lowMark = LoadMark(view, IDB_MARK_LOW);
    RegistryKeyOwner key;
    (void)OpenViewSubkey(kSubjectViewSubkey, key);
    InsertColumns(view.header, kColumnTable, key);
    return true;
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
    view.list.open = EnsureLayout(view);  // a group that was never shown has nothing to write back
    return view.list.open;
}

bool CloseSubjectGroup(SubjectView& view) {
    return CloseArticleList(view.list);
}

bool SetSubjectOptions(SubjectView& view, bool viewRead, uint32_t level) {
    view.list.showRead = viewRead;
    view.list.priorityLevel = level;
    return Rebuild(view);
}

bool RefilterSubjects(SubjectView& view) {
    if (Refilter(view.list.store)) return Rebuild(view);
    const ErrorKeeper keeper;
    (void)Rebuild(view);
    return false;
}

const IndexRecord* CurrentSubject(const SubjectView& view) {
    const bool hasRow = view.list.open && view.scroll.cursor < view.list.rowsInPage;
    return hasRow ? &view.list.page[view.scroll.cursor] : nullptr;
}

bool ToggleSubjectRead(SubjectView& view) {
    const IndexRecord* record = CurrentSubject(view);
    if (!record) return Fail(kErrorInvalidArgument);
    const bool changed = ChangeReadMark(view, !IsRead(*record));
    AnnounceText(view.window);
    return changed;
}

bool MarkSubjectRead(SubjectView& view) {
    if (!CurrentSubject(view)) return Fail(kErrorInvalidArgument);
    return ChangeReadMark(view, true);
}

bool AdvanceSubject(SubjectView& view) {
    const ScrollState before = view.scroll;
    if (!MoveTo(view.scroll, CursorRow(view.scroll) + 1)) return false;
    if (view.scroll.top != before.top) {
        ShowPage(view);
    } else {
        ShowCursor(view, before.cursor);
    }
    return true;
}
