// What reading costs: laying an article out, a group of many articles, deleting those that are read. Prints
// the rows of run.sh's table.
#include <algorithm>
#include <climits>
#include <iterator>
#include <string>

#include "bench/groups.h"
#include "bench/measure.h"
#include "platform/platform.h"
#include "settings/settings.h"
#include "store/article_list.h"
#include "store/delete_read.h"
#include "store/index.h"
#include "views/article_layout.h"
#include "views/article_view.h"
#include "views/scrolling.h"

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

// A group of many articles.

void OpenList(ArticleList& list, const BenchFolder& folder, const wchar_t* name) {
    Require(OpenArticleList(list, folder.Path(), name), "opening the group");
    Require(BuildArticleList(list, kRowsPerPage), "building the list");
}

// Calls `show` with the top row of each page down to the last, as the view does. Answers their number.
template <class Show>
void PageToEnd(uint32_t articles, const Show& show) {
    ListScroll scroll;
    scroll.rows = {kRowsPerPage, 0, articles};
    do
        show(scroll.rows.top);
    while (PageDown(scroll) == ScrollResult::kMoved);
}

struct GroupRows {
    Rows open{"opening a group", "reading its index"};
    Rows paging{"paging it to the end", "open, read, close a page"};
    Rows closing{"closing it", "open, write, close a header"};
    Rows memory{"memory of its list", "4 bytes an article, a page"};
};

void BenchPaging(ArticleList& list, GroupRows& rows) {
    const wchar_t* index = list.store.indexPath.get();
    const auto page = [&] {
        PageToEnd(list.visibleCount, [&](uint32_t top) { Require(LoadPage(list, top), "loading a page"); });
    };
    const auto plain = [&] {
        PageToEnd(list.visibleCount, [&](uint32_t top) {
            PlainReadAt(index, static_cast<uint32_t>(sizeof(IndexHeader) + top * sizeof(IndexRecord)),
                        kRowsPerPage * sizeof(IndexRecord));
        });
    };
    rows.paging.AddTimes(list.visibleCount, "articles",
                         SideBySide([&] { return Repeated(page); }, [&] { return Repeated(plain); }));
}

void BenchClosing(ArticleList& list, GroupRows& rows) {
    const uint32_t articles = list.visibleCount;
    const auto close = [&] {
        list.open = true;
        Require(CloseArticleList(list), "closing the group");
    };
    // Over the log, which nothing here reads any more.
    const auto plain = [&] { PlainOverwrite(list.store.logPath.get(), sizeof(IndexHeader)); };
    rows.closing.AddTimes(articles, "articles",
                          SideBySide([&] { return Repeated(close); }, [&] { return Repeated(plain); }));
}

void BenchGroup(const BenchFolder& folder, uint32_t articles, GroupRows& rows) {
    const std::wstring name = L"fj.many" + std::to_wstring(articles);
    {
        GroupStore store;
        MakeGroup(store, folder, name.c_str(), articles, 1);
    }
    const std::wstring index = folder.File((name + L".idx").c_str());
    const uint64_t before = HeapBytes();
    ArticleList list;
    list.showRead = true;
    OpenList(list, folder, name.c_str());
    const uint64_t taken = HeapBytes() - before;
    Require(list.visibleCount == articles, "showing all articles");
    rows.memory.AddBytes(articles, "articles", taken, 4ull * articles + kRowsPerPage * sizeof(IndexRecord));
    const auto open = [&] { OpenList(list, folder, name.c_str()); };
    const auto plain = [&] { PlainRead(index.c_str()); };
    rows.open.AddTimes(articles, "articles",
                       SideBySide([&] { return Repeated(open); }, [&] { return Repeated(plain); }));
    BenchPaging(list, rows);
    BenchClosing(list, rows);
}

// Deleting what is read.

// The group as it was before the deletion, and what is left of it.
struct Deletion {
    GroupStore store;
    std::wstring log, index, keptLog, keptIndex, copy;
};

void BringBack(const Deletion& deletion) {
    CopyWhole(deletion.log.c_str(), deletion.store.logPath.get());
    CopyWhole(deletion.index.c_str(), deletion.store.indexPath.get());
}

void Prepare(Deletion& deletion, const BenchFolder& folder, uint32_t articles) {
    GroupStore& store = deletion.store;
    MakeGroup(store, folder, (L"fj.read" + std::to_wstring(articles)).c_str(), articles, 30);
    deletion.log = folder.File(L"whole.log");
    deletion.index = folder.File(L"whole.idx");
    deletion.keptLog = folder.File(L"kept.log");
    deletion.keptIndex = folder.File(L"kept.idx");
    deletion.copy = folder.File(L"copy");
    CopyWhole(store.logPath.get(), deletion.log.c_str());
    CopyWhole(store.indexPath.get(), deletion.index.c_str());
    Require(DeleteRead(store) && store.recordCount == articles / 2, "deleting half");
    CopyWhole(store.logPath.get(), deletion.keptLog.c_str());
    CopyWhole(store.indexPath.get(), deletion.keptIndex.c_str());
}

void BenchDeletion(const BenchFolder& folder, uint32_t articles, Rows& rows) {
    Deletion deletion;
    Prepare(deletion, folder, articles);
    const auto ours = [&] {
        BringBack(deletion);
        return Once([&] { Require(DeleteRead(deletion.store), "deleting half"); });
    };
    const auto plain = [&] {
        return Once([&] {
            PlainCopy(deletion.keptLog.c_str(), (deletion.copy + L".log").c_str());
            PlainCopy(deletion.keptIndex.c_str(), (deletion.copy + L".idx").c_str());
        });
    };
    rows.AddTimes(articles, "articles", SideBySide(ours, plain));
}

}  // namespace

int main() {
    BenchAllLayouts();
    const BenchFolder folder;
    GroupRows groupRows;
    for (const uint32_t articles : {1'000u, 10'000u, 100'000u})
        BenchGroup(folder, articles, groupRows);
    Rows deletionRows("deleting every second article", "copying what is kept");
    for (const uint32_t articles : {200u, 2'000u, 20'000u})
        BenchDeletion(folder, articles, deletionRows);
    return 0;
}
