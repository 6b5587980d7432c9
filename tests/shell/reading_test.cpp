// An evening's reading, from the list of groups to the last article and back; and what is told when the files
// are not what they were.
#include <gmock/gmock.h>

#include "dialup/dialup.h"
#include "resources/resource.h"
#include "settings/view_options.h"
#include "tests/shell/walk.h"

namespace {

using testing::_;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

const std::wstring kGroup = L"fj.pda";
constexpr int kUnreadColumn = 1;

class ReadingTest : public WalkTest {
  protected:
    // 45 articles: some read, some of either priority.
    void MakeGroups() {
        std::vector<Article> articles;
        for (uint32_t i = 0; i < 45; ++i)
            articles.push_back({(i % 7 == 3 ? 1u : 0u) | (i % 5 == 1 ? 4u : i % 6 == 2 ? 2u : 0u)});
        MakeGroup(kGroup, articles);
        MakeGroup(L"fj.empty", {});
        MakeGroup(L"fj.small", {{0}, {1}, {0}});
    }

    // The record numbers that the view options let through, in the order in which they are due. Made when the
    // list is: a row that is read later stays until then.
    void MakeRows() {
        const std::vector<uint32_t> flags = FlagsOf(kGroup);
        const uint32_t level = frame->priorityLevel;
        rows.clear();
        for (const uint32_t priority : {4u, 0u, 2u}) {
            const bool shown =
                priority == 4 || (priority == 0 && level != 2) || (priority == 2 && level == 1);
            for (uint32_t i = 0; shown && i < flags.size(); ++i) {
                if ((flags[i] & 6) == priority && (frame->viewReadArticles || !(flags[i] & 1)))
                    rows.push_back(i);
            }
        }
    }

    // The screen, the memory and the disk say the same.
    void ExpectConsistent() const {
        const ArticleList& list = Subjects().list;
        const std::vector<uint32_t> flags = FlagsOf(kGroup);
        EXPECT_EQ(WordAt(kGroup, 88), Unread(kGroup));
        EXPECT_EQ(list.store.header.unreadCount, Unread(kGroup));
        EXPECT_EQ(WordAt(kGroup, 16), 45u);
        EXPECT_EQ(Subjects().scroll.total, rows.size());
        const uint32_t top = Subjects().scroll.top, page = Subjects().scroll.page;
        ASSERT_EQ(list.rowsInPage, std::min<std::size_t>(page, rows.size() - top));
        EXPECT_LT(Subjects().scroll.cursor, std::max(list.rowsInPage, 1u));
        EXPECT_EQ(Subjects().scroll.cursor, list.currentInPage) << "the record that the list selects";
        for (uint32_t i = 0; i < list.rowsInPage; ++i) {
            EXPECT_EQ(list.page[i].articleNumber, rows[top + i] + 1) << "row " << top + i;
            EXPECT_EQ(list.page[i].flags, flags[rows[top + i]]) << "row " << top + i;
        }
    }

    uint32_t Row() const { return CursorRow(Subjects().scroll); }

    // Presses until the key moves nothing any more.
    void PressToTheEnd(int key) {
        for (uint32_t row = Row() + 1, top = 0, i = 0; i < 200; ++i) {
            if (row == Row() && top == Subjects().scroll.top) return;
            row = Row();
            top = Subjects().scroll.top;
            Key(key);
            ExpectConsistent();
        }
        FAIL() << "no end";
    }

    std::wstring Shown() const { return Reader().text ? Reader().text.get() : L""; }

    void ExpectArticle(uint32_t row) const {
        const uint32_t number = rows.at(row) + 1;
        EXPECT_EQ(frame->currentView, ViewKind::kArticle);
        EXPECT_TRUE(Shown() == ArticleText(number, SomeBody(number))) << "article " << number;
        EXPECT_EQ(FlagsOf(kGroup).at(rows[row]) & 1, 1u);
        EXPECT_EQ(Row(), row);
        ExpectConsistent();
    }

    // In a frame that another program has enabled.
    void EnterFirstGroup() const {
        const HWND list = frame->groupView->list;
        LVITEMW item = {};
        item.stateMask = item.state = LVIS_SELECTED;
        NMHDR enter = {list, IDW_GROUP_VIEW, static_cast<UINT>(NM_RETURN)};
        SendMessageW(frame->mainWindow, kHangUpMessage, 0, 0);
        SendMessageW(list, LVM_SETITEMSTATE, 0, reinterpret_cast<LPARAM>(&item));
        SendMessageW(frame->mainWindow, WM_NOTIFY, IDW_GROUP_VIEW, reinterpret_cast<LPARAM>(&enter));
    }

    bool IsChecked(HMENU menu, UINT id) const { return GetMenuState(menu, id, MF_BYCOMMAND) & MF_CHECKED; }

    std::vector<uint32_t> rows;
};

TEST_F(ReadingTest, TheListOfSubjects) {
    MakeGroups();
    Open();
    EXPECT_EQ(Cell(0, kUnreadColumn), std::to_wstring(Unread(kGroup)));
    OpenGroup(0);
    ASSERT_EQ(frame->currentView, ViewKind::kSubject);
    EXPECT_EQ(GetFocus(), Subjects().window);
    MakeRows();
    ExpectConsistent();
    for (const bool byLine : {false, true}) {
        SCOPED_TRACE(byLine);
        Subjects().lineScroll = byLine;
        for (const int key : {VK_NEXT, VK_PRIOR, VK_RIGHT, VK_LEFT, VK_DOWN, VK_UP}) {
            PressToTheEnd(key);
            const bool forward = key == VK_NEXT || key == VK_RIGHT || key == VK_DOWN;
            const uint32_t last = static_cast<uint32_t>(rows.size()) - Subjects().scroll.page;
            EXPECT_EQ(Subjects().scroll.top, forward ? last : 0);
            if (key == VK_DOWN) EXPECT_EQ(Row(), rows.size() - 1);
            if (key == VK_UP) EXPECT_EQ(Row(), 0u);
            EXPECT_EQ(frame->currentView, ViewKind::kSubject) << "past the end";
        }
    }
    for (const int row : {2, 0, 4}) {
        Tap(WM_LBUTTONDOWN, row);
        EXPECT_EQ(Row(), static_cast<uint32_t>(row));
        for (const uint32_t read : {1u, 0u, 1u}) {
            Command(IDC_TOGGLE_READ);
            EXPECT_EQ(FlagsOf(kGroup)[rows[Row()]] & 1, read);
            ExpectConsistent();
        }
    }
    Tap(WM_LBUTTONDOWN, static_cast<int>(Subjects().scroll.page) + 1);
    EXPECT_EQ(Row(), 4u) << "a tap beside the rows";
    Key(VK_ESCAPE);
    EXPECT_EQ(frame->currentView, ViewKind::kGroup);
    EXPECT_EQ(GetFocus(), frame->groupView->list);
    EXPECT_EQ(Cell(0, kUnreadColumn), std::to_wstring(Unread(kGroup)));
    EXPECT_EQ(WordAt(kGroup, 20), 4u) << "the position that the view was left at";
    const std::string left = folder.Read(kGroup + L".idx");
    Command(IDC_TOGGLE_READ);
    EXPECT_TRUE(folder.Read(kGroup + L".idx") == left) << "a mark of a group that is not open";
    OpenGroup(1);
    for (const int key : {VK_RETURN, VK_SPACE, VK_DOWN, VK_UP, VK_NEXT, VK_PRIOR})
        Key(key);
    Command(IDC_TOGGLE_READ);
    EXPECT_EQ(frame->currentView, ViewKind::kSubject) << "an empty group";
    EXPECT_THAT(boxes, IsEmpty());
}

TEST_F(ReadingTest, TheViewOptions) {
    MakeGroups();
    Open();
    EXPECT_EQ(frame->priorityLevel, 1u) << "everything at first";
    OpenGroup(0);
    MakeRows();
    Tap(WM_LBUTTONDOWN, 3);
    Command(IDC_TOGGLE_READ);
    struct Row {
        UINT command;
        uint32_t showRead, level;
    };
    const Row steps[] = {{IDC_LEVEL_HIGH, 0, 2},   {IDC_VIEW_READ, 1, 2}, {IDC_LEVEL_NORMAL, 1, 0},
                         {IDC_LEVEL_LOW, 1, 1},    {IDC_VIEW_READ, 0, 1}, {IDC_LEVEL_NORMAL, 0, 0},
                         {IDC_LEVEL_NORMAL, 0, 0}, {IDC_VIEW_READ, 1, 0}};
    for (const Row& step : steps) {
        SCOPED_TRACE(testing::Message()
                     << step.command << ", read " << step.showRead << ", level " << step.level);
        Command(step.command);
        MakeRows();
        ExpectConsistent();
        EXPECT_EQ(this->Row(), 0u);
        EXPECT_EQ(ReadViewReadArticle(), step.showRead);
        EXPECT_EQ(ReadPriorityViewLevel(), step.level);
        EXPECT_EQ(IsChecked(frame->subjectPopup, IDC_VIEW_READ), step.showRead == 1);
        EXPECT_EQ(IsChecked(frame->subjectPopup, IDC_LEVEL_HIGH), step.level == 2);
        EXPECT_EQ(IsChecked(frame->subjectPopup, IDC_LEVEL_NORMAL), step.level == 0);
        EXPECT_EQ(IsChecked(frame->subjectPopup, IDC_LEVEL_LOW), step.level == 1);
    }
    Close();
    Open();
    OpenGroup(0);
    MakeRows();
    EXPECT_EQ(frame->viewReadArticles, 1u) << "after the next start";
    EXPECT_EQ(frame->priorityLevel, 0u);
    ExpectConsistent();
}

TEST_F(ReadingTest, TheColumnsKeepTheirWidths) {
    // A list view has a header control, too.
    const auto send = [&](bool groups, UINT message, std::size_t column, HDITEMW& item) {
        const LRESULT header = SendMessageW(frame->groupView->list, LVM_GETHEADER, 0, 0);
        return SendMessageW(groups ? reinterpret_cast<HWND>(header) : Subjects().header, message, column,
                            reinterpret_cast<LPARAM>(&item));
    };
    const auto columns = [&](bool groups) {
        std::vector<std::pair<std::wstring, int>> found;
        wchar_t text[20] = {};
        HDITEMW item = {};
        item.mask = HDI_TEXT | HDI_WIDTH;
        item.pszText = text;
        item.cchTextMax = 20;
        while (send(groups, HDM_GETITEMW, found.size(), item))
            found.push_back({text, item.cxy});
        return found;
    };
    Open();
    EXPECT_THAT(columns(true), ElementsAre(Pair(L"ﾆｭｰｽｸﾞﾙｰﾌﾟ", 100), Pair(L"未読", 40), Pair(L"記事数", 40),
                                           Pair(L"状態", 150), Pair(L"現在", 60), Pair(L"最大", 60)));
    EXPECT_THAT(columns(false),
                ElementsAre(Pair(L" ", 25), Pair(L"日付", 40), Pair(L"差出人", 160), Pair(L"題名", 400)));
    HDITEMW wider = {};
    wider.mask = HDI_WIDTH;
    for (int i = 0; i < 6; ++i) {
        wider.cxy = 71 + i;
        for (const bool groups : {true, false})
            send(groups, HDM_SETITEMW, static_cast<std::size_t>(i), wider);
    }
    Close();
    RegistryKeyOwner groups, subjects;
    ASSERT_TRUE(OpenViewSubkey(kGroupViewSubkey, groups) && OpenViewSubkey(kSubjectViewSubkey, subjects));
    ASSERT_TRUE(WriteText(groups, L"ureadWidth", L"wide") && WriteText(subjects, L"fromWidth", L"wide"));
    Open();
    EXPECT_THAT(columns(true),
                ElementsAre(Pair(_, 71), Pair(_, 40), Pair(_, 73), Pair(_, 74), Pair(_, 75), Pair(_, 76)));
    EXPECT_THAT(columns(false), ElementsAre(Pair(_, 71), Pair(_, 72), Pair(_, 160), Pair(_, 74)));
}

TEST_F(ReadingTest, FromArticleToArticle) {
    MakeGroups();
    Open();
    OpenGroup(0);
    MakeRows();
    Tap(WM_LBUTTONDBLCLK, 3);
    ExpectArticle(3);
    EXPECT_EQ(GetFocus(), Reader().window);
    Key(VK_ESCAPE);
    EXPECT_EQ(frame->currentView, ViewKind::kSubject);
    Key(VK_SPACE);
    ExpectArticle(3);
    const uint32_t hidden = Reader().layout.headerLines;
    Command(IDC_SHOW_HEADER);
    EXPECT_GT(Reader().layout.headerLines, hidden);
    EXPECT_EQ(ReadShowArticleHeader(), 1u);
    EXPECT_TRUE(IsChecked(frame->articlePopup, IDC_SHOW_HEADER));
    Command(IDC_SHOW_HEADER);
    EXPECT_EQ(Reader().layout.headerLines, hidden);
    Command(IDC_BACK_TO_SUBJECTS);
    EXPECT_EQ(Row(), 3u);
    PressToTheEnd(VK_UP);
    Key(VK_RETURN);
    ExpectArticle(0);
    for (uint32_t row = 1; row < rows.size() - 3; ++row) {
        Key(row % 2 ? VK_TAB : VK_RETURN);
        ExpectArticle(row);
    }
    // The rest by paging: each article from its first line on.
    const auto last = static_cast<uint32_t>(rows.size()) - 1;
    for (int i = 0; Row() < last && i < 100; ++i) {
        const uint32_t row = Row(), top = Reader().scroll.top;
        Key(VK_SPACE);
        EXPECT_TRUE(Row() == row ? Reader().scroll.top > top : Reader().scroll.top == 0);
        ExpectArticle(Row());
    }
    const wchar_t* stays = Reader().text.get();
    for (int i = 0; i < 10; ++i)
        Key(i % 2 ? VK_SPACE : VK_TAB);
    EXPECT_EQ(Reader().text.get(), stays) << "nothing is opened behind the last";
    ExpectArticle(last);
    Key(VK_ESCAPE);
    Command(IDC_BACK_TO_GROUPS);
    EXPECT_EQ(Cell(0, kUnreadColumn), L"0");
    Close();
    EXPECT_EQ(WordAt(kGroup, 88), 0u);
    Open();
    EXPECT_EQ(Cell(0, kUnreadColumn), L"0");
    OpenGroup(2);
    EXPECT_EQ(Subjects().scroll.total, 2u) << "another group";
    EXPECT_THAT(boxes, IsEmpty());
}

std::wstring ClipboardText() {
    std::wstring text;
    if (!OpenClipboard(nullptr)) return L"closed";
    const HANDLE block = GetClipboardData(CF_UNICODETEXT);
    if (block) text = static_cast<const wchar_t*>(GlobalLock(block));
    if (block) GlobalUnlock(block);
    CloseClipboard();
    return text;
}

TEST_F(ReadingTest, CopiesTheWholeArticle) {
    MakeGroups();
    Open();
    OpenGroup(0);
    MakeRows();
    Key(VK_RETURN);
    BYTE keys[256] = {}, none[256] = {};
    keys[VK_CONTROL] = 0x80;
    SetKeyboardState(keys);
    Key('C');
    SetKeyboardState(none);
    EXPECT_TRUE(ClipboardText() == Shown());
    Key(VK_TAB);
    const std::wstring second = Shown();
    Command(IDC_COPY);
    EXPECT_TRUE(ClipboardText() == second);
    Key(VK_TAB);
    Key(VK_ESCAPE);
    Command(IDC_COPY, 1);
    EXPECT_TRUE(ClipboardText() == second) << "the key outside of the article view";
}

TEST_F(ReadingTest, FilesThatVanishAreToldAndNotMadeAnew) {
    const Box initFailed = {L"PELNOR", L"インデックスの初期化に失敗しました(2)"};
    const Box switchFailed = {L"PELNOR", L"表示の切り替えに失敗しました(2)。"};
    struct Row {
        const char* sentence;
        std::function<void()> act;
        std::vector<Box> boxes;
    };
    const Row table[] = {
        {"open an article", [this] { Key(VK_RETURN); }, {initFailed}},
        {"toggle a mark", [this] { Command(IDC_TOGGLE_READ); }, {}},
        {"go on to the next page", [this] { Key(VK_NEXT); }, {}},
        {"show the read ones too", [this] { Command(IDC_VIEW_READ); }, {switchFailed}},
        {"show other priorities", [this] { Command(IDC_LEVEL_HIGH); }, {}},
        {"change the keywords", [this] { Command(IDC_KEYWORDS); }, {{L"ｷｰﾜｰﾄﾞ設定", L""}, initFailed}},
        {"leave", [] {}, {}},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.sentence);
        groupList_.clear();
        MakeGroups();
        Open();
        OpenGroup(0);
        boxes.clear();
        EXPECT_TRUE(DeleteFileW(folder.FilePath(kGroup + L".idx").c_str()));
        EXPECT_TRUE(DeleteFileW(folder.FilePath(kGroup + L".log").c_str()));
        row.act();
        EXPECT_EQ(frame->currentView, ViewKind::kSubject);
        Key(VK_ESCAPE);
        EXPECT_EQ(frame->currentView, ViewKind::kGroup);
        EXPECT_EQ(boxes, row.boxes);
        EXPECT_FALSE(folder.Has(kGroup + L".idx") || folder.Has(kGroup + L".log"));
        Close();
    }
    Open();
    EXPECT_EQ(Cell(0, kUnreadColumn), L"0") << "after the next start";
    OpenGroup(2);
    Command(IDC_LEVEL_LOW);
    EXPECT_EQ(Subjects().scroll.total, 2u) << "the other groups";
}

TEST_F(ReadingTest, OddArticlesOpen) {
    struct Row {
        const char* sentence;
        std::wstring text;
    };
    std::wstring formFeeds;
    for (int i = 0; i < 3000; ++i)
        formFeeds += L"\f\r\n";
    const Row table[] = {
        {"a line of 1 MB", ArticleText(1, std::wstring(1 << 20, L'漢') + L"\r\n")},
        {"a form feed at every line", ArticleText(1, formFeeds)},
        {"no head", L"================\r\n"},
        {"no line end", std::wstring(5000, L'>')},
        {"control characters", L"\x01\x02\x1B$B\x7F\r\r\n\n\t\r\n\x0E"},
    };
    std::vector<Article> articles;
    for (const Row& row : table)
        articles.push_back({0, row.text});
    MakeGroup(kGroup, articles);
    SetNumber(L"AutoNextArticle", 0);
    Open();
    OpenGroup(0);
    Key(VK_RETURN);
    for (const Row& row : table) {
        SCOPED_TRACE(row.sentence);
        EXPECT_TRUE(Shown() == row.text);
        for (int i = 0; i < 5; ++i)
            Key(VK_NEXT);
        for (int i = 0; i < 6; ++i)
            Key(VK_PRIOR);
        EXPECT_EQ(Reader().scroll.top, 0u);
        Key(VK_TAB);
    }
    EXPECT_EQ(WordAt(kGroup, 88), 0u);
    EXPECT_THAT(boxes, IsEmpty());
}

TEST_F(ReadingTest, WhateverIsNotYesDeletesNothing) {
    const struct {
        const char* sentence;
        void (*act)(HWND frame, HWND box);
    } ways[] = {
        {"Esc", [](HWND, HWND box) { SendMessageW(box, WM_COMMAND, IDCANCEL, 0); }},
        {"the close button", [](HWND, HWND box) { SendMessageW(box, WM_SYSCOMMAND, SC_CLOSE, 0); }},
        {"a box that cannot stay", [](HWND, HWND box) { DestroyWindow(box); }},
        {"the program is closed", [](HWND window, HWND) { SendMessageW(window, WM_CLOSE, 0, 0); }},
    };
    MakeGroups();
    const size_t articles = FlagsOf(kGroup).size();
    for (const auto& way : ways) {
        SCOPED_TRACE(way.sentence);
        Open();
        boxes.clear();
        onBox = [&](HWND box) {
            EXPECT_FALSE(GetWindow(box, GW_OWNER));
            EXPECT_FALSE(IsWindowEnabled(frame->mainWindow)) << "a group could be opened under the deletion";
            SetForegroundWindow(frame->mainWindow);
            SendMessageW(frame->mainWindow, kWakeMessage, 0, 0);
            EXPECT_EQ(GetForegroundWindow(), box) << "lost behind a frame that answers nothing";
            way.act(frame->mainWindow, box);
            if (frame->ended) answer = IDYES;
        };
        Command(IDC_DELETE_READ);
        EXPECT_EQ(boxes.size(), 1u);
        EXPECT_EQ(FlagsOf(kGroup).size(), articles);
        if (frame->ended) continue;
        EXPECT_TRUE(IsWindowEnabled(frame->mainWindow));
        EXPECT_EQ(GetForegroundWindow(), frame->mainWindow);
        EXPECT_EQ(GetFocus(), frame->groupView->list);
        Close();
    }
}

// Keys come before the paint that lays the article out.
TEST_F(ReadingTest, KeysThatWaitDoNotSkipArticles) {
    MakeGroup(kGroup, {{0, L"Subject: short\r\n\r\nbody\r\n================\r\n"},
                       {0, ArticleText(2, SomeBody(4) + SomeBody(4))},
                       {0}});
    Open();
    OpenGroup(0);
    Key(VK_RETURN);
    for (int i = 0; i < 2; ++i)
        PostMessageW(GetFocus(), WM_KEYDOWN, VK_DOWN, 1);
    Pump();
    EXPECT_TRUE(Shown() == ArticleText(2, SomeBody(4) + SomeBody(4)));
    EXPECT_GT(Reader().scroll.top, 0u);
    EXPECT_EQ(Unread(kGroup), 1u);
}

TEST_F(ReadingTest, WithoutAFontOfItsOwnAViewHasTheSystems) {
    MakeGroups();
    SetNumber(L"FontSizeA", 0xFFFFFFFF);
    SetNumber(L"FontSizeS", 0xFFFFFFFF);
    Open();
    OpenGroup(0);
    EXPECT_TRUE(Subjects().font);
    Key(VK_RETURN);
    EXPECT_TRUE(Reader().font);
}

TEST_F(ReadingTest, TheViewsCanBeToldWhatToShow) {
    MakeGroups();
    MakeGroup(L"fj.last", {{0}});
    Open();
    bool moved = false;
    OpenGroup(2);
    Key(VK_ESCAPE);
    ASSERT_TRUE(SelectNextGroup(*frame->groupView, moved));
    EXPECT_TRUE(moved);
    ASSERT_TRUE(SelectNextGroup(*frame->groupView, moved));
    EXPECT_FALSE(moved) << "behind the last";
    wchar_t name[100];
    uint32_t row = 0;
    ASSERT_TRUE(SelectedGroup(*frame->groupView, name, 100, &row));
    EXPECT_EQ(row, 3u);
    std::wstring text = L"Subject: a\r\n\r\nb\r\n";
    ASSERT_TRUE(SetArticleText(Reader(), text.c_str()));
    text = L"";
    EXPECT_TRUE(Shown() == L"Subject: a\r\n\r\nb\r\n") << "a copy";
}

TEST_F(ReadingTest, DeletionGoesOnPastAGroupThatFails) {
    MakeGroups();
    MakeGroup(L"fj.last", {{1}, {0}, {1}});
    Open();
    ASSERT_TRUE(DeleteFileW(folder.FilePath(L"fj.small.log").c_str()));
    const Box question = {L"Delete read articles", L"既読記事を削除しますか?"};
    const uint32_t unread = Unread(kGroup);
    answer = IDNO;
    Command(IDC_DELETE_READ);
    EXPECT_THAT(boxes, ElementsAre(question));
    EXPECT_EQ(FlagsOf(kGroup).size(), 45u);
    boxes.clear();
    answer = IDYES;
    onBox = [&](HWND) { EnterFirstGroup(); };
    Command(IDC_DELETE_READ);
    EXPECT_EQ(frame->currentView, ViewKind::kGroup) << "opened under the deletion";
    onBox = nullptr;
    EXPECT_THAT(boxes, ElementsAre(question, Box{L"fj.small", L"既読記事の削除に失敗しました(2)"}));
    EXPECT_EQ(FlagsOf(kGroup).size(), unread);
    EXPECT_EQ(WordAt(kGroup, 88), unread);
    EXPECT_EQ(FlagsOf(L"fj.small").size(), 3u);
    EXPECT_TRUE(folder.Read(L"fj.last.log") == Narrow(ArticleText(2, SomeBody(2))));
    EXPECT_EQ(Cell(0, 2), std::to_wstring(unread));
    EXPECT_EQ(Cell(3, 2), L"1");
    OpenGroup(3);
    Key(VK_RETURN);
    EXPECT_TRUE(Shown() == ArticleText(2, SomeBody(2)));
}

}  // namespace
