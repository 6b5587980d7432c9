#include "tests/faults/operations.h"

#include "filters/keyword_filter.h"
#include "keywords/keyword_dialog.h"
#include "resources/resource.h"
#include "shell/run.h"
#include "store/article_list.h"
#include "store/delete_read.h"
#include "store/group_changes.h"
#include "store/index.h"
#include "subscribe/group_list_dialog.h"
#include "subscribe/subscribe_dialog.h"
#include "text/convert.h"

const std::vector<std::wstring> kGroups = {L"fj.a", L"fj.b"};

namespace {

// The folder. One article is longer than a sector, one longer than the program's buffer.

std::string BodyOf(char letter, std::size_t size) {
    std::string body;
    while (body.size() < size)
        body += std::string(60, letter) + "\r\n";
    return body;
}

const std::vector<Article> kFirst = {{1, "one", 1, BodyOf('a', 20)},
                                     {2, "Re: two", 4, BodyOf('b', 700)},
                                     {3, "three", 3, BodyOf('c', 300)},
                                     {4, "two again", 5, BodyOf('d', 9)},
                                     {5, "five", 0, BodyOf('e', 18000)}};
const std::vector<Article> kSecond = {
    {7, "seven", 1, "seven\r\n"}, {8, "eight", 0, BodyOf('f', 300)}, {9, "three", 2, "nine\r\n"}};
const std::vector<Article> kNew = {
    {6, "two", 0, BodyOf('g', 18000)}, {7, "seven", 0, "seven\r\n"}, {8, "three", 0, BodyOf('h', 600)}};
const std::vector<Article> kNewInSecond = {{10, "ten", 0, "ten\r\n"}, {11, "three", 0, "eleven\r\n"}};

void PutGroup(const std::wstring& name, const std::vector<Article>& articles, GroupIs state) {
    for (const auto& [file, content] : GroupFiles(name, articles, state))
        FileOf(file) = content;
    FileOf(name + L".flt") = "+ two\r\n- three\r\n";
}

void PutFolder(GroupIs state) {
    FileOf(L"draft\\");
    FileOf(L"draft\\old.bak") = "x";
    FileOf(L"active.dat") = "fj.a\r\nfj.b\r\nfj.c\r\n";
    FileOf(L"category.dat") = "fj\r\n";
    FileOf(L"group.dat") = "fj.a\r\nfj.b\r\n";
    PutGroup(kGroups[0], kFirst, state);
    PutGroup(kGroups[1], kSecond, GroupIs::kCurrent);
}

void PutCurrent() {
    PutFolder(GroupIs::kCurrent);
}

void PutNewGroups() {
    FileOf(L"group.dat") = "fj.a\r\nfj.b\r\n";
}

void PutOtherKeywords() {
    PutCurrent();
    for (const std::wstring& group : kGroups)
        FileOf(group + L".flt") = "+ three\r\n+ five\r\n- one\r\n";
}

void PutCutOffKeywords() {
    PutOtherKeywords();
    auto file = machine.storage.files.extract(kFolder + L"fj.a.flt");
    file.key() += L'~';
    machine.storage.files.insert(std::move(file));
}

void PutNoKeywords() {
    PutCurrent();
    machine.storage.files.erase(kFolder + L"fj.a.flt");
}

// The outcome.

std::string LastNumber() {
    return "(" + std::to_string(GetLastError()) + ")";
}

Outcome Both(const Outcome& first, const Outcome& second) {
    return {first.done && second.done, first.told + second.told, first.shows || second.shows};
}

template <class Change>
Outcome InEachGroup(const Change& change) {
    Outcome outcome = {true};
    for (const std::wstring& group : kGroups) {
        GroupStore store;
        const bool done = SetNames(store, kFolder.c_str(), group.c_str()) && change(store);
        outcome = Both(outcome, {done, done ? "" : LastNumber()});
    }
    return Both(outcome, {true, TakeBoxes()});
}

// The program.

// A list view that shows nothing, which is fast.
std::vector<std::wstring> listRows;

LRESULT CALLBACK ListProcedure(HWND window, UINT message, WPARAM row, LPARAM lParam) {
    const auto item = reinterpret_cast<const LVITEMW*>(lParam);
    if (message == LVM_GETITEMCOUNT) return static_cast<LRESULT>(listRows.size());
    if (message == LVM_DELETEALLITEMS) listRows.clear();
    if (message == LVM_INSERTITEMW) listRows.emplace_back(item->pszText);
    if (message != LVM_GETITEMTEXTW) return DefWindowProcW(window, message, row, lParam);
    wcsncpy(item->pszText, listRows.at(row).c_str(), static_cast<std::size_t>(item->cchTextMax));
    return static_cast<LRESULT>(listRows.at(row).size());
}

HWND MakeList() {
    InitCommonControls();
    WNDCLASSW description = {};
    description.lpfnWndProc = ListProcedure;
    description.lpszClassName = L"list";
    RegisterClassW(&description);
    return CreateWindowExW(0, L"list", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
}

struct Frame {
    AppFrame frame;
    Frame() {
        frame.groupView = std::make_unique<GroupView>();
        static const HWND list = MakeList();
        frame.mainWindow = frame.groupView->list = list;
        frame.instance = GetModuleHandleW(nullptr);
        CopyCut(frame.settings.DataPath, kDataPathSize, kFolder.c_str());
    }
};

std::string BarOf(HWND dialog) {
    const HWND bar = GetDlgItem(dialog, IDC_PROGRESS_BAR);
    wchar_t group[99] = L"";
    GetDlgItemTextW(dialog, IDC_PROGRESS_GROUP, group, 99);
    return !bar || !*group ? ""
                           : Plain(group) + " " + std::to_string(SendMessageW(bar, PBM_GETPOS, 0, 0)) +
                                 " of " + std::to_string(SendMessageW(bar, PBM_GETRANGE, FALSE, 0));
}

std::string Reply(const std::string& command) {
    static bool inSecond = false;
    if (command == "LIST active") return "215 list\r\nfj.a 1 1 y\r\njunk 1 1 y\r\nfj.z 1 1 y\r\n.\r\n";
    if (command.rfind("GROUP ", 0) == 0) inSecond = command == "GROUP fj.b";
    return ReplyOf(inSecond ? kNewInSecond : kNew, command);
}

Outcome DownloadBoth() {
    Serve(Reply);
    RefuseDialogs(true);
    const Outcome outcome = Download(kGroups);
    RefuseDialogs(false);
    return outcome;
}

Outcome CatchUpLocal() {
    return InEachGroup(MarkAllRead);
}

Outcome CatchUpServer() {
    return InEachGroup([](GroupStore& store) {
        if (!ReadHeader(store)) return false;
        store.header.lastFetched = kNoneFetched;
        return WriteHeader(store);
    });
}

Outcome ChangeKeywords() {
    return InEachGroup(Refilter);
}

// The command reads the groups again at its end.
Outcome Delete() {
    return Both(InEachGroup(DeleteRead), Start());
}

// Of what one that failed half-way leaves, another takes nothing.
Outcome DeleteTwice() {
    const Outcome outcome = InEachGroup(DeleteRead);
    machine.fault = nullptr;
    (void)InEachGroup(DeleteRead);
    return outcome;
}

// The user turns the marks of one group.
Outcome Read() {
    ArticleList list;
    list.showRead = true;
    bool done = OpenArticleList(list, kFolder.c_str(), kGroups[0].c_str()) && BuildArticleList(list, 3);
    std::string told = done ? "" : LastNumber();
    for (const uint32_t row : {0u, 1u, 2u}) {
        if (row >= list.rowsInPage) continue;
        const bool read = IsRead(list.page[row]);
        const bool changed = read ? ClearFlags(list, row, kReadFlag) : SetFlags(list, row, kReadFlag);
        if (!changed) told += LastNumber();
        done = done && changed;
    }
    const bool closed = CloseArticleList(list);
    if (!closed) told += LastNumber();
    return {done && closed, told + TakeBoxes()};
}

Outcome FetchListOf() {
    Serve(Reply);
    return FetchList();
}

// Whether the row bears the mark of a subscribed group then.
bool ChooseRow(HWND dialog, const wchar_t* name) {
    const HWND list = GetDlgItem(dialog, IDC_SUBSCRIBE_LIST);
    LVFINDINFOW wanted = {};
    wanted.flags = LVFI_STRING;
    wanted.psz = name;
    LVITEMW item = {};
    item.iItem = static_cast<int>(
        SendMessageW(list, LVM_FINDITEMW, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(&wanted)));
    if (item.iItem < 0) return false;
    item.state = item.stateMask = LVIS_SELECTED;
    SendMessageW(list, LVM_SETITEMSTATE, static_cast<WPARAM>(item.iItem), reinterpret_cast<LPARAM>(&item));
    NMHDR notice = {list, IDC_SUBSCRIBE_LIST, static_cast<UINT>(NM_DBLCLK)};
    SendMessageW(dialog, WM_NOTIFY, IDC_SUBSCRIBE_LIST, reinterpret_cast<LPARAM>(&notice));
    item.mask = LVIF_IMAGE;
    return SendMessageW(list, LVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item)) && item.iImage == 1;
}

Outcome Subscribe() {
    const std::wstring active = kFolder + L"active.dat", category = kFolder + L"category.dat",
                       group = kFolder + L"group.dat";
    SubscribeState state;
    state.activePath = active.c_str();
    state.categoryPath = category.c_str();
    state.groupPath = group.c_str();
    bool marked = false;
    UseNextDialog([&](HWND dialog) {
        ChooseRow(dialog, L"fj");
        marked = ChooseRow(dialog, L"fj.c");
        SendMessageW(dialog, WM_COMMAND, IDOK, 0);
    });
    const bool ok = RunSubscribeDialog(state, GetModuleHandleW(nullptr), nullptr) == 1;
    const std::string told = TakeBoxes();
    return {ok && marked && told.empty(), told, !marked};
}

// The proposed keyword is made a high one. Shows when the list lacks one of `listed` keywords.
template <LRESULT Listed>
Outcome SaveKeyword() {
    const std::wstring path = kFolder + L"fj.a.flt";
    KeywordDialogState state;
    bool listed = false;
    UseNextDialog([&](HWND dialog) {
        listed = SendDlgItemMessageW(dialog, IDC_KEYWORD, CB_GETCOUNT, 0, 0) == Listed;
        SendDlgItemMessageW(dialog, IDC_KEYWORD_NORMAL, BM_SETCHECK, BST_UNCHECKED, 0);
        SendDlgItemMessageW(dialog, IDC_KEYWORD_HIGH, BM_SETCHECK, BST_CHECKED, 0);
        SendMessageW(dialog, WM_COMMAND, IDOK, 0);
    });
    const bool saved =
        RunKeywordDialog(state, GetModuleHandleW(nullptr), nullptr, path.c_str(), L"five") == 1;
    return {saved, TakeBoxes(), !listed};
}

void PutSettings() {
    PutCurrent();
    Settings settings;
    CopyCut(settings.Server, kServerSize, L"news.example");
    CopyCut(settings.DataPath, kDataPathSize, kFolder.c_str());
    settings.Limit = 20;
    settings.UserID = CopyText("taro");
    settings.Password = CopyText("himitsu");
    settings.UserName = CopyText("Taro");
    settings.EditorPath = CopyText(L"\\edit.exe");
    EXPECT_TRUE(SaveSettings(settings));
}

// What cannot be loaded is not stored.
Outcome ChangeSettings() {
    Settings settings;
    bool complete = false;
    const bool loaded = LoadSettings(settings, complete);
    settings.Limit = 30;
    return {loaded && SaveSettings(settings), LastNumber()};
}

// The machine works again after a start that failed, and the user goes on without a new one.
template <Outcome (*Next)()>
Outcome StartThen() {
    const Outcome started = Start();
    machine.fault = nullptr;
    return Both(started, Next());
}

std::vector<Operation> MakeOperations() {
    std::vector<Operation> operations = {
        {"start in a new folder", PutNewGroups, Start},
        {"download of two groups", PutCurrent, DownloadBoth},
        {"catch-up of the stored articles", PutCurrent, CatchUpLocal},
        {"catch-up on the server", PutCurrent, CatchUpServer},
        {"reading: marks set and cleared", PutCurrent, Read},
        {"deletion of the read articles", PutCurrent, Delete},
        {"deletion that is tried twice", PutCurrent, DeleteTwice},
        {"priorities after a change of keywords", PutOtherKeywords, ChangeKeywords},
        {"priorities after a save of keywords cut off", PutCutOffKeywords, ChangeKeywords},
        {"download of the group list", PutCurrent, FetchListOf, true},
        {"subscribe dialog", PutCurrent, Subscribe, true},
        {"keyword dialog", PutCurrent, SaveKeyword<3>, false, true},
        {"keyword dialog, first keyword", PutNoKeywords, SaveKeyword<1>, false, true},
        {"settings", PutSettings, ChangeSettings, false, true},
    };
    for (const auto& [name, state] : kStates) {
        const auto put = [state = state] { PutFolder(state); };
        operations.push_back({"start: " + name, put, Start});
        if (state < GroupIs::kUpgradeCutOff) continue;
        operations.push_back({"start, then download: " + name, put, StartThen<DownloadBoth>});
        operations.push_back({"start, then deletion: " + name, put, StartThen<Delete>});
    }
    return operations;
}

}  // namespace

const std::vector<Operation>& Operations() {
    static const std::vector<Operation> operations = MakeOperations();
    return operations;
}

Outcome Start() {
    Frame program;
    const bool done = ReloadData(program.frame);
    return {done, TakeBoxes()};
}

Outcome Download(const std::vector<std::wstring>& groups, const std::function<void(Settings&)>& prepare) {
    Frame program;
    AppFrame& frame = program.frame;
    Settings& settings = frame.settings;
    CopyCut(settings.Server, kServerSize, L"127.0.0.1");
    settings.Port = 119;
    settings.Limit = 100;
    if (prepare) prepare(settings);
    listRows = groups;
    StartRun(frame);
    settings.Limit = settings.Port = 0;  // what the user changes now is not this run's
    RunThreads();
    const std::string bar = frame.job ? BarOf(frame.job->progress.dialog.Get()) : "";
    if (frame.job) FinishRun(frame, frame.job);
    const std::string told = TakeBoxes();
    constexpr char kDone[] = "Disconnect: ダウンロードが終了しました。\n";
    return {told == kDone, told == kDone ? "" : told, false, bar};
}

// The texts of the conversation bear no number.
Outcome FetchList(const char* user, const char* password) {
    const std::wstring active = kFolder + L"active.dat", category = kFolder + L"category.dat";
    RunGroupListDownload(GetModuleHandleW(nullptr), nullptr,
                         {active.c_str(), category.c_str(), L"127.0.0.1", 119, user, password});
    const std::string told = TakeBoxes();
    return {told.empty(), told, told.find('(') == std::string::npos};
}

std::string ReplyOf(const std::vector<Article>& articles, const std::string& command) {
    if (command == "QUIT") return "205 bye\r\n";
    if (command.rfind("GROUP ", 0) == 0)
        return "211 1 1 " + std::to_string(articles.back().number) + command.substr(5) + "\r\n";
    for (const Article& article : articles) {
        const std::string number = std::to_string(article.number);
        if (command == "HEAD " + number) return "221 " + number + " head\r\n" + HeadOf(article) + ".\r\n";
        if (command == "BODY " + number) return "222 " + number + " body\r\n" + article.body + ".\r\n";
    }
    return "430 no such article\r\n";
}

bool OpenEachGroup() {
    bool opened = true;
    for (const std::wstring& group : kGroups) {
        ArticleList list;
        opened = OpenArticleList(list, kFolder.c_str(), group.c_str()) && BuildArticleList(list, 3) &&
                 CloseArticleList(list) && opened;
    }
    return opened;
}

bool LoadKeywords() {
    for (const std::wstring& group : kGroups) {
        KeywordFilter filter;
        if (!LoadKeywordFilter(filter, (kFolder + group + L".flt").c_str())) return false;
    }
    return true;
}
