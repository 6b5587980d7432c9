// What the two views look like: at the device's size and at a desktop's. PELNOR_SCREENS names a folder that
// takes the pictures, for a person to look at.
#include <cstdlib>
#include <fstream>

#include "resources/resource.h"
#include "tests/shell/walk.h"

namespace {

constexpr COLORREF kHeaderColour = RGB(0, 0, 160);
constexpr COLORREF kQuoteColour = RGB(0, 128, 0);

// The pixels of a window, 32 bits each, the lowest row first as a bitmap file has them.
struct Picture {
    BITMAPINFOHEADER head = {};
    std::vector<uint32_t> pixels;

    // Pixels of a colour, as COLORREF is not: red in the high byte.
    int Count(COLORREF colour) const {
        const uint32_t wanted = RGB(GetBValue(colour), GetGValue(colour), GetRValue(colour));
        int count = 0;
        for (const uint32_t pixel : pixels)
            count += (pixel & 0xFFFFFF) == wanted;
        return count;
    }
};

Picture PictureOf(HWND window) {
    RECT area = {};
    GetWindowRect(window, &area);
    const int width = area.right - area.left, height = area.bottom - area.top;
    Picture picture;
    picture.head.biSize = sizeof(picture.head);
    picture.head.biWidth = width;
    picture.head.biHeight = height;
    picture.head.biPlanes = 1;
    picture.head.biBitCount = 32;
    picture.pixels.resize(static_cast<std::size_t>(width) * height);
    const HDC source = GetWindowDC(window), memory = CreateCompatibleDC(source);
    const HBITMAP bitmap = CreateCompatibleBitmap(source, width, height);
    const HGDIOBJ old = SelectObject(memory, bitmap);
    BitBlt(memory, 0, 0, width, height, source, 0, 0, SRCCOPY);
    SelectObject(memory, old);
    GetDIBits(memory, bitmap, 0, static_cast<UINT>(height), picture.pixels.data(),
              reinterpret_cast<BITMAPINFO*>(&picture.head), DIB_RGB_COLORS);
    DeleteObject(bitmap);
    DeleteDC(memory);
    ReleaseDC(window, source);
    return picture;
}

void Save(const Picture& picture, const std::string& name) {
    const char* folder = std::getenv("PELNOR_SCREENS");
    if (!folder) return;
    BITMAPFILEHEADER file = {};
    file.bfType = 0x4D42;
    file.bfOffBits = sizeof(file) + sizeof(picture.head);
    file.bfSize = static_cast<DWORD>(file.bfOffBits + picture.pixels.size() * 4);
    std::ofstream out(std::string("Z:") + folder + "/" + name + ".bmp", std::ios::binary);
    out.write(reinterpret_cast<const char*>(&file), sizeof(file));
    out.write(reinterpret_cast<const char*>(&picture.head), sizeof(picture.head));
    out.write(reinterpret_cast<const char*>(picture.pixels.data()),
              static_cast<std::streamsize>(picture.pixels.size() * 4));
    EXPECT_TRUE(out.flush().good()) << folder;
}

class PicturesTest : public WalkTest {
  protected:
    Picture Take(const std::string& name) {
        Pump();
        UpdateWindow(frame->mainWindow);
        const Picture picture = PictureOf(frame->mainWindow);
        Save(picture, name);
        return picture;
    }
};

TEST_F(PicturesTest, BothViewsShowTheirMarksAndColours) {
    std::vector<Article> articles;
    for (uint32_t i = 0; i < 45; ++i)
        articles.push_back({(i % 3 == 0 ? 1u : 0u) | (i % 4 == 1 ? 4u : i % 4 == 2 ? 2u : 0u)});
    MakeGroup(L"fj.comp.handheld", articles);
    MakeGroup(L"fj.misc", {{0}, {1}});
    SetNumber(L"HeaderColor", kHeaderColour);
    SetNumber(L"ReferenceLine", kQuoteColour);
    Open();
    for (const SIZE size : {SIZE{240, 320}, SIZE{800, 600}}) {
        const std::string name = "reading-" + std::to_string(size.cx) + "x" + std::to_string(size.cy);
        SCOPED_TRACE(name);
        Close();
        Open();
        SetWindowPos(frame->mainWindow, nullptr, 0, 0, size.cx, size.cy, SWP_NOZORDER);
        RECT client = {};
        GetClientRect(frame->mainWindow, &client);
        EXPECT_EQ(Subjects().client.right, client.right) << "the panes follow the frame";
        EXPECT_EQ(Reader().client.bottom, Subjects().client.bottom);
        Take(name + "-groups");
        EXPECT_GT(PictureOf(frame->groupBar).Count(RGB(0, 0, 0)), 50) << "the bar's captions";
        OpenGroup(0);
        const Picture unread = Take(name + "-unread");
        Command(IDC_VIEW_READ);
        Tap(WM_LBUTTONDOWN, 2);
        const Picture all = Take(name + "-subjects");
        EXPECT_NE(all.pixels, unread.pixels);
        EXPECT_GT(all.Count(RGB(0, 0, 0)), Subjects().rowArea.right) << "the cursor's row";
        Key(VK_RETURN);
        const Picture article = Take(name + "-article");
        EXPECT_GT(article.Count(kQuoteColour), 50);
        const int hidden = article.Count(kHeaderColour);
        EXPECT_GT(hidden, 50);
        Command(IDC_SHOW_HEADER);
        EXPECT_GT(Take(name + "-header").Count(kHeaderColour), hidden + 50);
        Command(IDC_SHOW_HEADER);
        Key(VK_TAB);
        Key(VK_NEXT);
        EXPECT_NE(Take(name + "-scrolled").pixels, article.pixels);
        Key(VK_ESCAPE);
        Command(IDC_VIEW_READ);
    }
}

}  // namespace
