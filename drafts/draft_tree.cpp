#include "drafts/draft_tree.h"

#include <wchar.h>

#include <cstring>

#include "drafts/file_items.h"
#include "resources/resource.h"
#include "files/data_file.h"
#include "store/log.h"
#include "text/convert.h"
#include "text/messages.h"

namespace {

constexpr wchar_t kNoValue[] = L"(none)";
constexpr UINT kFolderNames[kDraftFolderCount] = {IDS_DRAFTS_WAITING, IDS_DRAFTS_UNFINISHED, IDS_DRAFTS_SENT};

bool HasText(HWND tree, HTREEITEM item, const wchar_t* wanted) {
    wchar_t text[kTextCapacity] = {};
    int image = 0;
    return ReadItem(tree, item, text, kTextCapacity, image) && wcscmp(text, wanted) == 0;
}

HTREEITEM FindChild(HWND tree, HTREEITEM parent, const wchar_t* text) {
    HTREEITEM child = RelatedItem(tree, parent, TVGN_CHILD);
    while (child && !HasText(tree, child, text))
        child = RelatedItem(tree, child, TVGN_NEXT);
    return child;
}

HTREEITEM InsertFolder(HWND tree, HTREEITEM parent, HTREEITEM after, const wchar_t* text) {
    return InsertItem(tree, parent, after, text, kFolderImage, kFolderImage);
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
    HTREEITEM node = FindChild(drafts.tree, root, newsgroups);
    if (!node) node = InsertFolder(drafts.tree, root, TVI_SORT, newsgroups);
    if (!node) return false;
    InsertItem(drafts.tree, node, TVI_LAST, subject, kFileImage, kFileImage);
    return true;
}

bool ReadDraftHead(const wchar_t* folder, const wchar_t* name, HeaderBlock& head) {
    const WideText path = JoinPath(folder, name);
    DataFile file;
    return path && OpenDataFile(file, path.get(), FileMode::kRead) && ReadHeaderBlock(file, head);
}

// A draft that cannot be read is left out.
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
        drafts.roots[i] = InsertFolder(drafts.tree, TVI_ROOT, TVI_LAST, name ? name : L"");
    }
}

}  // namespace

bool CreateDraftTree(DraftTree& drafts, HWND parent, const RECT& rectangle, int id, HINSTANCE instance) {
    constexpr DWORD kStyle = WS_CHILD | WS_VISIBLE | TVS_HASLINES | TVS_HASBUTTONS | TVS_LINESATROOT;
    if (!LoadFileImages(drafts.imageList, instance)) return false;
    drafts.tree = CreateWindowExW(0, L"SysTreeView32", L"", kStyle, rectangle.left, rectangle.top,
                                  rectangle.right - rectangle.left, rectangle.bottom - rectangle.top, parent,
                                  ChildId(id), instance, nullptr);
    if (!drafts.tree) return false;
    UseFileImages(drafts.tree, drafts.imageList);
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
