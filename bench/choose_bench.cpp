// What choosing costs: a large server's list of groups, and a large category in the dialog. Prints rows of
// run.sh's table.
#include <functional>
#include <string>
#include <thread>

#include "bench/dialogs.h"
#include "bench/groups.h"
#include "bench/measure.h"
#include "bench/memory.h"
#include "demo/line_server.h"
#include "platform/platform.h"
#include "resources/resource.h"
#include "subscribe/group_list.h"
#include "subscribe/group_list_dialog.h"
#include "subscribe/subscribe_dialog.h"

namespace {

// The server's list.

constexpr uint32_t kCategories = 500;
constexpr std::size_t kStep = 4096;

// About 40 bytes a group.
std::string ListOf(uint32_t groups) {
    std::string list = "215 list\r\n";
    for (uint32_t i = 0; i < groups; ++i) {
        const std::string number = std::to_string(i);
        list += "alt" + std::to_string(i % kCategories) + ".group." + number + " 0000012345 0000000001 y\r\n";
    }
    return list;
}

// Answers one client after the other with a list; `beforeEnd` is done before the last line goes out.
class ListServer {
  public:
    ListServer(uint32_t groups, int clients)
        : list_(ListOf(groups)), listener_(ListenLocal(0)), thread_([this, clients] { Serve(clients); }) {}
    ~ListServer() { thread_.join(); }
    ListServer(const ListServer&) = delete;
    ListServer& operator=(const ListServer&) = delete;

    unsigned short Port() const { return LocalPort(listener_); }
    std::function<void()> beforeEnd;

  private:
    void Serve(int clients) {
        for (int i = 0; i < clients; ++i) {
            const Socket client = AcceptClient(listener_);
            LineReader reader(client);
            std::string command;
            Require(SendAll(client, "200 hi\r\n") && reader.ReadLine(command), "greeting a client");
            Require(SendAll(client, list_), "sending the list");
            if (beforeEnd) beforeEnd();
            Require(SendAll(client, ".\r\n"), "ending the list");
            (void)reader.ReadLine(command);  // until the client has gone
        }
    }

    std::string list_;
    Socket listener_;
    std::thread thread_;
};

// Takes all that the server sends and looks only for its end.
void BareClient(unsigned short port) {
    const Socket client(socket(AF_INET, SOCK_STREAM, 0));
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    Require(connect(client.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0,
            "connecting");
    Require(SendAll(client, "LIST active\r\n"), "asking for the list");
    std::string end;
    while (end != "\r\n.\r\n") {
        std::string bytes;
        Require(Receive(client, kStep, bytes), "receiving the list");
        end += bytes;
        if (end.size() > 5) end.erase(0, end.size() - 5);
    }
}

// The longest time between two ticks of a timer in the dialog's thread: so long would a user wait for an
// answer.
struct Pauses {
    DWORD lastTick = 0;
    DWORD longest = 0;
};
Pauses pauses;
constexpr UINT kTimerPeriod = 10;

void CALLBACK OnPauseTick(HWND, UINT, UINT_PTR, DWORD) {
    const DWORD now = GetTickCount();
    if (pauses.lastTick && now - pauses.lastTick > pauses.longest) pauses.longest = now - pauses.lastTick;
    pauses.lastTick = now;
}

struct ListPaths {
    std::wstring active, category, group;
    explicit ListPaths(const BenchFolder& folder)
        : active(folder.File(L"active.dat")),
          category(folder.File(L"category.dat")),
          group(folder.File(L"group.dat")) {}
};

uint32_t Lines(const wchar_t* path) {
    DataFile file;
    Require(OpenDataFile(file, path, FileMode::kRead), "opening a list");
    char line[256];
    uint32_t count = 0;
    while (ReadLine(file, line, sizeof(line), true))
        ++count;
    return count;
}

struct ListRows {
    Rows time{"fetching the list of groups", "reading the reply"};
    Rows memory{"memory while it is fetched", "the buffer to read it"};
    Rows pause{"longest pause of its window", "the period of a timer"};
};

void BenchList(const BenchFolder& folder, uint32_t groups, ListRows& rows) {
    const ListPaths paths(folder);
    constexpr int kClients = 2 * 5 + 1;
    ListServer server(groups, kClients);
    const GroupListRequest request = {
        paths.active.c_str(), paths.category.c_str(), L"127.0.0.1", server.Port(), nullptr, nullptr};
    pauses = Pauses();
    const auto ours = [&] {
        pauses.lastTick = 0;
        return Once([&] { RunGroupListDownload(GetModuleHandleW(nullptr), nullptr, request); });
    };
    const auto theirs = [&] { return Once([&] { BareClient(server.Port()); }); };
    const UINT_PTR timer = SetTimer(nullptr, 0, kTimerPeriod, OnPauseTick);
    rows.time.AddTimes(groups, "groups", SideBySide(ours, theirs));
    KillTimer(nullptr, timer);
    Require(Lines(paths.active.c_str()) == groups, "fetching every group");
    rows.pause.AddTimes(groups, "groups",
                        {static_cast<double>(pauses.longest), static_cast<double>(kTimerPeriod)});
    uint64_t before = 0;
    uint64_t taken = 0;
    server.beforeEnd = [&] { taken = HeapBytes() - before; };
    before = HeapBytes();
    GroupListJob* job = MakeGroupListJob(request, nullptr);
    FetchGroupList(*job);
    Require(job->groupCount == groups, "fetching every group again");
    ReleaseGroupListJob(job);
    rows.memory.AddBytes(groups, "groups", taken, kStep);
}

// A category in the dialog.

// The server's order is not the alphabet's. Every tenth group is subscribed.
void WriteCategory(const ListPaths& paths, uint32_t groups) {
    std::string active, chosen;
    for (uint32_t i = 0; i < groups; ++i) {
        const std::string name = "fj." + std::to_string(i * 7919 % groups) + ".group\r\n";
        active += name;
        if (i % 10 == 0) chosen += name;
    }
    WriteText(paths.active.c_str(), active);
    WriteText(paths.category.c_str(), "fj\r\n");
    WriteText(paths.group.c_str(), chosen);
}

void SelectRow(HWND list, int row) {
    LVITEMW item = {};
    item.stateMask = item.state = LVIS_SELECTED;
    SendMessageW(list, LVM_SETITEMSTATE, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
}

void DoubleClick(HWND dialog) {
    NMHDR notice = {GetDlgItem(dialog, IDC_SUBSCRIBE_LIST), IDC_SUBSCRIBE_LIST, static_cast<UINT>(NM_DBLCLK)};
    SendMessageW(dialog, WM_NOTIFY, IDC_SUBSCRIBE_LIST, reinterpret_cast<LPARAM>(&notice));
    UpdateWindow(notice.hwndFrom);
}

// Names that are there already, in their order.
void FillBareList(HWND list, const std::wstring& names, uint32_t count) {
    SendMessageW(list, WM_SETREDRAW, FALSE, 0);
    SendMessageW(list, LVM_DELETEALLITEMS, 0, 0);
    SendMessageW(list, LVM_SETITEMCOUNT, count, 0);
    LVITEMW item = {};
    item.mask = LVIF_TEXT | LVIF_IMAGE;
    const wchar_t* name = names.c_str();
    for (; item.iItem < static_cast<int>(count);
         ++item.iItem, name += std::char_traits<wchar_t>::length(name) + 1) {
        item.pszText = const_cast<wchar_t*>(name);
        SendMessageW(list, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item));
    }
    SendMessageW(list, WM_SETREDRAW, TRUE, 0);
    UpdateWindow(list);
}

void SetImage(HWND list, int row, int image) {
    LVITEMW item = {};
    item.mask = LVIF_IMAGE;
    item.iItem = row;
    item.iImage = image;
    SendMessageW(list, LVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&item));
    UpdateWindow(list);
}

struct CategoryRows {
    Rows show{"showing a category's groups", "filling a bare list"};
    Rows draw{"the same", "unseen, then showing it", 1.2};
    Rows toggle{"subscribing in it", "setting a row's image"};
};

void MeasureCategory(HWND dialog, uint32_t groups, CategoryRows& rows) {
    const HWND list = GetDlgItem(dialog, IDC_SUBSCRIBE_LIST);
    std::wstring names;
    for (uint32_t i = 0; i < groups; ++i)
        names += L"fj." + std::to_wstring(i) + L".group" + L'\0';
    RECT area{};
    GetClientRect(list, &area);
    const HWND bare =
        CreateWindowExW(0, WC_LISTVIEWW, L"", WS_POPUP | WS_VISIBLE | LVS_REPORT, 0, 0, area.right,
                        area.bottom, nullptr, nullptr, GetModuleHandleW(nullptr), nullptr);
    LVCOLUMNW column = {};
    SendMessageW(bare, LVM_INSERTCOLUMNW, 0, reinterpret_cast<LPARAM>(&column));
    const auto show = [&] {
        SendMessageW(dialog, WM_COMMAND, IDC_SUBSCRIBE_CATEGORIES, 0);
        SelectRow(list, 0);
        const double time = Once([&] { DoubleClick(dialog); });
        Require(SendMessageW(list, LVM_GETITEMCOUNT, 0, 0) == static_cast<LRESULT>(groups),
                "showing all groups");
        return time;
    };
    const auto fill = [&] { return Once([&] { FillBareList(bare, names, groups); }); };
    rows.show.AddTimes(groups, "groups", SideBySide(show, fill));
    const auto showUnseen = [&] {
        ShowWindow(dialog, SW_HIDE);
        return show() + Once([&] {
                   ShowWindow(dialog, SW_SHOWNA);
                   UpdateWindow(list);
               });
    };
    rows.draw.AddTimes(groups, "groups", SideBySide(show, showUnseen));
    const int middle = static_cast<int>(groups / 2);
    SelectRow(list, middle);
    int image = 0;
    const auto toggle = [&] { return Repeated([&] { DoubleClick(dialog); }); };
    const auto set = [&] { return Repeated([&] { SetImage(bare, middle, image ^= 1); }); };
    rows.toggle.AddTimes(groups, "groups", SideBySide(toggle, set));
    DestroyWindow(bare);
}

void BenchCategory(const BenchFolder& folder, uint32_t groups, CategoryRows& rows) {
    const ListPaths paths(folder);
    WriteCategory(paths, groups);
    SubscribeState state;
    state.activePath = paths.active.c_str();
    state.categoryPath = paths.category.c_str();
    state.groupPath = paths.group.c_str();
    ActInNextDialog([&](HWND dialog) { MeasureCategory(dialog, groups, rows); });
    Require(RunSubscribeDialog(state, GetModuleHandleW(nullptr), nullptr) == 2, "running the dialog");
}

}  // namespace

int main() {
    InitCommonControls();
    const BenchFolder folder;
    ListRows listRows;
    for (const uint32_t groups : {1'000u, 10'000u, 100'000u})
        BenchList(folder, groups, listRows);
    CategoryRows categoryRows;
    for (const uint32_t groups : {200u, 2'000u, 20'000u})
        BenchCategory(folder, groups, categoryRows);
    return 0;
}
