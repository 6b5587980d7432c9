#include "views/group_view.h"

#include <iterator>

#include "platform/drawing_pause.h"
#include "resources/resource.h"
#include "settings/view_options.h"
#include "store/index.h"
#include "subscribe/group_file.h"
#include "text/last_error.h"
#include "text/messages.h"
#include "views/columns.h"

namespace {

constexpr wchar_t kCaption[] = L"GROUP";

enum ScreenColumn {
    kGroupColumn,
    kUnreadColumn,
    kArticlesColumn,
    kStatusColumn,
    kCurrentColumn,
    kMaximumColumn
};

// Inserted in this order: the status column, which comes last, pushes those that were appended before it to
// the right.
constexpr Column kColumns[] = {
    {IDS_COLUMN_GROUP, L"NewsgroupWidth", kGroupColumn, 100},
    {IDS_COLUMN_UNREAD, L"ureadWidth", kUnreadColumn, 40},
    {IDS_COLUMN_ARTICLES, L"artsWidth", kArticlesColumn, 40},
    {IDS_COLUMN_CURRENT, L"curWidth", kCurrentColumn, 60},
    {IDS_COLUMN_MAXIMUM, L"maxWidth", kMaximumColumn, 60},
    {IDS_COLUMN_STATUS, L"StatusWidth", kStatusColumn, 150},
};

void InsertColumn(HWND list, int index, wchar_t* heading, int width) {
    LVCOLUMNW column = {};
    column.mask = LVCF_FMT | LVCF_TEXT | LVCF_WIDTH;
    column.fmt = LVCFMT_LEFT;
    column.cx = width;
    column.pszText = heading;
    SendMessageW(list, LVM_INSERTCOLUMNW, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(&column));
}

int ColumnWidth(HWND list, int index) {
    return static_cast<int>(SendMessageW(list, LVM_GETCOLUMNWIDTH, static_cast<WPARAM>(index), 0));
}

constexpr ColumnTable kColumnTable = {kColumns, std::size(kColumns), InsertColumn, ColumnWidth};

void SetCell(HWND list, uint32_t row, int column, const wchar_t* text) {
    LVITEMW item = {};
    item.iSubItem = column;
    item.pszText = const_cast<wchar_t*>(text);
    SendMessageW(list, LVM_SETITEMTEXTW, row, reinterpret_cast<LPARAM>(&item));
}

void SetNumber(HWND list, uint32_t row, int column, uint32_t number) {
    wchar_t text[16];
    wsprintfW(text, L"%d", number);
    SetCell(list, row, column, text);
}

bool InsertRow(HWND list, uint32_t row, const wchar_t* name) {
    LVITEMW item = {};
    item.mask = LVIF_TEXT;
    item.iItem = static_cast<int>(row);
    item.pszText = const_cast<wchar_t*>(name);
    return SendMessageW(list, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item)) >= 0;
}

void FillRow(HWND list, uint32_t row, const GroupStore& store) {
    SetCell(list, row, kStatusColumn, StatusText(store));
    if (store.header.lastFetched == kNoneFetched) {
        SetCell(list, row, kCurrentColumn, L"Catchup");
    } else {
        SetNumber(list, row, kCurrentColumn, store.header.lastFetched);
    }
    SetNumber(list, row, kMaximumColumn, store.header.serverLast);
    SetNumber(list, row, kArticlesColumn, store.header.recordCount);
    SetNumber(list, row, kUnreadColumn, store.header.unreadCount);
}

bool AddGroup(HWND list, uint32_t row, const wchar_t* folder, const wchar_t* name) {
    GroupStore store;
    const bool added = InsertRow(list, row, name) || Fail(kErrorNoMemory);
    if (!added || !SetNames(store, folder, name) || !ReadHeader(store)) return false;
    FillRow(list, row, store);
    return true;
}

void SelectRow(HWND list, uint32_t row) {
    LVITEMW item = {};
    item.stateMask = item.state = LVIS_SELECTED | LVIS_FOCUSED;
    SendMessageW(list, LVM_SETITEMSTATE, row, reinterpret_cast<LPARAM>(&item));
}

bool SelectedRow(HWND list, uint32_t& row) {
    const LRESULT selected =
        SendMessageW(list, LVM_GETNEXTITEM, static_cast<WPARAM>(-1), MAKELPARAM(LVNI_SELECTED, 0));
    if (selected < 0) return false;
    row = static_cast<uint32_t>(selected);
    return true;
}

// The message for what failed, or 0.
unsigned FillList(HWND list, const wchar_t* folder) {
    const DrawingPause pause(list);
    SendMessageW(list, LVM_DELETEALLITEMS, 0, 0);
    GroupFile groups;
    if (!OpenGroupFile(groups, folder)) return IDS_GROUP_LIST_FAILED;
    uint32_t row = 0;
    while (const wchar_t* name = NextGroupName(groups)) {
        if (!AddGroup(list, row, folder, name)) return IDS_INIT_INDEX_FILE_FAILED;
        ++row;
    }
    if (row > 0) SelectRow(list, 0);
    return 0;
}

uint32_t RowCount(HWND list) {
    return static_cast<uint32_t>(SendMessageW(list, LVM_GETITEMCOUNT, 0, 0));
}

}  // namespace

bool CreateGroupView(GroupView& view, HWND parent, const wchar_t* caption, const RECT& rectangle, int id,
                     HINSTANCE instance) {
    constexpr DWORD kStyle =
        WS_CHILD | WS_VISIBLE | WS_VSCROLL | WS_HSCROLL | LVS_REPORT | LVS_SINGLESEL | LVS_SHOWSELALWAYS;
    view.list = CreateWindowExW(0, L"SysListView32", caption, kStyle, rectangle.left, rectangle.top,
                                rectangle.right - rectangle.left, rectangle.bottom - rectangle.top, parent,
                                ChildId(id), instance, nullptr);
    RegistryKeyOwner key;
    if (!view.list || !OpenViewSubkey(kGroupViewSubkey, key)) return false;
    InsertColumns(view.list, kColumnTable, key);
    return true;
}

void ShowGroupView(const GroupView& view, int showCommand) {
    ShowWindow(view.list, showCommand);
    UpdateWindow(view.list);
}

bool ReloadGroupView(const GroupView& view, const wchar_t* folder) {
    const unsigned failure = FillList(view.list, folder);
    if (failure != 0) ShowLastError(failure, kCaption);
    return failure == 0;
}

bool SelectedGroup(const GroupView& view, wchar_t* name, int capacity, uint32_t* row) {
    uint32_t selected = 0;
    if (!SelectedRow(view.list, selected)) return false;
    LVITEMW item = {};
    item.pszText = name;
    item.cchTextMax = capacity;
    name[0] = L'\0';
    SendMessageW(view.list, LVM_GETITEMTEXTW, selected, reinterpret_cast<LPARAM>(&item));
    if (row) *row = selected;
    return true;
}

bool SelectNextGroup(const GroupView& view, bool& moved) {
    uint32_t row = 0;
    moved = false;
    if (!SelectedRow(view.list, row)) return false;
    moved = row + 1 < RowCount(view.list);
    if (moved) SelectRow(view.list, row + 1);
    return true;
}

void SetGroupUnread(const GroupView& view, uint32_t row, uint32_t count) {
    SetNumber(view.list, row, kUnreadColumn, count);
}

bool SaveGroupViewWidths(const GroupView& view) {
    RegistryKeyOwner key;
    return OpenViewSubkey(kGroupViewSubkey, key) && StoreColumnWidths(view.list, kColumnTable, key);
}
