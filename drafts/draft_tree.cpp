#include "drafts/draft_tree.h"

#include <wchar.h>

#include <cstring>

#include "drafts/file_chooser.h"
#include "platform/owners.h"
#include "resources/resource.h"
#include "store/file.h"
#include "store/log.h"
#include "text/convert.h"
#include "text/messages.h"

namespace {

constexpr wchar_t kNoValue[] = L"(none)";
constexpr UINT kFolderNames[kDraftFolderCount] = {IDS_DRAFTS_WAITING, IDS_DRAFTS_UNFINISHED, IDS_DRAFTS_SENT};

HTREEITEM Insert(const DraftTree& drafts, HTREEITEM parent, HTREEITEM after, const wchar_t* text, int image) {
    TVINSERTSTRUCTW insert = {};
    insert.hParent = parent;
    insert.hInsertAfter = after;
    insert.item.mask = TVIF_TEXT | TVIF_IMAGE | TVIF_SELECTEDIMAGE;
    insert.item.pszText = const_cast<wchar_t*>(text);
    insert.item.iImage = insert.item.iSelectedImage = image;
    return reinterpret_cast<HTREEITEM>(
        SendMessageW(drafts.tree, TVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&insert)));
}

HTREEITEM NextItem(const DraftTree& drafts, HTREEITEM item, WPARAM relation) {
    return reinterpret_cast<HTREEITEM>(
        SendMessageW(drafts.tree, TVM_GETNEXTITEM, relation, reinterpret_cast<LPARAM>(item)));
}

bool HasText(const DraftTree& drafts, HTREEITEM item, const wchar_t* wanted) {
    wchar_t text[kTextCapacity] = {};
    TVITEMW data = {};
    data.mask = TVIF_TEXT | TVIF_HANDLE;
    data.hItem = item;
    data.pszText = text;
    data.cchTextMax = kTextCapacity;
    SendMessageW(drafts.tree, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&data));
    return wcscmp(data.pszText, wanted) == 0;
}

HTREEITEM FindChild(const DraftTree& drafts, HTREEITEM parent, const wchar_t* text) {
    HTREEITEM child = NextItem(drafts, parent, TVGN_CHILD);
    while (child && !HasText(drafts, child, text))
        child = NextItem(drafts, child, TVGN_NEXT);
    return child;
}

// What a header line says behind its name; null when memory runs out.
WideText ValueOf(const HeaderBlock& head, uint32_t line, uint32_t length, std::size_t nameLength) {
    if (line == kNoLine) return CopyText(kNoValue);
    const char* start = head.buffer.get() + line + nameLength;
    std::size_t left = length - nameLength;
    while (left > 0 && (start[left - 1] == '\r' || start[left - 1] == '\n'))
        --left;
    const NarrowText value = NewArray<char>(left + 1);
    if (!value) return nullptr;
    std::memcpy(value.get(), start, left);
    value[left] = '\0';
    return ToWide(value.get());
}

// False when the newsgroups node cannot be inserted.
bool AddDraft(const DraftTree& drafts, DraftFolder folder, const wchar_t* newsgroups,
              const wchar_t* subject) {
    const HTREEITEM root = drafts.roots[folder];
    HTREEITEM node = FindChild(drafts, root, newsgroups);
    if (!node) node = Insert(drafts, root, TVI_SORT, newsgroups, kFolderImage);
    if (!node) return false;
    Insert(drafts, node, TVI_LAST, subject, kFileImage);
    return true;
}

bool ReadDraftHead(const wchar_t* folder, const wchar_t* name, HeaderBlock& head) {
    const WideText path = JoinPath(folder, name);
    DataFile file;
    return path && OpenDataFile(file, path.get(), FileMode::kRead) && ReadHeaderBlock(file, head);
}

// A draft that cannot be read is passed over.
bool AddDraftFile(const DraftTree& drafts, const wchar_t* folder, const wchar_t* name) {
    HeaderBlock head;
    if (!ReadDraftHead(folder, name, head)) return true;
    const WideText newsgroups =
        ValueOf(head, head.newsgroupLine, head.newsgroupLength, kNewsgroupName.size());
    const WideText subject = ValueOf(head, head.subjectLine, head.subjectLength, kSubjectName.size());
    if (!newsgroups || !subject) return true;
    return AddDraft(drafts, FolderOfDraft(name), newsgroups.get(), subject.get());
}

void InsertRoots(DraftTree& drafts) {
    SendMessageW(drafts.tree, TVM_DELETEITEM, 0, reinterpret_cast<LPARAM>(TVI_ROOT));
    for (int i = 0; i < kDraftFolderCount; ++i) {
        const wchar_t* name = LoadResString(kFolderNames[i]);
        drafts.roots[i] = Insert(drafts, TVI_ROOT, TVI_LAST, name ? name : L"", kFolderImage);
    }
}

}  // namespace

DraftTree::~DraftTree() {
    if (imageList) ImageList_Destroy(imageList);
}

bool CreateDraftTree(DraftTree& drafts, HWND parent, const RECT& rectangle, int id, HINSTANCE instance) {
    constexpr DWORD kStyle = WS_CHILD | WS_VISIBLE | TVS_HASLINES | TVS_HASBUTTONS | TVS_LINESATROOT;
    drafts.imageList = LoadFileImages(instance);
    if (!drafts.imageList) return false;
    drafts.tree = CreateWindowExW(0, L"SysTreeView32", L"", kStyle, rectangle.left, rectangle.top,
                                  rectangle.right - rectangle.left, rectangle.bottom - rectangle.top, parent,
                                  ChildId(id), instance, nullptr);
    if (!drafts.tree) return false;
    SendMessageW(drafts.tree, TVM_SETIMAGELIST, TVSIL_NORMAL, reinterpret_cast<LPARAM>(drafts.imageList));
    return true;
}

void ShowDraftTree(const DraftTree& drafts, int showCommand) {
    ShowWindow(drafts.tree, showCommand);
    UpdateWindow(drafts.tree);
}

bool FillDraftTree(DraftTree& drafts, const wchar_t* folder) {
    InsertRoots(drafts);
    const WideText pattern = JoinPath(folder, L"*.txt");
    FoundFile found;
    const FindOwner find(pattern ? FindFirst(pattern.get(), found) : INVALID_HANDLE_VALUE);
    if (!find) return true;
    do {
        const bool isFolder = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        if (!isFolder && !AddDraftFile(drafts, folder, found.cFileName)) return false;
    } while (FindNext(find.Get(), found));
    return true;
}

DraftFolder FolderOfDraft(const wchar_t* fileName) {
    if (*fileName == L'o') return kWaitingDrafts;
    return *fileName == L's' ? kSentDrafts : kUnfinishedDrafts;
}
