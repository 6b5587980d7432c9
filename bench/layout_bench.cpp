// What laying an article out costs. Prints rows of run.sh's table.
#include <algorithm>
#include <climits>
#include <iterator>
#include <string>

#include "bench/measure.h"
#include "platform/platform.h"
#include "settings/settings.h"
#include "views/article_layout.h"
#include "views/article_view.h"

namespace {

// The article view's text area on a screen of 240 x 320.
constexpr int kTextWidth = 222;
constexpr uint32_t kRowsPerPage = 18;

// Laying out.

constexpr wchar_t kHead[] = L"From: hanako@example.jp\r\nSubject: 長い記事\r\n\r\n";
constexpr wchar_t kSentence[] =
    L"新しい記事をまとめて取り寄せ、offline でゆっくり読むことができます。The quick brown fox、"
    L"カタカナと漢字が交じった illustrative な一文です。";

void AddLine(std::wstring& text, uint32_t units) {
    while (units > 0) {
        const auto part = std::min<std::size_t>(units, std::size(kSentence) - 1);
        text.append(kSentence, part);
        units -= static_cast<uint32_t>(part);
    }
    text += L"\r\n";
}

std::wstring OneLine(uint32_t units) {
    std::wstring text = kHead;
    AddLine(text, units);
    return text;
}

// Paragraphs, quotes and signatures: lines of all lengths, empty ones too.
std::wstring ManyLines(uint32_t lines) {
    constexpr uint32_t kLengths[] = {36, 72, 37, 20, 0, 72, 8, 35, 0, 60};
    std::wstring text = kHead;
    for (uint32_t i = 0; i < lines; ++i)
        AddLine(text, kLengths[i % std::size(kLengths)]);
    return text;
}

// Hands each line over in one piece, as laying out must at the least.
void MeasureOnce(const std::wstring& text, const TextMeasure& measure) {
    const wchar_t* start = text.c_str();
    while (*start) {
        const wchar_t* end = start;
        while (*end && *end != L'\r')
            ++end;
        const auto units = static_cast<uint32_t>(end - start);
        if (units > 0) (void)measure.fit(measure.context, start, units, INT_MAX);
        start = *end ? end + 2 : end;
    }
}

// Costs nothing, so that what is left is the layout's own work.
uint32_t FitFixedWidth(void*, const wchar_t*, uint32_t count, int width) {
    const auto most = static_cast<uint32_t>(width - 1) / 7;
    return count < most ? count : most;
}

void BenchLayout(const std::wstring& text, const TextMeasure& measure, Rows& rows, uint32_t size,
                 const char* unit) {
    ArticleLayout layout;
    const LayoutOptions options = {kTextWidth, kRowsPerPage, false};
    const auto layOut = [&] { Require(LayOut(layout, text.c_str(), options, measure), "laying out"); };
    const auto measureOnce = [&] { MeasureOnce(text, measure); };
    rows.AddTimes(size, unit,
                  SideBySide([&] { return Repeated(layOut); }, [&] { return Repeated(measureOnce); }));
}

void BenchLayouts(const char* with, const char* against, const TextMeasure& measure) {
    Rows oneLine(std::string("layout of one line, ") + with, against);
    for (const uint32_t units : {10'000u, 100'000u, 1'000'000u})
        BenchLayout(OneLine(units), measure, oneLine, units, "characters");
    Rows manyLines(std::string("layout of many lines, ") + with, against);
    for (const uint32_t lines : {1'000u, 10'000u, 100'000u})
        BenchLayout(ManyLines(lines), measure, manyLines, lines, "lines");
}

void BenchAllLayouts() {
    Settings settings;
    bool complete = false;
    Require(LoadSettings(settings, complete), "loading the settings");
    const HWND window = CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 240, 320, nullptr, nullptr,
                                        GetModuleHandleW(nullptr), nullptr);
    const HDC dc = GetDC(window);
    Require(window && dc && SelectObject(dc, settings.ArticleFont.Get()), "making a window");
    BenchLayouts("the font", "measuring it once", MeasureOn(dc));
    BenchLayouts("fixed width", "walking it once", {FitFixedWidth, nullptr});
    ReleaseDC(window, dc);
    DestroyWindow(window);
}

}  // namespace

int main() {
    BenchAllLayouts();
    return 0;
}
