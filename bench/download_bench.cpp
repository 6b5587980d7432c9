// download_bench PORT GROUP ARTICLES [GROUPS]: one download run, session and store, without a window, into a
// new data folder. Prints its milliseconds and the most bytes that it held in memory beyond what the idle
// process did. With GROUPS it is the groups GROUP1, GROUP2... of so many articles each, and the milliseconds
// of a second run follow, which finds nothing new. download.py runs it.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "bench/groups.h"
#include "bench/measure.h"
#include "bench/memory.h"
#include "nntp/session.h"
#include "platform/platform.h"
#include "store/index.h"

namespace {

// The rows that the run takes its groups from.
HWND MakeGroupList(std::vector<std::wstring>& groups) {
    InitCommonControls();
    const HWND list =
        CreateWindowExW(0, WC_LISTVIEWW, L"", LVS_REPORT, 0, 0, 200, 200, nullptr, nullptr, nullptr, nullptr);
    LVCOLUMNW column = {};
    SendMessageW(list, LVM_INSERTCOLUMNW, 0, reinterpret_cast<LPARAM>(&column));
    LVITEMW item = {};
    item.mask = LVIF_TEXT;
    for (std::wstring& group : groups) {
        item.pszText = group.data();
        Require(SendMessageW(list, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item)) == item.iItem,
                "listing a group");
        ++item.iItem;
    }
    return list;
}

void MakeEmptyGroup(const BenchFolder& folder, const std::wstring& group) {
    GroupStore store;
    Require(SetNames(store, folder.Path(), group.c_str()) && WriteHeader(store), "making the group");
}

void Check(const BenchFolder& folder, const std::wstring& group, uint32_t articles) {
    GroupStore store;
    Require(SetNames(store, folder.Path(), group.c_str()) && ReadHeader(store), "reading the group");
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

int wmain(int count, wchar_t** arguments) {
    const auto port = static_cast<uint16_t>(wcstoul(arguments[1], nullptr, 10));
    std::vector<std::wstring> groups = {arguments[2]};
    const auto articles = static_cast<uint32_t>(wcstoul(arguments[3], nullptr, 10));
    WSADATA winsock;
    Require(WSAStartup(MAKEWORD(2, 2), &winsock) == 0, "starting Winsock");
    const BenchFolder folder;
    if (count > 4) groups.clear();
    for (uint32_t i = 1; count > 4 && i <= wcstoul(arguments[4], nullptr, 10); ++i)
        groups.push_back(arguments[2] + std::to_wstring(i));
    for (const std::wstring& group : groups)
        MakeEmptyGroup(folder, group);
    GroupCursor cursor;
    cursor.list = MakeGroupList(groups);
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
    for (const std::wstring& group : groups)
        Check(folder, group, articles);
    std::printf("%.3f\t%llu\t%.3f\n", time, static_cast<unsigned long long>(peak > idle ? peak - idle : 0),
                count > 4 ? Download(request) : 0.0);
    return 0;
}
