// The chooser, opened on folders of the test's own.
#include "drafts/file_chooser.h"

#include <gmock/gmock.h>

#include "resources/resource.h"
#include "tests/drafts/tree_walk.h"
#include "tests/support/temp_folder.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ChooserRun {
  public:
    explicit ChooserRun(const wchar_t* pattern, HINSTANCE instance = GetModuleHandleW(nullptr))
        : thread([this, pattern, instance] {
              return RunFileChooser(chooser, instance, nullptr, L"Which?", pattern);
          }) {}
    ~ChooserRun() {
        if (!thread.Ended()) Close(IDCANCEL);
        FreeFileChooser(chooser);
        EXPECT_FALSE(chooser.imageList);
    }

    HWND Tree() {
        if (!tree) tree = GetDlgItem(thread.Window(L"Which?"), IDC_CHOOSER_TREE);
        return tree;
    }
    bool MayChoose(HTREEITEM item) {
        Choose(Tree(), item);
        return IsOn(GetParent(tree), IDC_CHOOSER_OK);
    }
    INT_PTR Close(int button) {
        SendMessageW(GetParent(Tree()), WM_COMMAND, static_cast<WPARAM>(button), 0);
        return thread.Result();
    }
    // What the chooser answers for the item.
    std::wstring ResultOf(HTREEITEM item) {
        EXPECT_TRUE(MayChoose(item));
        EXPECT_EQ(Close(IDC_CHOOSER_OK), 1);
        return chooser.result ? chooser.result : L"(none)";
    }

    FileChooser chooser;
    HWND tree = nullptr;
    UiThread thread;
};

class ChooserTest : public testing::Test {
  protected:
    ChooserTest() {
        InitCommonControls();
        GetCurrentDirectoryW(MAX_PATH, before_);
        SetCurrentDirectoryW(folder.Path().c_str());
    }
    ~ChooserTest() override { SetCurrentDirectoryW(before_); }

    void MakeFolder(const std::wstring& name) const {
        EXPECT_TRUE(CreateDirectoryW((L"\\\\?\\" + folder.Path() + name).c_str(), nullptr));
    }
    void RemoveFolder(const std::wstring& name) const {
        EXPECT_TRUE(RemoveDirectoryW((L"\\\\?\\" + folder.Path() + name).c_str()));
    }

    TempFolder folder;
    const std::wstring root = folder.Path().substr(2);  // as the chooser calls it: without the drive

  private:
    wchar_t before_[MAX_PATH] = {};
};

TEST_F(ChooserTest, AFileIsChosenWherePatternsMatch) {
    for (const wchar_t* name : {L"b", L"A", L"c.exe", L"_z"})
        MakeFolder(name);
    for (const wchar_t* name : {L"x.exe", L"B.EXE", L"note.txt", L"_y.exe"})
        folder.Write(name, "");
    ChooserRun run(L"*.exe");
    EXPECT_FALSE(IsOn(GetParent(run.Tree()), IDC_CHOOSER_OK)) << "nothing is chosen yet";
    const HTREEITEM top = Walk(run.tree, root);
    Open(run.tree, top);
    EXPECT_THAT(Children(run.tree, top),
                ElementsAre(L"_z", L"A", L"b", L"c.exe", L"_y.exe", L"B.EXE", L"x.exe"));
    EXPECT_FALSE(run.MayChoose(top));
    EXPECT_FALSE(run.MayChoose(Child(run.tree, top, L"c.exe"))) << "a folder that looks like a program";
    const HTREEITEM empty = Child(run.tree, top, L"b");
    Open(run.tree, empty);
    EXPECT_THAT(Children(run.tree, empty), IsEmpty());
    EXPECT_EQ(run.ResultOf(Child(run.tree, top, L"x.exe")), root + L"x.exe");
}

TEST_F(ChooserTest, AFolderIsChosenWithItsBackslash) {
    const std::wstring names[] = {L"日本語",          L"Ελλάδα", L"\u05E2\u05D1\u05E8\u05D9\u05EA",
                                  L"\U0001F4F0 news", L"a & b",  L"DUMMY"};
    folder.Write(L"file", "");
    for (const std::wstring& name : names) {
        MakeFolder(name);
        MakeFolder(name + L"\\in");
        ChooserRun run(nullptr);
        EXPECT_FALSE(Child(run.Tree(), Walk(run.Tree(), root), L"file"));
        EXPECT_EQ(run.ResultOf(Walk(run.tree, root + name + L"\\in")), root + name + L"\\in\\");
    }
    ChooserRun run(nullptr);
    EXPECT_EQ(run.ResultOf(NextOf(run.Tree(), nullptr, TVGN_ROOT)), L"\\");
}

TEST_F(ChooserTest, AFolderIsReadAnewEachTimeItIsOpened) {
    MakeFolder(L"old");
    MakeFolder(L"gone");
    ChooserRun run(nullptr);
    const HTREEITEM top = Walk(run.Tree(), root);
    for (int i = 0; i < 2; ++i) {
        EXPECT_THAT(Children(run.tree, top), ElementsAre(L"DUMMY"));
        Open(run.tree, top);
        EXPECT_THAT(Children(run.tree, top), ElementsAre(L"gone", L"old"));
        Fold(run.tree, top);
    }
    MakeFolder(L"new");
    Open(run.tree, top);
    EXPECT_THAT(Children(run.tree, top), ElementsAre(L"gone", L"new", L"old"));
    RemoveFolder(L"gone");
    const HTREEITEM gone = Child(run.tree, top, L"gone");
    Open(run.tree, gone);
    EXPECT_THAT(Children(run.tree, gone), IsEmpty()) << "a folder that cannot be listed";
    EXPECT_EQ(run.Close(IDCANCEL), 2);
}

TEST_F(ChooserTest, PathsUpToTheBuffersEnd) {
    const std::wstring deep(200 - root.size(), L'd');
    MakeFolder(deep);
    const std::wstring fits = deep + L"\\" + std::wstring(57, L'f'),
                       over = deep + L"\\" + std::wstring(58, L'o');
    MakeFolder(fits);
    MakeFolder(over);
    {
        ChooserRun run(nullptr);
        EXPECT_FALSE(run.MayChoose(Walk(run.Tree(), root + over)));
        SendMessageW(GetParent(run.tree), WM_COMMAND, IDC_CHOOSER_OK, 0);
        EXPECT_FALSE(run.thread.Ended()) << "OK is off: Enter must not press it either";
        Open(run.tree, Walk(run.tree, root + over));
        EXPECT_THAT(Children(run.tree, Walk(run.tree, root + over)), IsEmpty());
        const std::wstring result = run.ResultOf(Walk(run.tree, root + fits));
        EXPECT_EQ(result, root + fits + L"\\");
        EXPECT_EQ(result.size(), 259u);
    }
    RemoveFolder(fits);
    RemoveFolder(over);
}

TEST_F(ChooserTest, WithoutItsImagesItDoesNotOpen) {
    const ChooserRun run(nullptr, GetModuleHandleW(L"kernel32.dll"));
    EXPECT_EQ(run.thread.Result(), 2);
}

}  // namespace
