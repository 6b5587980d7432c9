// The colour page: its bars, the two items' colours, and the sample.
#include "tests/sheet/sheet_run.h"

namespace {

struct Bar {
    int bar, label;
};
constexpr Bar kBars[] = {
    {IDC_RED_BAR, IDC_RED_VALUE}, {IDC_GREEN_BAR, IDC_GREEN_VALUE}, {IDC_BLUE_BAR, IDC_BLUE_VALUE}};

class ColourPageTest : public SheetTest {
  protected:
    // The colour of the bars; the labels must say the same.
    static COLORREF Shown(HWND page) {
        COLORREF colour = 0;
        for (int i = 0; i < 3; ++i) {
            const int position = GetScrollPos(GetDlgItem(page, kBars[i].bar), SB_CTL);
            EXPECT_EQ(TextOf(GetDlgItem(page, kBars[i].label)), std::to_wstring(position));
            colour |= static_cast<COLORREF>(position) << 8 * i;
        }
        return colour;
    }

    static void Scroll(HWND page, int bar, int code) {
        SendMessageW(page, WM_HSCROLL, static_cast<WPARAM>(code),
                     reinterpret_cast<LPARAM>(GetDlgItem(page, bar)));
    }

    // Waits until the sample's text is written in the colour: the label paints itself a moment later.
    static bool SampleIsPainted(HWND page, COLORREF colour) {
        const HWND sample = GetDlgItem(page, IDC_SAMPLE);
        return Await([&] {
            RECT area = {};
            bool found = false;
            GetClientRect(sample, &area);
            const HDC dc = GetDC(sample);
            for (int y = 1; y < area.bottom - 1 && !found; ++y) {
                for (int x = 1; x < area.right - 1 && !found; ++x)
                    found = GetPixel(dc, x, y) == colour;
            }
            ReleaseDC(sample, dc);
            return found;
        });
    }
};

TEST_F(ColourPageTest, TheBarsMoveTheColour) {
    Store();
    Settings settings = Stored();
    settings.HeaderColor = RGB(255, 128, 1);
    settings.ReferenceLine = RGB(3, 2, 1);
    Change(settings);
    const SheetRun run(settings);
    const HWND page = run.Turn(kColour);
    EXPECT_EQ(TextOf(GetDlgItem(page, IDC_COLOUR_ITEM)), L"ヘッダ行");
    EXPECT_EQ(Shown(page), RGB(255, 128, 1));
    EXPECT_TRUE(SampleIsPainted(page, RGB(255, 128, 1)));
    for (const int code : {SB_LINERIGHT, SB_PAGELEFT, SB_LINERIGHT, SB_PAGERIGHT})
        Scroll(page, IDC_RED_BAR, code);
    EXPECT_EQ(Shown(page), RGB(255, 128, 1)) << "no further than the end";
    Scroll(page, IDC_RED_BAR, SB_PAGELEFT);
    Scroll(page, IDC_GREEN_BAR, SB_LINERIGHT);
    Scroll(page, IDC_GREEN_BAR, SB_RIGHT);  // the keys that end it do not count
    Scroll(page, IDC_BLUE_BAR, SB_PAGELEFT);
    Scroll(page, IDC_BLUE_BAR, SB_LINELEFT);
    EXPECT_EQ(Shown(page), RGB(245, 129, 0));
    EXPECT_EQ(settings.SampleColor, RGB(245, 129, 0));
    EXPECT_TRUE(SampleIsPainted(page, RGB(245, 129, 0)));

    run.Select(page, IDC_COLOUR_ITEM, 1);
    EXPECT_EQ(TextOf(GetDlgItem(page, IDC_COLOUR_ITEM)), L"引用行");
    EXPECT_EQ(Shown(page), RGB(3, 2, 1));
    EXPECT_TRUE(SampleIsPainted(page, RGB(3, 2, 1)));
    Scroll(page, IDC_BLUE_BAR, SB_PAGERIGHT);
    run.Select(page, IDC_COLOUR_ITEM, 0);
    EXPECT_EQ(Shown(page), RGB(245, 129, 0)) << "what was chosen before";
    run.Select(page, IDC_COLOUR_ITEM, 1);
    Scroll(page, IDC_GREEN_BAR, SB_LINELEFT);
    EXPECT_EQ(run.Close(PSBTN_OK), 1);
    EXPECT_EQ(Stored().HeaderColor, RGB(245, 129, 0));
    EXPECT_EQ(Stored().ReferenceLine, RGB(3, 1, 11));
}

TEST_F(ColourPageTest, KeysClicksAndDragsReachTheBars) {
    Store();
    Settings settings;
    const SheetRun run(settings);
    const HWND page = run.Turn(kColour), bar = GetDlgItem(page, IDC_RED_BAR);
    RECT area = {};
    GetClientRect(bar, &area);
    const int middle = area.bottom / 2;
    const auto at = [middle](int x) { return MAKELPARAM(x, middle); };
    const HWND label = GetDlgItem(page, IDC_RED_VALUE);
    const auto reaches = [=](int position) {
        return Await([=] { return TextOf(label) == std::to_wstring(position); }) &&
               Shown(page) == RGB(position, 0, 0);
    };
    PostMessageW(bar, WM_KEYDOWN, VK_RIGHT, 1);
    EXPECT_TRUE(reaches(1)) << "a key";
    PostMessageW(bar, WM_LBUTTONDOWN, MK_LBUTTON, at(area.right - 5));
    PostMessageW(bar, WM_LBUTTONUP, 0, at(area.right - 5));
    EXPECT_TRUE(reaches(2)) << "the arrow";
    PostMessageW(bar, WM_LBUTTONDOWN, MK_LBUTTON, at(area.right / 2));
    PostMessageW(bar, WM_LBUTTONUP, 0, at(area.right / 2));
    EXPECT_TRUE(reaches(12)) << "beside the thumb";
    const int arrow = GetSystemMetrics(SM_CXHSCROLL);
    const int thumb = arrow * 3 / 2 + (area.right - arrow * 3) * 12 / 255;
    PostMessageW(bar, WM_LBUTTONDOWN, MK_LBUTTON, at(thumb));
    PostMessageW(bar, WM_MOUSEMOVE, MK_LBUTTON, at(area.right - 2));
    EXPECT_TRUE(reaches(255)) << "a drag, while it lasts";
    PostMessageW(bar, WM_LBUTTONUP, 0, at(area.right - 2));
    EXPECT_TRUE(Await([&] { return !(SendMessageW(bar, WM_NULL, 0, 0), GetCapture()); }));
    EXPECT_EQ(Shown(page), RGB(255, 0, 0)) << "and after it";
    run.Close(PSBTN_CANCEL);
}

}  // namespace
