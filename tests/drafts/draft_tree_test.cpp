// The drafts pane over a folder of draft files.
#include "drafts/draft_tree.h"

#include <gmock/gmock.h>

#include "tests/drafts/tree_walk.h"
#include "tests/support/temp_folder.h"
#include "text/messages.h"

namespace {

using testing::ElementsAre;

class DraftTreeTest : public testing::Test {
  protected:
    DraftTreeTest() {
        SetResourceInstance(GetModuleHandleW(nullptr));
        InitCommonControls();
        parent_ =
            CreateWindowExW(0, L"Static", L"", WS_POPUP, 0, 0, 200, 200, nullptr, nullptr, nullptr, nullptr);
        EXPECT_TRUE(CreateDraftTree(drafts, parent_, {0, 0, 200, 200}, 1, GetModuleHandleW(nullptr)));
    }
    ~DraftTreeTest() override { DestroyWindow(parent_); }

    // "folder/newsgroups/subject" from top to bottom.
    std::vector<std::wstring> Fill(const std::wstring& path) {
        std::vector<std::wstring> lines;
        EXPECT_TRUE(FillDraftTree(drafts, path.c_str()));
        EXPECT_THAT(Children(drafts.tree, TVI_ROOT), ElementsAre(L"送信待ち", L"草稿", L"送信済"));
        for (const HTREEITEM root : drafts.roots) {
            for (HTREEITEM node = NextOf(drafts.tree, root, TVGN_CHILD); node;
                 node = NextOf(drafts.tree, node, TVGN_NEXT)) {
                for (const std::wstring& subject : Children(drafts.tree, node))
                    lines.push_back(TextOf(drafts.tree, root) + L"/" + TextOf(drafts.tree, node) + L"/" +
                                    subject);
            }
        }
        return lines;
    }

    TempFolder folder;
    DraftTree drafts;

  private:
    HWND parent_ = nullptr;
};

TEST_F(DraftTreeTest, EachDraftHasItsPlace) {
    const struct {
        const char* why;
        const wchar_t* name;
        std::string bytes;
        std::vector<std::wstring> lines;
    } rows[] = {
        {"waiting",
         L"out1.txt",
         "Newsgroup: fj.test\r\nSubject: \x93\xFA\x96{\r\n\r\nText\r\n",
         {L"送信待ち/fj.test/日本"}},
        {"unfinished", L"note.txt", "Newsgroup: fj.a\r\nSubject: a\r\n\r\n", {L"草稿/fj.a/a"}},
        {"a capital letter", L"Out.txt", "Newsgroup: fj.a\r\nSubject: a\r\n\r\n", {L"草稿/fj.a/a"}},
        {"no newsgroups", L"a.txt", "Subject: a\r\n\r\nNewsgroup: body\r\n", {L"草稿/(none)/a"}},
        {"no subject", L"a.txt", "Newsgroup: fj.a\r\n\r\nSubject: body\r\n", {L"草稿/fj.a/(none)"}},
        {"the head's other newsgroups line",
         L"a.txt",
         "Newsgroups: fj.a\r\nSubject: a\r\n\r\n",
         {L"草稿/(none)/a"}},
        {"folded",
         L"a.txt",
         "Newsgroup: fj.a,\r\n fj.b\r\nSubject: one\r\n\t two\r\n\r\n",
         {L"草稿/fj.a,fj.b/onetwo"}},
        {"no empty line", L"a.txt", "Newsgroup: fj.a\r\nSubject: a\r\n", {L"草稿/fj.a/a"}},
        {"an overlong line in the head",
         L"a.txt",
         "X: " + std::string(1030, 'x') + "\r\nSubject: a\r\n\r\n",
         {}},
        {"an overlong line below it",
         L"a.txt",
         "Subject: a\r\n\r\n" + std::string(3000, 'x'),
         {L"草稿/(none)/a"}},
        {"no draft", L"a.dat", "Subject: a\r\n\r\n", {}},
    };
    for (const auto& row : rows) {
        folder.Write(row.name, row.bytes);
        EXPECT_EQ(Fill(folder.Path()), row.lines) << row.why;
        DeleteFileW(folder.FilePath(row.name).c_str());
    }
}

TEST_F(DraftTreeTest, DraftsOfANewsgroupShareItsNode) {
    EXPECT_THAT(Fill(folder.FilePath(L"missing\\")), ElementsAre());
    folder.Write(L"a.txt", "Newsgroup: fj.b\r\nSubject: 1\r\n\r\n");
    folder.Write(L"b.txt", "Newsgroup: fj.a\r\nSubject: 2\r\n\r\n");
    folder.Write(L"c.txt", "Newsgroup: fj.b\r\nSubject: 3\r\n\r\n");
    folder.Write(L"d.txt", "Newsgroup: FJ.B\r\nSubject: 4\r\n\r\n");
    folder.Write(L"sent.txt", "Newsgroup: fj.b\r\nSubject: 5\r\n\r\n");
    CreateDirectoryW(folder.FilePath(L"e.txt").c_str(), nullptr);
    const HANDLE locked =
        CreateFileW(folder.FilePath(L"f.txt").c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr);
    for (int i = 0; i < 2; ++i) {
        std::vector<std::wstring> lines = Fill(folder.Path());
        std::sort(lines.begin(), lines.end());
        EXPECT_THAT(lines, ElementsAre(L"草稿/FJ.B/4", L"草稿/fj.a/2", L"草稿/fj.b/1", L"草稿/fj.b/3",
                                       L"送信済/fj.b/5"));
        EXPECT_EQ(Children(drafts.tree, drafts.roots[kUnfinishedDrafts]).size(), 3u);
        EXPECT_EQ(Children(drafts.tree, drafts.roots[kUnfinishedDrafts])[0], L"fj.a");
    }
    CloseHandle(locked);
}

}  // namespace
