// What a group of many articles costs: opening and paging it, marking it read, new keywords, the index made
// anew, deleting what is read. Prints rows of run.sh's table.
#include <string>

#include "bench/groups.h"
#include "bench/measure.h"
#include "bench/memory.h"
#include "store/article_list.h"
#include "store/delete_read.h"
#include "store/group_changes.h"
#include "store/upgrade.h"
#include "views/scrolling.h"

namespace {

constexpr uint32_t kRowsPerPage = 18;
constexpr uint32_t kBodyLines = 30;
constexpr uint32_t kSizes[] = {1'000, 10'000, 100'000};
constexpr char kUnit[] = "articles";

struct GroupRows {
    Rows memory{"memory of an open group", "4 bytes an article, a page"};
    Rows open{"opening a group", "reading its index", 3};
    Rows paging{"paging it to the end", "open, read, close a page"};
    Rows closing{"closing it", "open, write, close a header"};
    Rows marking{"marking all read", "reading and writing the index", 4};
    Rows refilter{"re-filtering, 20 keywords", "reading the log once"};
    Rows rebuild{"making the index anew", "reading the log once", 6};
    Rows deletion{"deleting every second article", "copying what is kept", 2};
};

// A group on disk, and copies of its files as they were at first.
struct Group {
    GroupStore store;
    std::wstring name;
    uint32_t articles = 0;
    std::wstring wholeLog, wholeIndex;
};

void MakeGroup(Group& group, const BenchFolder& folder, uint32_t articles) {
    group.articles = articles;
    group.name = L"fj.many" + std::to_wstring(articles);
    group.wholeLog = folder.File(L"whole.log");
    group.wholeIndex = folder.File(L"whole.idx");
    MakeGroup(group.store, folder, group.name.c_str(), articles, kBodyLines);
    CopyWhole(group.store.logPath.get(), group.wholeLog.c_str());
    CopyWhole(group.store.indexPath.get(), group.wholeIndex.c_str());
}

void BringBack(const Group& group) {
    CopyWhole(group.wholeLog.c_str(), group.store.logPath.get());
    CopyWhole(group.wholeIndex.c_str(), group.store.indexPath.get());
}

// The list of articles.

void OpenList(ArticleList& list, const BenchFolder& folder, const Group& group) {
    Require(OpenArticleList(list, folder.Path(), group.name.c_str()), "opening the group");
    Require(BuildArticleList(list, kRowsPerPage), "building the list");
}

// Calls `show` with the top row of each page down to the last, as the view does.
template <class Show>
void PageToEnd(uint32_t articles, const Show& show) {
    ScrollState scroll{kRowsPerPage, 0, articles};
    do
        show(scroll.top);
    while (PageDown(scroll) == ScrollResult::kMoved);
}

void BenchPaging(ArticleList& list, Rows& rows) {
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
    rows.AddTimes(list.visibleCount, kUnit,
                  SideBySide([&] { return Repeated(page); }, [&] { return Repeated(plain); }));
}

void BenchClosing(ArticleList& list, const BenchFolder& folder, Rows& rows) {
    const std::wstring copy = folder.File(L"header");
    CopyWhole(list.store.indexPath.get(), copy.c_str());
    const auto close = [&] {
        list.open = true;
        Require(CloseArticleList(list), "closing the group");
    };
    const auto plain = [&] { PlainOverwrite(copy.c_str(), sizeof(IndexHeader)); };
    rows.AddTimes(list.visibleCount, kUnit,
                  SideBySide([&] { return Repeated(close); }, [&] { return Repeated(plain); }));
}

void BenchList(const Group& group, const BenchFolder& folder, GroupRows& rows) {
    const uint64_t before = HeapBytes();
    ArticleList list;
    list.showRead = true;
    OpenList(list, folder, group);
    const uint64_t taken = HeapBytes() - before;
    Require(list.visibleCount == group.articles, "showing all articles");
    rows.memory.AddBytes(group.articles, kUnit, taken,
                         4ull * group.articles + kRowsPerPage * sizeof(IndexRecord));
    const auto open = [&] { OpenList(list, folder, group); };
    const auto plain = [&] { PlainRead(group.store.indexPath.get()); };
    rows.open.AddTimes(group.articles, kUnit,
                       SideBySide([&] { return Repeated(open); }, [&] { return Repeated(plain); }));
    BenchPaging(list, rows.paging);
    BenchClosing(list, folder, rows.closing);
}

// What changes every record.

void BenchMarking(Group& group, Rows& rows) {
    const auto ours = [&] {
        BringBack(group);
        return Once([&] { Require(MarkAllRead(group.store), "marking all read"); });
    };
    const auto theirs = [&] {
        BringBack(group);
        return Once([&] { PlainRewrite(group.store.indexPath.get()); });
    };
    rows.AddTimes(group.articles, kUnit, SideBySide(ours, theirs));
}

// Twenty, of which one changes its priority with `high`, and a tenth of the articles theirs.
std::string Keywords(bool high) {
    std::string keywords = high ? "+ urgent\r\n" : "- urgent\r\n";
    for (int i = 1; i < 20; ++i)
        keywords += std::string(i % 2 ? "+ " : "- ") + "\x93\xFA\x96\x7B\x82\xCC\x98\x62" +
                    std::to_string(i) + "\r\n";
    return keywords;
}

void BenchRefilter(Group& group, Rows& rows) {
    bool high = true;
    const auto ours = [&] {
        high = !high;
        WriteText(group.store.filterPath.get(), Keywords(high));
        const double time = Once([&] { Require(Refilter(group.store), "re-filtering"); });
        Require(group.store.header.highCount == (high ? group.articles / 10 : 0), "finding the keyword");
        return time;
    };
    const auto theirs = [&] { return Once([&] { PlainRead(group.store.logPath.get()); }); };
    rows.AddTimes(group.articles, kUnit, SideBySide(ours, theirs));
}

void BenchRebuild(Group& group, Rows& rows) {
    GroupStore& store = group.store;
    const auto ours = [&] {
        Require(DeleteDataFile(store.indexPath.get()), "losing the index");
        const double time = Once([&] { Require(BringUpToDate(store) == IndexState::kReady, "rebuilding"); });
        Require(store.header.recordCount == group.articles, "finding every article");
        return time;
    };
    const auto theirs = [&] { return Once([&] { PlainRead(store.logPath.get()); }); };
    rows.AddTimes(group.articles, kUnit, SideBySide(ours, theirs));
}

void BenchDeletion(Group& group, const BenchFolder& folder, Rows& rows) {
    const std::wstring keptLog = folder.File(L"kept.log");
    const std::wstring keptIndex = folder.File(L"kept.idx");
    const std::wstring copy = folder.File(L"copy");
    const auto ours = [&] {
        BringBack(group);
        const double time = Once([&] { Require(DeleteRead(group.store), "deleting half"); });
        Require(group.store.header.recordCount == group.articles / 2, "keeping the other half");
        CopyWhole(group.store.logPath.get(), keptLog.c_str());
        CopyWhole(group.store.indexPath.get(), keptIndex.c_str());
        return time;
    };
    const auto theirs = [&] {
        return Once([&] {
            PlainCopy(keptLog.c_str(), (copy + L".log").c_str());
            PlainCopy(keptIndex.c_str(), (copy + L".idx").c_str());
        });
    };
    rows.AddTimes(group.articles, kUnit, SideBySide(ours, theirs));
}

}  // namespace

int main() {
    const BenchFolder folder;
    GroupRows rows;
    for (const uint32_t articles : kSizes) {
        Group group;
        MakeGroup(group, folder, articles);
        BenchList(group, folder, rows);
        BenchMarking(group, rows.marking);
        BenchRebuild(group, rows.rebuild);  // before there are keywords
        BenchRefilter(group, rows.refilter);
        BenchDeletion(group, folder, rows.deletion);
    }
    return 0;
}
