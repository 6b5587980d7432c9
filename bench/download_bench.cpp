// download_bench PORT GROUP ARTICLES: one download run, session and store, without a window, into a new data
// folder. Prints its milliseconds and the most bytes that it held in memory beyond what the idle process did.
// download.py runs it.
#include <cstdio>
#include <cstdlib>

#include "bench/groups.h"
#include "bench/measure.h"
#include "bench/memory.h"
#include "nntp/session.h"
#include "platform/platform.h"
#include "store/index.h"

namespace {

// The rows that the run takes its groups from.
HWND MakeGroupList(const wchar_t* group) {
    InitCommonControls();
    const HWND list =
        CreateWindowExW(0, WC_LISTVIEWW, L"", LVS_REPORT, 0, 0, 200, 200, nullptr, nullptr, nullptr, nullptr);
    LVCOLUMNW column = {};
    SendMessageW(list, LVM_INSERTCOLUMNW, 0, reinterpret_cast<LPARAM>(&column));
    LVITEMW item = {};
    item.mask = LVIF_TEXT;
    item.pszText = const_cast<wchar_t*>(group);
    Require(SendMessageW(list, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item)) == 0, "listing a group");
    return list;
}

void MakeEmptyGroup(const BenchFolder& folder, const wchar_t* group) {
    GroupStore store;
    Require(SetNames(store, folder.Path(), group) && WriteHeader(store), "making the group");
}

void Check(const BenchFolder& folder, const wchar_t* group, uint32_t articles) {
    GroupStore store;
    Require(SetNames(store, folder.Path(), group) && ReadHeader(store), "reading the group");
    Require(store.header.recordCount == articles, "fetching every article");
}

double Download(const SessionRequest& request) {
    return Once([&] {
        if (RunSession(request)) return;
        std::printf("%ls: %ls\n", request.result->title, request.result->text);
        Require(false, "the run");
    });
}

}  // namespace

int wmain(int, wchar_t** arguments) {
    const auto port = static_cast<uint16_t>(wcstoul(arguments[1], nullptr, 10));
    const wchar_t* group = arguments[2];
    const auto articles = static_cast<uint32_t>(wcstoul(arguments[3], nullptr, 10));
    WSADATA winsock;
    Require(WSAStartup(MAKEWORD(2, 2), &winsock) == 0, "starting Winsock");
    const BenchFolder folder;
    MakeEmptyGroup(folder, group);
    GroupCursor cursor;
    cursor.list = MakeGroupList(group);
    ProgressDialog progress;
    RunResult result;
    const SessionRequest request = {.server = {L"127.0.0.1", port, nullptr, nullptr},
                                    .folder = folder.Path(),
                                    .limit = articles,
                                    .cursor = &cursor,
                                    .progress = &progress,
                                    .result = &result};
    const uint64_t idle = ReadWorkingSet().now;
    const double time = Download(request);
    const uint64_t peak = ReadWorkingSet().peak;
    Check(folder, group, articles);
    std::printf("%.3f\t%llu\n", time, static_cast<unsigned long long>(peak > idle ? peak - idle : 0));
    return 0;
}
