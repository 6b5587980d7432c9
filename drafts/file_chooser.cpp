#include "drafts/file_chooser.h"

#include <wchar.h>

#include <cstring>

#include "drafts/file_items.h"
#include "files/data_file.h"
#include "platform/drawing_pause.h"
#include "resources/resource.h"
#include "text/convert.h"
#include "text/name_list.h"

namespace {

constexpr wchar_t kPlaceholder[] = L"DUMMY";  // the child of an unopened folder, so that it can be opened

HTREEITEM Insert(HWND tree, HTREEITEM parent, const wchar_t* text, FileImage image, FileImage selectedImage) {
    return InsertItem(tree, parent, TVI_LAST, text, image, selectedImage);
}

void InsertPlaceholder(HWND tree, HTREEITEM parent) {
    Insert(tree, parent, kPlaceholder, kFolderImage, kOpenFolderImage);
}

void InsertFolder(HWND tree, HTREEITEM parent, const wchar_t* name) {
    const HTREEITEM item = Insert(tree, parent, name, kFolderImage, kOpenFolderImage);
    if (item) InsertPlaceholder(tree, item);
}

// Puts `name` before `place`, which moves back, with a backslash at its end; a root has one already. False
// when there is no room.
bool Prepend(const wchar_t* path, wchar_t*& place, const wchar_t* name) {
    const std::size_t length = wcslen(name);
    const bool ended = length && name[length - 1] == L'\\';
    const std::size_t size = ended ? length : length + 1;
    if (size > static_cast<std::size_t>(place - path)) return false;
    place -= size;
    std::memcpy(place, name, length * sizeof(wchar_t));
    place[size - 1] = L'\\';
    return true;
}

// Each level from the root on with a backslash behind it. False when the buffer is too small.
bool BuildPath(HWND tree, HTREEITEM item, wchar_t (&path)[kChooserPathSize]) {
    wchar_t* place = path + kChooserPathSize - 1;
    *place = L'\0';
    for (; item; item = RelatedItem(tree, item, TVGN_PARENT)) {
        wchar_t text[kChooserPathSize] = {};
        int image = 0;
        if (!ReadItem(tree, item, text, kChooserPathSize, image) || !Prepend(path, place, text)) return false;
    }
    std::memmove(path, place, (wcslen(place) + 1) * sizeof(wchar_t));
    return true;
}

bool IsDots(const wchar_t* name) {
    return wcscmp(name, L".") == 0 || wcscmp(name, L"..") == 0;
}

// The folders, or the files, that match the pattern in a folder. A folder that cannot be listed has none.
void FindNames(NameList& names, const wchar_t* path, const wchar_t* pattern, bool folders) {
    const WideText search = JoinPath(path, pattern);
    FoundFile found;
    const FindOwner find(search ? FindFirst(search.get(), found) : INVALID_HANDLE_VALUE);
    if (!find) return;
    do {
        const bool isFolder = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        if (isFolder != folders || IsDots(found.cFileName)) continue;
        if (!AddName(names, CopyText(found.cFileName), 0)) return;
    } while (FindNext(find.Get(), found));
}

void FillFolder(const FileChooser& chooser, HTREEITEM item) {
    wchar_t path[kChooserPathSize];
    if (!BuildPath(chooser.tree, item, path)) return;
    NameList folders;
    FindNames(folders, path, L"*.*", true);
    SortNames(folders);
    for (uint32_t i = 0; i < folders.count; ++i)
        InsertFolder(chooser.tree, item, folders.entries[i].name);
    if (!chooser.pattern) return;
    NameList files;
    FindNames(files, path, chooser.pattern, false);
    SortNames(files);
    for (uint32_t i = 0; i < files.count; ++i)
        Insert(chooser.tree, item, files.entries[i].name, kFileImage, kFileImage);
}

void DeleteChildren(HWND tree, HTREEITEM item) {
    while (const HTREEITEM child = RelatedItem(tree, item, TVGN_CHILD)) {
        SendMessageW(tree, TVM_DELETEITEM, 0, reinterpret_cast<LPARAM>(child));
    }
}

// A folder is read anew each time it is opened.
void OnExpanding(const FileChooser& chooser, const NMTREEVIEWW& notice) {
    const HCURSOR before = SetCursor(LoadCursorW(nullptr, IDC_WAIT));
    const DrawingPause pause(chooser.tree);
    DeleteChildren(chooser.tree, notice.itemNew.hItem);
    if (notice.action == TVE_EXPAND) {
        FillFolder(chooser, notice.itemNew.hItem);
    } else {
        InsertPlaceholder(chooser.tree, notice.itemNew.hItem);
    }
    SetCursor(before);
}

// True, with the path built, for an item that may be chosen.
bool Choose(FileChooser& chooser, HTREEITEM item) {
    wchar_t text[kChooserPathSize] = {};
    int image = 0;
    if (!item || !ReadItem(chooser.tree, item, text, kChooserPathSize, image)) return false;
    if (chooser.pattern && image != kFileImage) return false;
    if (!BuildPath(chooser.tree, item, chooser.path) || !CompletePath(chooser.path)) return false;
    const std::size_t length = wcslen(chooser.path);
    if (chooser.pattern) chooser.path[length - 1] = L'\0';  // a file's path has no backslash at its end
    return true;
}

void EnableOk(const FileChooser& chooser, bool enabled) {
    EnableWindow(GetDlgItem(chooser.dialog, IDC_CHOOSER_OK), enabled);
}

INT_PTR OnInitDialog(HWND dialog, FileChooser* chooser) {
    SetWindowPointer(dialog, kUserData, chooser);
    chooser->dialog = dialog;
    chooser->tree = GetDlgItem(dialog, IDC_CHOOSER_TREE);
    UseFileImages(chooser->tree, chooser->imageList);
    SendMessageW(chooser->tree, TVM_DELETEITEM, 0, reinterpret_cast<LPARAM>(TVI_ROOT));
    wchar_t roots[kRootsSize];
    ListRoots(roots);
    for (const wchar_t* root = roots; *root; root += wcslen(root) + 1)
        InsertPlaceholder(chooser->tree, Insert(chooser->tree, TVI_ROOT, root, kRootImage, kRootImage));
    SetWindowTextW(dialog, chooser->title);
    EnableOk(*chooser, false);
    return TRUE;
}

INT_PTR OnNotify(FileChooser& chooser, const NMHDR& header) {
    if (header.idFrom != IDC_CHOOSER_TREE) return FALSE;
    const auto& notice = reinterpret_cast<const NMTREEVIEWW&>(header);
    if (header.code == TVN_ITEMEXPANDINGW) OnExpanding(chooser, notice);
    if (header.code == TVN_SELCHANGEDW) EnableOk(chooser, Choose(chooser, notice.itemNew.hItem));
    return FALSE;
}

INT_PTR OnCommand(FileChooser& chooser, int id) {
    if (id == IDCANCEL) EndDialog(chooser.dialog, IDCANCEL);
    if (id == IDC_CHOOSER_OK && Choose(chooser, RelatedItem(chooser.tree, nullptr, TVGN_CARET))) {
        chooser.result = chooser.path;
        EndDialog(chooser.dialog, IDOK);
    }
    return TRUE;
}

INT_PTR CALLBACK ChooserProcedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_INITDIALOG) return OnInitDialog(dialog, reinterpret_cast<FileChooser*>(lParam));
    auto chooser = static_cast<FileChooser*>(GetWindowPointer(dialog, kUserData));
    if (!chooser) return FALSE;
    if (message == WM_NOTIFY) return OnNotify(*chooser, *reinterpret_cast<const NMHDR*>(lParam));
    if (message == WM_COMMAND) return OnCommand(*chooser, LOWORD(wParam));
    return FALSE;
}

}  // namespace

INT_PTR RunFileChooser(FileChooser& chooser, HINSTANCE instance, HWND owner, const wchar_t* title,
                       const wchar_t* pattern) {
    chooser.title = title;
    chooser.pattern = pattern;
    chooser.result = nullptr;
    if (!chooser.imageList && !LoadFileImages(chooser.imageList, instance)) return IDCANCEL;
    const INT_PTR result = RunDialog(instance, IDD_CHOOSER, owner, ChooserProcedure, &chooser);
    return result == IDOK ? IDOK : IDCANCEL;
}

void FreeFileChooser(FileChooser& chooser) {
    chooser.imageList.Reset();
}
