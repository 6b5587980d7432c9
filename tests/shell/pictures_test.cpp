// What the two views look like, as far as pixels tell it: at the device's size and at a desktop's.
#include "resources/resource.h"
#include "tests/shell/walk.h"

namespace {

constexpr COLORREF kHeaderColour = RGB(0, 0, 160);
constexpr COLORREF kQuoteColour = RGB(0, 128, 0);

using Pixels = std::vector<uint32_t>;

Pixels PixelsOf(HWND window) {
    RECT area = {};
    GetWindowRect(window, &area);
    const int width = area.right - area.left, height = area.bottom - area.top;
    BITMAPINFO info = {};
    info.bmiHeader.biSize = sizeof(info.bmiHeader);
    info.bmiHeader.biWidth = width;
    info.bmiHeader.biHeight = height;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    Pixels pixels(static_cast<std::size_t>(width) * height);
    const HDC source = GetWindowDC(window), memory = CreateCompatibleDC(source);
    const HBITMAP bitmap = CreateCompatibleBitmap(source, width, height);
    const HGDIOBJ old = SelectObject(memory, bitmap);
    BitBlt(memory, 0, 0, width, height, source, 0, 0, SRCCOPY);
    SelectObject(memory, old);
    GetDIBits(memory, bitmap, 0, static_cast<UINT>(height), pixels.data(), &info, DIB_RGB_COLORS);
    DeleteObject(bitmap);
    DeleteDC(memory);
    ReleaseDC(window, source);
    return pixels;
}

// Pixels have red in the high byte, colours in the low one.
int Count(const Pixels& pixels, COLORREF colour) {
    const uint32_t wanted = RGB(GetBValue(colour), GetGValue(colour), GetRValue(colour));
    int count = 0;
    for (const uint32_t pixel : pixels)
        count += (pixel & 0xFFFFFF) == wanted;
    return count;
}

class PicturesTest : public WalkTest {
  protected:
    Pixels Take() {
        Pump();
        UpdateWindow(frame->mainWindow);
        return PixelsOf(frame->mainWindow);
    }
};

TEST_F(PicturesTest, BothViewsShowTheirMarksAndColours) {
    std::vector<Article> articles;
    for (uint32_t i = 0; i < 45; ++i)
        articles.push_back({(i % 3 == 0 ? 1u : 0u) | (i % 4 == 1 ? 4u : i % 4 == 2 ? 2u : 0u)});
    MakeGroup(L"fj.comp.handheld", articles);
    SetNumber(L"HeaderColor", kHeaderColour);
    SetNumber(L"ReferenceLine", kQuoteColour);
    for (const SIZE size : {SIZE{240, 320}, SIZE{800, 600}}) {
        SCOPED_TRACE(size.cx);
        Open();
        SetWindowPos(frame->mainWindow, nullptr, 0, 0, size.cx, size.cy, SWP_NOZORDER);
        Take();
        EXPECT_GT(Count(PixelsOf(frame->groupBar), RGB(0, 0, 0)), 50) << "the bar's captions";
        OpenGroup(0);
        const Pixels unread = Take();
        Command(IDC_VIEW_READ);
        Tap(WM_LBUTTONDOWN, 2);
        const Pixels all = Take();
        EXPECT_NE(all, unread);
        EXPECT_GT(Count(all, RGB(0, 0, 0)), Subjects().rowArea.right) << "the cursor's row";
        Key(VK_RETURN);
        const Pixels article = Take();
        EXPECT_GT(Count(article, kQuoteColour), 50);
        const int hidden = Count(article, kHeaderColour);
        EXPECT_GT(hidden, 50);
        Command(IDC_SHOW_HEADER);
        EXPECT_GT(Count(Take(), kHeaderColour), hidden + 50);
        Command(IDC_SHOW_HEADER);
        Key(VK_NEXT);
        EXPECT_NE(Take(), article);
        Key(VK_ESCAPE);
        Command(IDC_VIEW_READ);
        Close();
    }
}

}  // namespace
