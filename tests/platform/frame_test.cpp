// The desktop's frame as a window: the real one, with the real panes, moved and turned as a user does it.
#include <gmock/gmock.h>

#include "resources/resource.h"
#include "tests/shell/walk.h"

namespace {

const std::wstring kGroup = L"fj.pda";
constexpr int kManyArticles = 60;

std::wstring LongBody() {
    std::wstring body;
    for (int i = 0; i < 80; ++i) {
        body += L"第 " + std::to_wstring(i) +
                L" 段落。幅の狭い画面では次の行に続く、とても長い段落です。It goes on and on.\r\n";
    }
    return body;
}

RECT PlaceIn(HWND parent, HWND window) {
    RECT area{};
    GetWindowRect(window, &area);
    MapWindowPoints(nullptr, parent, reinterpret_cast<POINT*>(&area), 2);
    return area;
}

RECT Outer(HWND window) {
    RECT area{};
    GetWindowRect(window, &area);
    return area;
}

std::vector<LONG> Edges(const RECT& area) {
    return {area.left, area.top, area.right, area.bottom};
}

// The user's wheel setting, put back with the test.
class WheelLines {
  public:
    WheelLines() { SystemParametersInfoW(SPI_GETWHEELSCROLLLINES, 0, &before_, 0); }
    ~WheelLines() { Set(before_); }
    static void Set(UINT lines) { SystemParametersInfoW(SPI_SETWHEELSCROLLLINES, lines, nullptr, 0); }

  private:
    UINT before_ = 3;
};

class FrameTest : public WalkTest {
  protected:
    void SetUp() override {
        WalkTest::SetUp();
        std::vector<Article> articles(kManyArticles);
        articles[1].text = ArticleText(2, LongBody());
        MakeGroup(kGroup, articles);
        for (int i = 0; i < 40; ++i)
            MakeGroup(L"fj.other." + std::to_wstring(i), {});
    }

    HWND Window() const { return frame->mainWindow; }

    void Size(int width, int height) {
        SetWindowPos(Window(), nullptr, 0, 0, width, height, SWP_NOMOVE | SWP_NOZORDER);
        Pump();
        UpdateWindow(Subjects().window);
        UpdateWindow(Reader().window);
    }

    // Leads to a view on the usual way; the article is the one with the long text.
    void GoTo(ViewKind view) {
        if (view == ViewKind::kDrafts) Command(IDC_DRAFTS);
        if (view == ViewKind::kSubject || view == ViewKind::kArticle) OpenGroup(0);
        if (view == ViewKind::kArticle) {
            Tap(WM_LBUTTONDOWN, 1);
            Key(VK_RETURN);
        }
        ASSERT_EQ(frame->currentView, view);
    }

    // To the window with the focus, as the mouse's driver does.
    void Turn(int delta) {
        const auto turn = static_cast<WPARAM>(static_cast<DWORD>(delta) << 16);
        SendMessageW(GetFocus(), WM_MOUSEWHEEL, turn, 0);
        Pump();
    }

    int Top() const {
        if (frame->currentView == ViewKind::kArticle) return static_cast<int>(Reader().scroll.top);
        if (frame->currentView == ViewKind::kSubject) return static_cast<int>(Subjects().scroll.top);
        return static_cast<int>(SendMessageW(frame->groupView->list, LVM_GETTOPINDEX, 0, 0));
    }

    static void WritePlace(const std::vector<LONG>& words) {
        RegistryKeyOwner key;
        ASSERT_TRUE(OpenKey(HKEY_CURRENT_USER, kProgramKey, key));
        RegSetValueExW(key.Get(), L"WindowPlace", 0, REG_BINARY, reinterpret_cast<const BYTE*>(words.data()),
                       static_cast<DWORD>(words.size() * sizeof(LONG)));
    }

    WheelLines wheel;
};

TEST_F(FrameTest, IsAWindowOfTheDevicesSizeAtFirst) {
    Open();
    const auto style = static_cast<DWORD>(GetWindowLongW(Window(), GWL_STYLE));
    EXPECT_EQ(style & WS_OVERLAPPEDWINDOW, static_cast<DWORD>(WS_OVERLAPPEDWINDOW));
    wchar_t title[20] = L"";
    GetWindowTextW(Window(), title, 20);
    EXPECT_STREQ(title, L"Pelnor");
    RECT client{};
    GetClientRect(Window(), &client);
    EXPECT_THAT(Edges(client), testing::ElementsAre(0, 0, 240, 320));
    for (const WPARAM icon : {ICON_SMALL, ICON_BIG})
        EXPECT_NE(SendMessageW(Window(), WM_GETICON, icon, 0), 0) << "icon " << icon;
    // The border's cursor must not stay over a pane, whose class has none.
    const HCURSOR arrow = LoadCursorW(nullptr, IDC_ARROW), border = LoadCursorW(nullptr, IDC_SIZEWE);
    SetCursor(border);
    SendMessageW(Reader().window, WM_SETCURSOR, reinterpret_cast<WPARAM>(Reader().window),
                 MAKELPARAM(HTCLIENT, WM_MOUSEMOVE));
    EXPECT_EQ(GetCursor(), arrow);
}

TEST_F(FrameTest, PanesAndBarsFollowItsSize) {
    Open();
    const HWND panes[] = {frame->groupView->list, Subjects().window, Reader().window, frame->draftTree->tree};
    for (const SIZE size : {SIZE{800, 600}, SIZE{240, 320}, SIZE{20, 20}}) {
        SCOPED_TRACE(size.cx);
        Size(size.cx, size.cy);
        RECT client{};
        GetClientRect(Window(), &client);
        EXPECT_GE(client.right, 150) << "a button is cut off";
        for (const HWND bar : {frame->groupBar, frame->subjectBar, frame->articleBar}) {
            const RECT area = PlaceIn(Window(), bar);
            EXPECT_THAT(Edges(area), testing::ElementsAre(0, area.top, client.right, client.bottom));
            for (const HWND pane : panes)
                EXPECT_THAT(Edges(PlaceIn(Window(), pane)),
                            testing::ElementsAre(0, 0, client.right, area.top));
            EXPECT_GE(area.top, 100) << "no room to read";
        }
    }
}

TEST_F(FrameTest, ComesBackFromTheTaskBarAsItWas) {
    for (const ViewKind view :
         {ViewKind::kGroup, ViewKind::kSubject, ViewKind::kArticle, ViewKind::kDrafts}) {
        SCOPED_TRACE(static_cast<int>(view));
        Open();
        GoTo(view);
        const HWND focus = GetFocus();
        const int top = Top();
        ASSERT_TRUE(IsChild(Window(), focus));
        ShowWindow(Window(), SW_MINIMIZE);
        Pump();
        ASSERT_TRUE(IsIconic(Window()));
        if (view == ViewKind::kGroup) {
            SendMessageW(Window(), kWakeMessage, 0, 0);  // a second start
        } else {
            ShowWindow(Window(), SW_RESTORE);
        }
        Pump();
        EXPECT_FALSE(IsIconic(Window()));
        EXPECT_EQ(GetFocus(), focus);
        EXPECT_EQ(Top(), top);
        Close();
    }
}

TEST_F(FrameTest, TheWheelScrolls) {
    struct Row {
        const char* sentence;
        UINT lines;
        std::vector<int> turns;
        int top;  // below 0: counted from the last one
    };
    const Row rows[] = {
        {"one notch", 3, {-120}, 3},
        {"forth and back", 3, {-120, 120}, 0},
        {"the user's own number of lines", 1, {-120, -120}, 2},
        {"a trackpad's parts add up", 1, {-50, -50, -50, -50, -50}, 2},
        {"each part scrolls what it is worth", 4, {-30, -30}, 2},
        {"a finger that turns back does not owe the rest", 1, {-120, -110, 60, 60}, 0},
        {"not beyond the start", 3, {120}, 0},
        {"nor beyond the end", 50, {-120, -120, -120, -120, -120, -120, -120, -120}, -1},
    };
    for (const ViewKind view : {ViewKind::kGroup, ViewKind::kSubject, ViewKind::kArticle}) {
        Open();
        GoTo(view);
        Reader().scroll.kind =
            ScrollKind::kTextGoingOn;  // the wheel does not turn the page to another article
        for (const Row& row : rows) {
            SCOPED_TRACE(testing::Message() << "view " << static_cast<int>(view) << ": " << row.sentence);
            WheelLines::Set(120);
            while (Top() > 0)
                Turn(120);
            WheelLines::Set(row.lines);
            for (const int turn : row.turns)
                Turn(turn);
            const uint32_t total = view == ViewKind::kGroup     ? 41
                                   : view == ViewKind::kSubject ? Subjects().scroll.total
                                                                : Reader().layout.lineCount;
            const uint32_t page =
                view == ViewKind::kGroup
                    ? static_cast<uint32_t>(SendMessageW(frame->groupView->list, LVM_GETCOUNTPERPAGE, 0, 0))
                : view == ViewKind::kSubject ? Subjects().scroll.page
                                             : 2 * Reader().scroll.page;  // a blank one is behind the text
            EXPECT_EQ(Top(), row.top < 0 ? static_cast<int>(total - page) : row.top);
            EXPECT_EQ(frame->currentView, view);
        }
        Close();
    }
}

TEST_F(FrameTest, TheWheelTurnsPagesWhereTheUserWantsThat) {
    Open();
    GoTo(ViewKind::kArticle);
    Reader().scroll.kind = ScrollKind::kTextGoingOn;
    WheelLines::Set(WHEEL_PAGESCROLL);
    Turn(-120);
    EXPECT_EQ(Top(), static_cast<int>(Reader().scroll.page) - 2);
    Turn(120);
    EXPECT_EQ(Top(), 0);
    for (int i = 0; i < 50; ++i)
        Turn(-120);
    EXPECT_TRUE(EndIsVisible(Reader().scroll));
    EXPECT_EQ(CursorRow(Subjects().scroll), 1u) << "the wheel opened the next article";
}

TEST_F(FrameTest, RemembersItsPlace) {
    struct Row {
        const char* sentence;
        int show;  // how it is left
    };
    const Row rows[] = {{"as it was left", SW_SHOWNORMAL},
                        {"maximised", SW_SHOWMAXIMIZED},
                        {"from the task bar", SW_MINIMIZE}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.sentence);
        Open();
        ShowWindow(Window(), SW_SHOWNORMAL);
        MoveWindow(Window(), 130, 70, 500, 400, TRUE);
        ShowWindow(Window(), row.show);
        Close();
        Open();
        EXPECT_EQ(IsZoomed(Window()) != 0, row.show == SW_SHOWMAXIMIZED);
        EXPECT_FALSE(IsIconic(Window()));
        ShowWindow(Window(), SW_SHOWNORMAL);
        EXPECT_THAT(Edges(Outer(Window())), testing::ElementsAre(130, 70, 630, 470));
        Close();
    }
}

TEST_F(FrameTest, OpensWhereItCanBeSeen) {
    Open();
    const std::vector<LONG> firstSize = {Outer(Window()).right - Outer(Window()).left,
                                         Outer(Window()).bottom - Outer(Window()).top};
    Close();
    RECT desk{};
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &desk, 0);
    struct Row {
        const char* sentence;
        std::vector<LONG> stored, place;  // no place: the size of a first start
    };
    const LONG right = desk.right, bottom = desk.bottom;
    const Row rows[] = {
        {"half out of sight, as the user put it", {-150, 50, 250, 350, 0}, {-150, 50, 250, 350}},
        {"on a monitor at the right that is gone",
         {right + 300, 40, right + 700, 340, 0},
         {right - 400, 40, right, 340}},
        {"on one below", {40, bottom + 200, 440, bottom + 500, 0}, {40, bottom - 300, 440, bottom}},
        {"the caption above the edge", {40, -200, 440, 100, 0}, {40, 0, 440, 300}},
        {"the menu bar below the edge",
         {40, bottom - 150, 440, bottom + 150, 0},
         {40, bottom - 300, 440, bottom}},
        {"larger than the monitor that is left", {-9000, 0, -3000, 5000, 0}, {0, 0, right, bottom}},
        {"edges that no screen has", {-0x7FFFFFFF, 0, 0x7FFFFFFF, 400, 0}, {}},
        {"a place without a size", {100, 100, 100, 100, 0}, {}},
        {"a value cut short", {100, 100, 500, 500}, {}},
        {"a value of something else", {100, 100, 500, 500, 0, 1}, {}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.sentence);
        WritePlace(row.stored);
        Open();
        const RECT place = Outer(Window());
        if (row.place.empty()) {
            EXPECT_THAT(firstSize, testing::ElementsAre(place.right - place.left, place.bottom - place.top));
        } else {
            EXPECT_THAT(Edges(place), testing::ElementsAreArray(row.place));
        }
        Close();
    }
}

INT_PTR CALLBACK NoProcedure(HWND, UINT, WPARAM, LPARAM) {
    return TRUE;
}

TEST_F(FrameTest, DialogsOpenOverIt) {
    Open();
    RECT desk{};
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &desk, 0);
    struct Row {
        const char* sentence;
        int left, top;  // of the frame
        bool within;    // the frame's middle is too near to an edge
    };
    const Row rows[] = {{"where the frame is", 60, 40, false},
                        {"near an edge they stay in sight", desk.right - 60, desk.bottom - 60, true}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.sentence);
        SetWindowPos(Window(), nullptr, row.left, row.top, 320, 400, SWP_NOZORDER);
        const RECT ground = Outer(Window());
        HWND dialog = CreateModelessDialog(frame->instance, IDD_CATCH_UP, Window(), NoProcedure, nullptr);
        ShowWindow(dialog, SW_SHOW);
        RECT place = Outer(dialog);
        EXPECT_NEAR(
            (place.left + place.right) / 2,
            row.within ? desk.right - (place.right - place.left) / 2 : (ground.left + ground.right) / 2, 1);
        EXPECT_NEAR(
            (place.top + place.bottom) / 2,
            row.within ? desk.bottom - (place.bottom - place.top) / 2 : (ground.top + ground.bottom) / 2, 1);
        SetWindowPos(dialog, nullptr, 5, 6, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
        SetActiveWindow(Window());
        SetActiveWindow(dialog);
        place = Outer(dialog);
        EXPECT_THAT(Edges(place), testing::ElementsAre(5, 6, place.right, place.bottom)) << "once only";
        DestroyWindow(dialog);
    }
}

TEST_F(FrameTest, EveryWayOfClosingEndsTheProgram) {
    struct Row {
        const char* sentence;
        void (*close)(HWND window, HWND focus);
    };
    const Row rows[] = {
        {"the close button", [](HWND window, HWND) { PostMessageW(window, WM_SYSCOMMAND, SC_CLOSE, 0); }},
        {"Alt+F4 in a pane",
         [](HWND, HWND focus) { PostMessageW(focus, WM_SYSKEYDOWN, VK_F4, (1 << 29) | 1); }},
        {"the user logs off", [](HWND window, HWND) { SendMessageW(window, WM_ENDSESSION, TRUE, 0); }},
        {"the menu", [](HWND window, HWND) { PostMessageW(window, WM_COMMAND, IDC_EXIT, 0); }},
    };
    uint32_t cursor = 3;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.sentence);
        Open();
        GoTo(ViewKind::kSubject);
        Tap(WM_LBUTTONDOWN, static_cast<int>(++cursor));
        SendMessageW(Window(), WM_ENDSESSION, FALSE, 0);  // called off by another program
        ASSERT_TRUE(IsWindow(Window()));
        row.close(Window(), GetFocus());
        Pump();
        ASSERT_FALSE(IsWindow(Window()));
        EXPECT_TRUE(frame->ended);
        EXPECT_EQ(WordAt(kGroup, 20), cursor) << "the position that the view was left at";
    }
    EXPECT_THAT(boxes, testing::IsEmpty());
}

TEST_F(FrameTest, TheReaderKeepsThePlaceWhileTheWindowChanges) {
    Open();
    Size(500, 400);
    GoTo(ViewKind::kArticle);
    for (int i = 0; i < 3; ++i)
        Key(VK_NEXT);
    const uint32_t top = Reader().scroll.top;
    const wchar_t* place = Reader().layout.lines[top].text;
    ASSERT_GT(top, 20u);
    for (int width = 480; width >= 240; width -= 20) {
        Size(width, 300);
        const DisplayLine& line = Reader().layout.lines[Reader().scroll.top];
        EXPECT_TRUE(line.text <= place && place <= line.text + line.length) << width << " pixels wide";
    }
    EXPECT_GT(Reader().scroll.top, top + 5) << "the lines did not break anew";
    EXPECT_EQ(GetScrollPos(Reader().scrollBar, SB_CTL), static_cast<int>(Reader().scroll.top));
    Size(500, 400);
    EXPECT_EQ(Reader().scroll.top, top) << "the place has crept";
    Key(VK_ESCAPE);
    Key(VK_DOWN);
    Key(VK_RETURN);
    Size(300, 300);
    EXPECT_EQ(Reader().scroll.top, 0u) << "another article begins at its start";
}

TEST_F(FrameTest, TheListKeepsItsRowsWhileTheWindowChanges) {
    Open();
    Size(240, 320);
    GoTo(ViewKind::kArticle);
    Key(VK_TAB);
    Key(VK_ESCAPE);
    for (int i = 0; i < 10; ++i)
        Key(VK_DOWN);
    const uint32_t row = CursorRow(Subjects().scroll);
    for (const int height : {700, 200, 320}) {
        SCOPED_TRACE(height);
        Size(300, height);
        EXPECT_EQ(Subjects().scroll.total, static_cast<uint32_t>(kManyArticles)) << "what was read left";
        EXPECT_EQ(CursorRow(Subjects().scroll), row);
        ASSERT_LT(Subjects().scroll.cursor, Subjects().list.rowsInPage);
        EXPECT_EQ(Subjects().list.page[Subjects().scroll.cursor].articleNumber, row + 1);
        EXPECT_EQ(Subjects().list.currentInPage, Subjects().scroll.cursor);
    }
    Key(VK_RETURN);
    Size(400, 600);
    Key(VK_TAB);
    EXPECT_EQ(CursorRow(Subjects().scroll), row + 1) << "an article was passed over";
}

}  // namespace
