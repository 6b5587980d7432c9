// What starting costs: the program with many groups, and its size. Prints rows of run.sh's table.
#include <filesystem>
#include <string>

#include "bench/groups.h"
#include "bench/measure.h"
#include "platform/platform.h"
#include "settings/settings.h"
#include "store/cut_off_deletion.h"
#include "store/index.h"
#include "store/upgrade.h"

namespace {

constexpr uint32_t kGroups = 200;
constexpr uint32_t kArticles = 1'000;
constexpr DWORD kPatience = 30'000;  // milliseconds

std::wstring GroupName(uint32_t number) {
    return L"fj.group" + std::to_wstring(number);
}

// A data folder below `folder`, subscribed to `groups` groups. Answers its path.
std::wstring MakeDataFolder(const BenchFolder& folder, uint32_t groups) {
    const std::wstring path = folder.File(groups ? L"many\\" : L"none\\");
    Require(CreateDirectoryW(path.c_str(), nullptr), "making a data folder");
    std::string names;
    for (uint32_t i = 0; i < groups; ++i) {
        const std::wstring file = path + GroupName(i);
        CopyWhole(folder.File(L"fj.one.idx").c_str(), (file + L".idx").c_str());
        CopyWhole(folder.File(L"fj.one.log").c_str(), (file + L".log").c_str());
        names += "fj.group" + std::to_string(i) + "\r\n";
    }
    WriteText((path + L"group.dat").c_str(), names);
    return path;
}

void UseDataFolder(const std::wstring& path) {
    Settings settings;
    bool complete = false;
    Require(LoadSettings(settings, complete), "loading the settings");
    wcscpy(settings.Server, L"127.0.0.1");
    wcscpy(settings.DataPath, path.c_str());
    settings.Port = 119;
    settings.Limit = 100;
    Require(SaveSettings(settings), "saving the settings");
}

// The folder of this program's build.
std::wstring BuildFolder() {
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    return std::filesystem::path(path).parent_path().parent_path().wstring() + L"\\";
}

// The frame shows itself when its groups are listed. Polls until then.
HWND WaitForFrame() {
    const DWORD start = GetTickCount();
    HWND frame = nullptr;
    while (!frame || !IsWindowVisible(frame)) {
        Require(GetTickCount() - start < kPatience, "waiting for the program's window");
        Sleep(1);
        frame = FindWindowW(L"PelnorMainFrmWnd", nullptr);
    }
    return frame;
}

// Until the program answers its user; then it is closed.
double Start(const std::wstring& program) {
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION started = {};
    std::wstring command = program;
    HWND frame = nullptr;
    const double time = Once([&] {
        Require(CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                               &startup, &started),
                "starting the program");
        frame = WaitForFrame();
        SendMessageW(frame, WM_NULL, 0, 0);
    });
    PostMessageW(frame, WM_CLOSE, 0, 0);
    Require(WaitForSingleObject(started.hProcess, kPatience) == WAIT_OBJECT_0, "closing the program");
    CloseHandle(started.hThread);
    CloseHandle(started.hProcess);
    return time;
}

void BenchStart(const std::wstring& many, const std::wstring& none) {
    const std::wstring program = BuildFolder() + L"pelnor.exe";
    const auto start = [&](const std::wstring& path) {
        UseDataFolder(path);
        return Start(program);
    };
    Rows rows("starting, 1,000 articles each", "starting without a group", 1.5);
    rows.AddTimes(kGroups, "groups", SideBySide([&] { return start(many); }, [&] { return start(none); }));
}

// What the start does with the groups' files: looks once for traces of a broken-off rewrite, brings each
// index up to date, and reads its header for the list.
void BenchChecking(const std::wstring& path) {
    const auto check = [&] {
        Require(!MayHoldCutOffDeletion(path.c_str()), "looking for temporary files");
        for (uint32_t i = 0; i < kGroups; ++i) {
            GroupStore store;
            Require(SetNames(store, path.c_str(), GroupName(i).c_str()), "naming a group");
            Require(BringUpToDate(store) == IndexState::kReady && ReadHeader(store), "checking a group");
        }
    };
    const auto read = [&] {
        for (uint32_t i = 0; i < kGroups; ++i)
            PlainReadAt((path + GroupName(i) + L".idx").c_str(), 0, sizeof(IndexHeader));
    };
    Rows rows("of that, checking the groups", "open, read, close an index");
    rows.AddTimes(kGroups, "groups",
                  SideBySide([&] { return Repeated(check); }, [&] { return Repeated(read); }));
}

void BenchSize() {
    const std::filesystem::path folder = BuildFolder();
    std::error_code error;
    const auto ours = std::filesystem::file_size(folder / L"pelnor.exe", error);
    const auto least = std::filesystem::file_size(folder / L"bench" / L"empty_program.exe", error);
    Require(!error, "finding the programs");
    Rows("the stripped program", "an empty program").AddBytes(1, "program", ours, least);
}

}  // namespace

int main() {
    const BenchFolder folder;
    {
        GroupStore store;
        MakeGroup(store, folder, L"fj.one", kArticles, 1);
    }
    const std::wstring many = MakeDataFolder(folder, kGroups);
    const std::wstring none = MakeDataFolder(folder, 0);
    BenchStart(many, none);
    BenchChecking(many);
    BenchSize();
    return 0;
}
