#include "subscribe/subscribe_dialog.h"

#include <wchar.h>

#include <cstring>

#include "files/data_file.h"
#include "nntp/password_prompt.h"
#include "platform/drawing_pause.h"
#include "resources/resource.h"
#include "store/group_store.h"
#include "subscribe/group_file.h"
#include "subscribe/group_list_dialog.h"
#include "text/convert.h"
#include "text/last_error.h"
#include "text/messages.h"
#include "text/name_list.h"

namespace {

constexpr int kLongestName = 1024;  // UTF-16 units of a row's text
constexpr int kColumnWidth = 180;
constexpr int kImageWidth = 8;
enum Image { kNotSubscribed = 0, kSubscribed = 1 };

HWND ListOf(const SubscribeState& state) {
    return GetDlgItem(state.dialog, IDC_SUBSCRIBE_LIST);
}

void InsertEntry(HWND list, const NameEntry& entry, uint32_t place) {
    LVITEMW item = {};
    item.mask = LVIF_TEXT | LVIF_IMAGE;
    item.iItem = static_cast<int>(place);
    item.pszText = entry.name;
    item.iImage = entry.tag;
    SendMessageW(list, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item));
}

// The list's own sorting is off while the sorted names are appended.
void ShowEntries(HWND list, NameList& entries) {
    SortNames(entries);
    const DrawingPause pause(list);
    const LONG style = GetWindowLongW(list, GWL_STYLE);
    SetWindowLongW(list, GWL_STYLE, style & ~LVS_SORTASCENDING);
    SendMessageW(list, LVM_DELETEALLITEMS, 0, 0);
    SendMessageW(list, LVM_SETITEMCOUNT, entries.count, 0);
    for (uint32_t i = 0; i < entries.count; ++i)
        InsertEntry(list, entries.entries[i], i);
    SetWindowLongW(list, GWL_STYLE, style);
}

// A pressed button has the focus. Disabled with it, it would leave the keyboard without a target.
void EnableCategoryButton(const SubscribeState& state, bool enabled) {
    const HWND button = GetDlgItem(state.dialog, IDC_SUBSCRIBE_CATEGORIES);
    if (!enabled && GetFocus() == button)
        SendMessageW(state.dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(ListOf(state)), TRUE);
    EnableWindow(button, enabled);
}

// Shows as many as memory holds.
void ListCategories(const SubscribeState& state, DataFile& file) {
    NameList entries;
    GroupLine line;
    while (ReadGroupLine(file, line, true) && AddName(entries, ToWide(line), kNotSubscribed)) {
    }
    ShowEntries(ListOf(state), entries);
}

void ShowCategories(SubscribeState& state) {
    state.listsCategories = true;
    DataFile file;
    if (!OpenDataFile(file, state.categoryPath, FileMode::kRead)) return;
    const HCURSOR before = SetCursor(LoadCursorW(nullptr, IDC_WAIT));
    ListCategories(state, file);
    EnableCategoryButton(state, false);
    SetCursor(before);
}

// Units of the data folder's path.
std::size_t FolderLength(const SubscribeState& state) {
    return wcslen(state.groupPath) - wcslen(L"group.dat");
}

// Every group whose name begins with the category's bytes; no '.' has to follow them.
void ListGroups(const SubscribeState& state, DataFile& file, const char* category) {
    const std::size_t length = std::strlen(category);
    const std::size_t folderLength = FolderLength(state);
    NameList entries;
    GroupLine line;
    while (ReadGroupLine(file, line, true)) {
        if (std::strncmp(line, category, length) != 0) continue;
        WideText name = ToWide(line);
        // A group whose name cannot be a file name could store nothing.
        if (name && !IsFileName(name.get(), folderLength)) continue;
        const int image = FindString(state.subscriptions, line) ? kSubscribed : kNotSubscribed;
        if (!AddName(entries, std::move(name), image)) break;
    }
    ShowEntries(ListOf(state), entries);
}

void ShowGroups(SubscribeState& state, const wchar_t* category) {
    state.listsCategories = false;
    DataFile file;
    if (!OpenDataFile(file, state.activePath, FileMode::kRead)) return;
    const HCURSOR before = SetCursor(LoadCursorW(nullptr, IDC_WAIT));
    const NarrowText prefix = ToNarrow(category);
    if (prefix) ListGroups(state, file, prefix.get());
    EnableCategoryButton(state, true);
    SetCursor(before);
}

void ToggleGroup(SubscribeState& state, LVITEMW& item) {
    const NarrowText name = ToNarrow(item.pszText);
    const bool subscribe = item.iImage == kNotSubscribed;
    if (!name || !state.subscriptions.heap) return;
    if (subscribe && !AddString(state.subscriptions, name.get())) return;
    if (!subscribe) RemoveString(state.subscriptions, name.get());
    item.mask = LVIF_IMAGE;
    item.iImage = subscribe ? kSubscribed : kNotSubscribed;
    SendMessageW(ListOf(state), LVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&item));
}

void OpenRow(SubscribeState& state) {
    wchar_t text[kLongestName] = {};
    LVITEMW item = {};
    const HWND list = ListOf(state);
    const LRESULT selected =
        SendMessageW(list, LVM_GETNEXTITEM, static_cast<WPARAM>(-1), MAKELPARAM(LVNI_SELECTED, 0));
    if (selected < 0) return;
    item.mask = LVIF_TEXT | LVIF_IMAGE;
    item.iItem = static_cast<int>(selected);
    item.pszText = text;
    item.cchTextMax = kLongestName;
    if (!SendMessageW(list, LVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item))) return;
    if (state.listsCategories) {
        ShowGroups(state, item.pszText);
    } else {
        ToggleGroup(state, item);
    }
}

bool ShowLoadFailure(UINT id) {
    ShowLastError(id, kProgramCaption);
    return false;
}

// Takes every line, comments and empty ones too: all are written back as they were.
bool LoadSubscriptions(SubscribeState& state) {
    DataFile file;
    if (!CreateStringSet(state.subscriptions)) {
        state.loadError = GetError();
        return ShowLoadFailure(IDS_SUBSCRIBE_HASH_FAILED);
    }
    if (!OpenDataFile(file, state.groupPath, FileMode::kRead)) {
        state.loadError = GetError() == kErrorFileNotFound ? 0 : GetError();
        return ShowLoadFailure(IDS_SUBSCRIBE_OPEN_FAILED);
    }
    GroupLine line;
    while (ReadGroupLine(file, line, true, nullptr, &state.overlongLines) &&
           AddString(state.subscriptions, line)) {
    }
    if (GetError() == kErrorEndOfFile) return true;
    state.loadError = GetError();
    return ShowLoadFailure(IDS_SUBSCRIBE_LOAD_FAILED);
}

void PrepareList(SubscribeState& state) {
    wchar_t heading[] = L"Group";
    LVCOLUMNW column = {};
    column.mask = LVCF_FMT | LVCF_TEXT | LVCF_WIDTH;
    column.fmt = LVCFMT_LEFT;
    column.cx = kColumnWidth;
    column.pszText = heading;
    const HWND list = ListOf(state);
    SendMessageW(list, LVM_INSERTCOLUMNW, 0, reinterpret_cast<LPARAM>(&column));
    state.imageList.Reset(ImageList_LoadImage(state.instance, MAKEINTRESOURCEW(IDB_SUBSCRIBE_MARKS),
                                              kImageWidth, 0, CLR_NONE, IMAGE_BITMAP, 0));
    SendMessageW(list, LVM_SETIMAGELIST, LVSIL_SMALL, reinterpret_cast<LPARAM>(state.imageList.Get()));
}

INT_PTR OnInitDialog(HWND dialog, SubscribeState* state) {
    SetWindowPointer(dialog, kUserData, state);
    state->dialog = dialog;
    PrepareList(*state);
    if (LoadSubscriptions(*state)) ShowCategories(*state);
    // Without a list to choose from, the next step is to fetch one, so Enter does that. To set the focus
    // alone would leave Enter to OK.
    const bool empty = SendMessageW(ListOf(*state), LVM_GETITEMCOUNT, 0, 0) == 0;
    const HWND download = GetDlgItem(dialog, IDC_SUBSCRIBE_DOWNLOAD);
    if (empty) SendMessageW(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(download), TRUE);
    return !empty;
}

void OnDownload(SubscribeState& state) {
    Secret typedPassword;
    const bool asks = state.user && !state.password;
    if (asks) {
        const INT_PTR result = RunPasswordPrompt(state.instance, state.dialog, state.user, typedPassword);
        if (result != IDOK || !typedPassword) return;
    }
    GroupListRequest request;
    request.activePath = state.activePath;
    request.categoryPath = state.categoryPath;
    request.server = state.server;
    request.port = state.port;
    request.user = state.user;
    request.password = asks ? typedPassword.get() : state.password;
    RunGroupListDownload(state.instance, state.dialog, request);
    ShowCategories(state);
}

bool WriteFile(DataFile& file, const SubscribeState& state) {
    StringSetIterator iterator = IterateStrings(state.subscriptions);
    while (const StringNode* node = NextString(iterator)) {
        const auto length = static_cast<uint32_t>(std::strlen(node->text));
        if (!WriteBytes(file, node->text, length) || !WriteBytes(file, "\r\n", 2)) return false;
    }
    return WriteKept(file, state.overlongLines) && CloseDataFile(file);
}

// A file that was not read whole must not be overwritten.
bool OpenForReplacing(const SubscribeState& state, DataFile& file) {
    return state.loadError == 0 ? OpenDataFile(file, state.groupPath, FileMode::kRewrite)
                                : Fail(state.loadError);
}

void SaveSubscriptions(const SubscribeState& state) {
    DataFile file;
    if (!OpenForReplacing(state, file)) {
        ShowLastError(IDS_SUBSCRIBE_REPLACE_FAILED, kProgramCaption);
        return;
    }
    if (!WriteFile(file, state)) ShowLastError(IDS_SUBSCRIBE_WRITE_FAILED, kProgramCaption);
}

INT_PTR OnCommand(SubscribeState& state, int id) {
    switch (id) {
        case IDOK:
            SaveSubscriptions(state);
            EndDialog(state.dialog, IDOK);
            break;
        case IDCANCEL:
            EndDialog(state.dialog, IDCANCEL);
            break;
        case IDC_SUBSCRIBE_DOWNLOAD:
            OnDownload(state);
            break;
        case IDC_SUBSCRIBE_CATEGORIES:
            ShowCategories(state);
            break;
        default:
            return FALSE;
    }
    return TRUE;
}

INT_PTR OnNotify(SubscribeState& state, const NMHDR& notice) {
    if (notice.idFrom == IDC_SUBSCRIBE_LIST && OpensRow(notice)) OpenRow(state);
    return FALSE;
}

INT_PTR CALLBACK SubscribeProcedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_INITDIALOG) return OnInitDialog(dialog, reinterpret_cast<SubscribeState*>(lParam));
    auto state = static_cast<SubscribeState*>(GetWindowPointer(dialog, kUserData));
    if (!state) return FALSE;
    if (message == WM_COMMAND) return OnCommand(*state, LOWORD(wParam));
    if (message == WM_NOTIFY) return OnNotify(*state, *reinterpret_cast<const NMHDR*>(lParam));
    return FALSE;
}

}  // namespace

INT_PTR RunSubscribeDialog(SubscribeState& state, HINSTANCE instance, HWND parent) {
    state.instance = instance;
    const INT_PTR result = RunDialog(instance, IDD_SUBSCRIBE, parent, SubscribeProcedure, &state);
    state.imageList.Reset();
    DestroyStringSet(state.subscriptions);
    return result == IDOK ? IDOK : IDCANCEL;
}
