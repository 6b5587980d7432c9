// What it costs to fill a list or a tree that shows: against unseen, then showing it and drawing it once.
// Prints rows of run.sh's table. The subscribe dialog's list is in choose_bench.
#include <functional>
#include <string>

#include "bench/dialogs.h"
#include "bench/groups.h"
#include "bench/measure.h"
#include "drafts/file_chooser.h"
#include "platform/platform.h"
#include "views/group_view.h"

namespace {

constexpr double kGoal = 1.2;
constexpr RECT kPane = {0, 0, 240, 268};

double Shown(HWND window, const std::function<void()>& fill) {
    return Once([&] {
        fill();
        UpdateWindow(window);
    });
}

// With `frame`, the window's parent, hidden; then both are shown.
double Unseen(HWND frame, HWND window, const std::function<void()>& fill) {
    ShowWindow(frame, SW_HIDE);
    return Once([&] {
        fill();
        ShowWindow(frame, SW_SHOWNA);
        UpdateWindow(window);
    });
}

void BenchGroupView(const BenchFolder& folder, uint32_t groups, Rows& rows) {
    std::string names;
    for (uint32_t i = 0; i < groups; ++i) {
        const std::string name = "fj.group" + std::to_string(i);
        const std::wstring file(name.begin(), name.end());
        CopyWhole(folder.File(L"fj.one.idx").c_str(), folder.File((file + L".idx").c_str()).c_str());
        names += name + "\r\n";
    }
    WriteText(folder.File(L"group.dat").c_str(), names);
    const HWND frame = CreateWindowExW(0, L"STATIC", L"", WS_POPUP | WS_VISIBLE, 0, 0, kPane.right,
                                       kPane.bottom, nullptr, nullptr, GetModuleHandleW(nullptr), nullptr);
    GroupView view;
    Require(CreateGroupView(view, frame, L"Group", kPane, 101, GetModuleHandleW(nullptr)), "making the view");
    const auto fill = [&] { Require(ReloadGroupView(view, folder.Path()), "reloading the groups"); };
    rows.AddTimes(
        groups, "groups",
        SideBySide([&] { return Shown(view.list, fill); }, [&] { return Unseen(frame, view.list, fill); }));
    DestroyWindow(frame);
}

// The file chooser.

struct Tree {
    HWND window;
    HTREEITEM item;
};

void Expand(const Tree& tree, UINT action) {
    SendMessageW(tree.window, TVM_EXPAND, action, reinterpret_cast<LPARAM>(tree.item));
}

HTREEITEM Relation(const Tree& tree, UINT which) {
    return reinterpret_cast<HTREEITEM>(
        SendMessageW(tree.window, TVM_GETNEXTITEM, which, reinterpret_cast<LPARAM>(tree.item)));
}

std::wstring NameOf(const Tree& tree) {
    wchar_t text[MAX_PATH] = {};
    TVITEMW item = {};
    item.mask = TVIF_TEXT;
    item.hItem = tree.item;
    item.pszText = text;
    item.cchTextMax = MAX_PATH;
    SendMessageW(tree.window, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item));
    return text;
}

// Opens folder after folder; the tree's item is then that of the last.
void WalkDown(Tree& tree, const std::wstring& path) {
    tree.item = Relation(tree, TVGN_ROOT);
    std::size_t start = path.find(L'\\') + 1;
    for (std::size_t end; (end = path.find(L'\\', start)) != std::wstring::npos; start = end + 1) {
        Expand(tree, TVE_EXPAND);
        tree.item = Relation(tree, TVGN_CHILD);
        while (tree.item && NameOf(tree) != path.substr(start, end - start))
            tree.item = Relation(tree, TVGN_NEXT);
        Require(tree.item != nullptr, "finding a folder");
    }
}

void MeasureChooser(HWND dialog, const std::wstring& path, uint32_t files, Rows& rows) {
    Tree tree = {GetWindow(dialog, GW_CHILD), nullptr};
    while (tree.window && !Relation(tree, TVGN_ROOT))
        tree.window = GetWindow(tree.window, GW_HWNDNEXT);
    WalkDown(tree, path);
    TVITEMW item = {};
    item.mask = TVIF_STATE;
    item.hItem = tree.item;
    item.stateMask = TVIS_EXPANDEDONCE;  // a folder is filled only where it was not opened before
    const auto close = [&] {
        Expand(tree, TVE_COLLAPSE);
        SendMessageW(tree.window, TVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&item));
        UpdateWindow(tree.window);
    };
    const auto open = [&] { Expand(tree, TVE_EXPAND); };
    const auto ours = [&] {
        close();
        return Shown(tree.window, open);
    };
    const auto theirs = [&] {
        close();
        return Unseen(dialog, tree.window, open);
    };
    rows.AddTimes(files, "files", SideBySide(ours, theirs));
}

void BenchChooser(const BenchFolder& folder, uint32_t files, Rows& rows) {
    const std::wstring path = folder.File((std::to_wstring(files) + L"\\").c_str());
    Require(CreateDirectoryW(path.c_str(), nullptr), "making a folder");
    for (uint32_t i = 0; i < files; ++i)
        WriteText((path + std::to_wstring(i) + L".txt").c_str(), "");
    wchar_t whole[MAX_PATH] = {};
    Require(GetLongPathNameW(path.c_str(), whole, MAX_PATH) != 0, "asking for the folder's name");
    Require(SetCurrentDirectoryW(whole), "going to its drive");
    ActInNextDialog([&](HWND dialog) { MeasureChooser(dialog, whole, files, rows); });
    FileChooser chooser;
    Require(RunFileChooser(chooser, GetModuleHandleW(nullptr), nullptr, L"", L"*.txt") == IDCANCEL,
            "running the chooser");
    FreeFileChooser(chooser);
}

}  // namespace

int main() {
    InitCommonControls();
    const BenchFolder folder;
    {
        GroupStore store;
        MakeGroup(store, folder, L"fj.one", 10, 1);
    }
    Rows groupRows("reloading a group view that shows", "unseen, then showing it", kGoal);
    for (const uint32_t groups : {100u, 300u})
        BenchGroupView(folder, groups, groupRows);
    Rows chooserRows("opening a folder in the chooser", "unseen, then showing it", kGoal);
    for (const uint32_t files : {100u, 300u})
        BenchChooser(folder, files, chooserRows);
    Require(SetCurrentDirectoryW(L"\\"), "leaving the folder");
    return 0;
}
