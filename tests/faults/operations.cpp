#include "tests/faults/operations.h"

#include "filters/keyword_dialog.h"
#include "filters/keyword_filter.h"
#include "nntp/session.h"
#include "resources/resource.h"
#include "settings/settings_sheet.h"
#include "shell/reload.h"
#include "store/article_list.h"
#include "store/delete_read.h"
#include "store/index.h"
#include "subscribe/group_file.h"
#include "subscribe/group_list.h"
#include "subscribe/subscribe_dialog.h"
#include "tests/faults/faults.h"
#include "tests/faults/folder_state.h"
#include "tests/faults/news_server.h"
#include "tests/store/group_files.h"
#include "text/convert.h"

const std::vector<std::wstring> kGroups = {L"fj.a", L"fj.b"};

namespace {

// The folder.

struct Article {
    uint32_t number;
    const char* subject;
    uint32_t flags;   // 1 read, 2 low, 4 high
    size_t bodySize;  // more than a sector, more than the program's buffer
};
const std::vector<Article> kFirst = {{1, "one", 1, 20},
                                     {2, "Re: two", 4, 700},
                                     {3, "three", 3, 20000},
                                     {4, "two again", 5, 9},
                                     {5, "five", 0, 20000}};
const std::vector<Article> kSecond = {{7, "seven", 1, 9}, {8, "eight", 0, 300}, {9, "three", 2, 9}};
const std::vector<Article> kNew = {{6, "two", 0, 20000}, {7, "seven", 0, 10}, {8, "three", 0, 600}};

std::string Head(const Article& article) {
    return std::string("From: a@b.jp (Taro)\r\nSubject: ") + article.subject + "\r\nDate: 5 Mar 1998\r\n";
}

std::string Body(const Article& article) {
    std::string body;
    while (body.size() < article.bodySize)
        body += std::string(60, static_cast<char>('a' + article.number)) + "\r\n";
    return body;
}

std::string LogOf(const std::vector<Article>& articles, std::vector<RecordBytes>& records) {
    std::string log;
    for (const Article& article : articles) {
        const auto start = static_cast<uint32_t>(log.size());
        log += Head(article) + "X-Local-Seq: " + std::to_string(article.number) + "\r\n\r\n" + Body(article) +
               "================\r\n";
        RecordBytes record{article.flags,   article.number, start, static_cast<uint32_t>(log.size()) - start,
                           article.subject, "0305",         "Taro"};
        record.textOffset = start + 21 + 9;
        record.textLength = static_cast<uint32_t>(std::string(article.subject).size());
        records.push_back(record);
    }
    return log;
}

HeaderBytes HeaderOf(const std::vector<Article>& articles, uint32_t version) {
    HeaderBytes header;
    header.version = version;
    header.lastFetched = header.serverLast = articles.back().number;
    header.recordCount = static_cast<uint32_t>(articles.size());
    header.status = "5 new";
    for (const Article& article : articles) {
        header.unread += !(article.flags & 1);
        header.high += (article.flags & 6) == 4;
        header.low += (article.flags & 6) == 2;
    }
    return header;
}

std::string IndexOf(const std::vector<Article>& articles, const std::vector<RecordBytes>& records,
                    uint32_t version) {
    if (version == 1) return "5\r\nnew\r\n5\r\n0\r\n";
    std::string bytes = Bytes(HeaderOf(articles, version));
    for (const RecordBytes& record : records) {
        const std::string whole = Bytes(record);
        bytes += version == 5   ? whole
                 : version == 4 ? whole.substr(0, 84)
                                : whole.substr(0, 16) + std::string(48, '#');
    }
    return bytes;
}

// Version 0: no index.
void PutGroup(const TempFolder& folder, const std::wstring& name, const std::vector<Article>& articles,
              uint32_t version) {
    std::vector<RecordBytes> records;
    folder.Write(name + L".log", LogOf(articles, records));
    folder.Write(name + L".flt", "+ two\r\n- three\r\n");
    if (version > 0) folder.Write(name + L".idx", IndexOf(articles, records, version));
}

template <uint32_t Version>
void PutFolder(const TempFolder& folder) {
    CreateDirectoryW(folder.FilePath(L"draft").c_str(), nullptr);
    folder.Write(L"draft\\old.bak", "x");
    folder.Write(L"active.dat", "fj.a\r\nfj.b\r\nfj.c\r\n");
    folder.Write(L"category.dat", "fj\r\n");
    folder.Write(L"group.dat", "fj.a\r\nfj.b\r\n");
    PutGroup(folder, kGroups[0], kFirst, Version);
    PutGroup(folder, kGroups[1], kSecond, 5);
}

void PutNewGroups(const TempFolder& folder) {
    folder.Write(L"group.dat", "fj.a\r\nfj.b\r\n");
}

void PutOtherKeywords(const TempFolder& folder) {
    PutFolder<5>(folder);
    for (const std::wstring& group : kGroups)
        folder.Write(group + L".flt", "+ three\r\n+ five\r\n- one\r\n");
}

bool DeleteInAllGroups(const TempFolder& folder, std::string& told);

// A deletion that the end of the program, or a failure, cut off while its files took their places: so far
// only the old log has gone (1), the new log stands (2), or the old index has gone too (3).
template <int Step>
void PutCutOffDeletion(const TempFolder& folder) {
    PutFolder<5>(folder);
    const std::string oldIndex = folder.Read(L"fj.a.idx");
    std::string told;
    DeleteInAllGroups(folder, told);
    MoveFileW(folder.FilePath(L"fj.a.idx").c_str(), folder.FilePath(L"fj.a.id~").c_str());
    if (Step == 1) MoveFileW(folder.FilePath(L"fj.a.log").c_str(), folder.FilePath(L"fj.a.lo~").c_str());
    if (Step < 3) folder.Write(L"fj.a.idx", oldIndex);
}

void PutCutOffUpgrade(const TempFolder& folder) {
    PutFolder<5>(folder);
    MoveFileW(folder.FilePath(L"fj.a.idx").c_str(), folder.FilePath(L"fj.a.idx~").c_str());
}

void PutCutOffKeywords(const TempFolder& folder) {
    PutOtherKeywords(folder);
    MoveFileW(folder.FilePath(L"fj.a.flt").c_str(), folder.FilePath(L"fj.a.flt~").c_str());
}

// The outcome.

std::string LastNumber() {
    return "(" + std::to_string(GetLastError()) + ")";
}

Outcome Answer(bool done) {
    Outcome outcome{done, done ? "" : LastNumber(), false};
    outcome.told += TakeBoxes();
    return outcome;
}

Outcome Both(const Outcome& first, const Outcome& second) {
    return {first.done && second.done, first.told + second.told, first.shows || second.shows};
}

template <class Change>
Outcome InEachGroup(const TempFolder& folder, const Change& change) {
    Outcome outcome;
    outcome.done = true;
    for (const std::wstring& group : kGroups) {
        GroupStore store;
        const bool done = SetNames(store, folder.Path().c_str(), group.c_str()) && change(store);
        outcome = Both(outcome, Answer(done));
    }
    return outcome;
}

// The program.

HWND NewList() {
    InitCommonControls();
    const HWND list =
        CreateWindowExW(0, WC_LISTVIEWW, L"", LVS_REPORT, 0, 0, 200, 200, nullptr, nullptr, nullptr, nullptr);
    LVCOLUMNW column = {};
    SendMessageW(list, LVM_INSERTCOLUMNW, 0, reinterpret_cast<LPARAM>(&column));
    return list;
}

struct Frame {
    AppFrame frame;
    explicit Frame(const TempFolder& folder) {
        frame.groupView = std::make_unique<GroupView>();
        frame.groupView->list = NewList();
        CopyCut(frame.settings.DataPath, kDataPathSize, folder.Path().c_str());
    }
    ~Frame() { DestroyWindow(frame.groupView->list); }
};

Outcome Start(const TempFolder& folder) {
    Frame program(folder);
    const bool done = ReloadData(program.frame);
    return {done, TakeBoxes(), false};
}

std::string ArticleReply(const std::vector<Article>& articles, const std::string& command) {
    const uint32_t number = static_cast<uint32_t>(std::stoul(command.substr(5)));
    for (const Article& article : articles) {
        if (article.number != number) continue;
        if (command[0] == 'H') return "221 head\r\n" + Head(article) + ".\r\n";
        return "222 body\r\n" + Body(article) + ".\r\n";
    }
    return "430 no such article\r\n";
}

std::string Reply(const std::string& command) {
    static bool inFirstGroup = true;
    if (command.rfind("GROUP ", 0) == 0) {
        inFirstGroup = command == "GROUP fj.a";
        return inFirstGroup ? "211 8 1 8 fj.a\r\n" : "211 11 1 11 fj.b\r\n";
    }
    if (command == "LIST active") return "215 list\r\nfj.a 1 1 y\r\njunk 1 1 y\r\nfj.z 1 1 y\r\n.\r\n";
    if (command == "QUIT") return "205 bye\r\n";
    if (inFirstGroup) return ArticleReply(kNew, command);
    return ArticleReply({{10, "ten", 0, 10}, {11, "three", 0, 10}}, command);
}

unsigned short ServerPort() {
    static const NewsServer server(Reply);
    return server.Port();
}

Outcome Download(const TempFolder& folder) {
    const HWND list = NewList();
    for (size_t row = 0; row < kGroups.size(); ++row) {
        LVITEMW item = {};
        item.mask = LVIF_TEXT;
        item.iItem = static_cast<int>(row);
        item.pszText = const_cast<wchar_t*>(kGroups[row].c_str());
        SendMessageW(list, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item));
    }
    GroupCursor cursor;
    cursor.list = list;
    ProgressDialog progress;
    RunResult result;
    SessionRequest request;
    request.server = {L"127.0.0.1", ServerPort(), nullptr, nullptr};
    request.folder = folder.Path().c_str();
    request.limit = 100;
    request.cursor = &cursor;
    request.progress = &progress;
    request.result = &result;
    const bool done = RunSession(request);
    DestroyWindow(list);
    if (!done) AddBox(result.text);
    return {done, TakeBoxes(), false};
}

Outcome CatchUpLocal(const TempFolder& folder) {
    return InEachGroup(folder, MarkAllRead);
}

Outcome CatchUpServer(const TempFolder& folder) {
    return InEachGroup(folder, [](GroupStore& store) {
        if (!ReadHeader(store)) return false;
        store.lastFetched = kNoneFetched;
        return WriteHeader(store);
    });
}

Outcome ChangeKeywords(const TempFolder& folder) {
    return InEachGroup(folder, Refilter);
}

bool DeleteInAllGroups(const TempFolder& folder, std::string& told) {
    bool done = true;
    for (const std::wstring& group : kGroups) {
        GroupStore store;
        if (SetNames(store, folder.Path().c_str(), group.c_str()) && DeleteRead(store)) continue;
        told += LastNumber();
        done = false;
    }
    return done;
}

// The command reads the groups again at its end.
Outcome Delete(const TempFolder& folder) {
    Outcome outcome;
    outcome.done = DeleteInAllGroups(folder, outcome.told);
    return Both(outcome, Start(folder));
}

// The user turns the marks of one group.
Outcome Read(const TempFolder& folder) {
    ArticleList list;
    list.showRead = true;
    bool done = OpenArticleList(list, folder.Path().c_str(), kGroups[0].c_str()) && BuildArticleList(list, 3);
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
    return {done && closed, told + TakeBoxes(), false};
}

Outcome FetchList(const TempFolder& folder) {
    const std::wstring active = folder.FilePath(L"active.dat"), category = folder.FilePath(L"category.dat");
    const GroupListRequest request = {active.c_str(), category.c_str(), L"127.0.0.1",
                                      ServerPort(),   nullptr,          nullptr};
    GroupListJob* job = MakeGroupListJob(request, nullptr);
    if (!job) return {false, "(8)", false};  // the dialog's own text has no number
    FetchGroupList(*job);
    if (job->errorText) AddBox(job->errorText.get());
    Outcome outcome = {!job->errorText && !job->outOfMemory, TakeBoxes(), false};
    // The texts of the conversation bear no number.
    outcome.shows = outcome.told.find('(') == std::string::npos;
    ReleaseGroupListJob(job);
    return outcome;
}

bool ChooseRow(HWND dialog, const wchar_t* name) {
    const HWND list = GetDlgItem(dialog, IDC_SUBSCRIBE_LIST);
    LVFINDINFOW wanted = {};
    wanted.flags = LVFI_STRING;
    wanted.psz = name;
    const LRESULT row =
        SendMessageW(list, LVM_FINDITEMW, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(&wanted));
    if (row < 0) return false;
    LVITEMW item = {};
    item.state = item.stateMask = LVIS_SELECTED;
    SendMessageW(list, LVM_SETITEMSTATE, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
    NMHDR notice = {list, IDC_SUBSCRIBE_LIST, static_cast<UINT>(NM_DBLCLK)};
    SendMessageW(dialog, WM_NOTIFY, IDC_SUBSCRIBE_LIST, reinterpret_cast<LPARAM>(&notice));
    item = {};
    item.mask = LVIF_IMAGE;
    item.iItem = static_cast<int>(row);
    return SendMessageW(list, LVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item)) && item.iImage == 1;
}

Outcome Subscribe(const TempFolder& folder) {
    const std::wstring active = folder.FilePath(L"active.dat"), category = folder.FilePath(L"category.dat"),
                       group = folder.FilePath(L"group.dat");
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

Outcome SaveKeywords(const TempFolder& folder) {
    const std::wstring path = folder.FilePath(L"fj.a.flt");
    KeywordDialogState state;
    bool listed = false;
    UseNextDialog([&](HWND dialog) {
        listed = SendDlgItemMessageW(dialog, IDC_KEYWORD, CB_GETCOUNT, 0, 0) == 3;
        SendDlgItemMessageW(dialog, IDC_KEYWORD_NORMAL, BM_SETCHECK, BST_UNCHECKED, 0);
        SendDlgItemMessageW(dialog, IDC_KEYWORD_HIGH, BM_SETCHECK, BST_CHECKED, 0);
        SendMessageW(dialog, WM_COMMAND, IDOK, 0);
    });
    const bool saved =
        RunKeywordDialog(state, GetModuleHandleW(nullptr), nullptr, path.c_str(), L"five") == 1;
    return {saved, TakeBoxes(), !listed};
}

void PutNoKeywords(const TempFolder& folder) {
    PutFolder<5>(folder);
    DeleteFileW(folder.FilePath(L"fj.a.flt").c_str());
}

Outcome SaveFirstKeywords(const TempFolder& folder) {
    const std::wstring path = folder.FilePath(L"fj.a.flt");
    KeywordDialogState state;
    UseNextDialog([](HWND dialog) {
        SendDlgItemMessageW(dialog, IDC_KEYWORD_NORMAL, BM_SETCHECK, BST_UNCHECKED, 0);
        SendDlgItemMessageW(dialog, IDC_KEYWORD_HIGH, BM_SETCHECK, BST_CHECKED, 0);
        SendMessageW(dialog, WM_COMMAND, IDOK, 0);
    });
    const bool saved =
        RunKeywordDialog(state, GetModuleHandleW(nullptr), nullptr, path.c_str(), L"five") == 1;
    return {saved, TakeBoxes(), false};
}

void FillSettings(Settings& settings, const TempFolder& folder) {
    CopyCut(settings.Server, kServerSize, L"news.example");
    CopyCut(settings.DataPath, kDataPathSize, folder.Path().c_str());
    CopyCut(settings.EntryName, kEntryNameSize, L"line");
    CopyCut(settings.FontName, kFontNameSize, L"Courier");
    settings.Port = 119;
    settings.Limit = 20;
    settings.UserID = CopyText("taro");
    settings.Password = CopyText("himitsu");
    settings.UserName = CopyText("Taro");
    settings.MailAddress = CopyText("taro@b.jp");
    settings.Organization = CopyText("B");
    settings.EditorPath = CopyText(L"\\edit.exe");
}

void PutSettings(const TempFolder& folder) {
    PutFolder<5>(folder);
    Settings settings;
    FillSettings(settings, folder);
    EXPECT_TRUE(SaveSettings(settings));
}

Outcome ChangeSettings(const TempFolder&) {
    Settings settings;
    bool opened = false;
    UseNextDialog([&](HWND page) { opened = SetDlgItemTextW(page, IDC_LIMIT, L"30") != 0; });
    const bool ok = RunSettingsSheet(settings, GetModuleHandleW(nullptr), nullptr) == 1;
    return {ok, TakeBoxes(), !opened};
}

// The disk works again after a start that failed, and the user goes on without a new one.
template <Outcome (*Next)(const TempFolder&)>
Outcome StartThen(const TempFolder& folder) {
    const Outcome started = Start(folder);
    EndFault();
    return Both(started, Next(folder));
}

const std::vector<Operation> kOperations = {
    {"start in a new folder", PutNewGroups, Start},
    {"start with an index of version 1", PutFolder<1>, Start},
    {"start with an index of version 2", PutFolder<2>, Start},
    {"start with an index of version 3", PutFolder<3>, Start},
    {"start with an index of version 4", PutFolder<4>, Start},
    {"start without an index: rebuild", PutFolder<0>, Start},
    {"start with all in order", PutFolder<5>, Start},
    {"start after a deletion cut off at its log", PutCutOffDeletion<1>, Start},
    {"start after a deletion cut off behind its log", PutCutOffDeletion<2>, Start},
    {"start after a deletion cut off behind its index", PutCutOffDeletion<3>, Start},
    {"start after an upgrade cut off", PutCutOffUpgrade, Start},
    {"download after a start over a deletion cut off at its log", PutCutOffDeletion<1>, StartThen<Download>},
    {"download after a start over a deletion cut off behind its log", PutCutOffDeletion<2>,
     StartThen<Download>},
    {"download after a start over a deletion cut off behind its index", PutCutOffDeletion<3>,
     StartThen<Download>},
    {"download after a start over an upgrade cut off", PutCutOffUpgrade, StartThen<Download>},
    {"reading after a start over a deletion cut off behind its index", PutCutOffDeletion<3>, StartThen<Read>},
    {"deletion after a start over a deletion cut off behind its log", PutCutOffDeletion<2>,
     StartThen<Delete>},
    {"download of two groups", PutFolder<5>, Download},
    {"catch-up of the stored articles", PutFolder<5>, CatchUpLocal},
    {"catch-up on the server", PutFolder<5>, CatchUpServer},
    {"reading: marks set and cleared", PutFolder<5>, Read},
    {"deletion of the read articles", PutFolder<5>, Delete},
    {"priorities after a change of keywords", PutOtherKeywords, ChangeKeywords},
    {"priorities after a save of keywords cut off", PutCutOffKeywords, ChangeKeywords},
    {"download of the group list", PutFolder<5>, FetchList, true},
    {"subscribe dialog", PutFolder<5>, Subscribe, true},
    {"keyword dialog", PutFolder<5>, SaveKeywords, false, true},
    {"keyword dialog, first keyword", PutNoKeywords, SaveFirstKeywords, false, true},
    {"settings", PutSettings, ChangeSettings},
};

}  // namespace

const std::vector<Operation>& Operations() {
    return kOperations;
}

bool StartProgram(const TempFolder& folder) {
    const Outcome outcome = Start(folder);
    return outcome.done && outcome.told.empty();
}

bool OpenEachGroup(const TempFolder& folder) {
    bool opened = true;
    for (const std::wstring& group : kGroups) {
        ArticleList list;
        opened = OpenArticleList(list, folder.Path().c_str(), group.c_str()) && BuildArticleList(list, 3) &&
                 CloseArticleList(list) && opened;
    }
    return opened;
}

bool LoadKeywords(const TempFolder& folder) {
    for (const std::wstring& group : kGroups) {
        KeywordFilter filter;
        if (!LoadKeywordFilter(filter, folder.FilePath(group + L".flt").c_str())) return false;
    }
    return true;
}
