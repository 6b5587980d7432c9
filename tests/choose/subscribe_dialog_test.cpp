// Choosing groups, through the dialog's own controls.
#include "subscribe/subscribe_dialog.h"

#include <gmock/gmock.h>

#include <array>

#include "files/data_file.h"
#include "resources/resource.h"
#include "tests/choose/dialog_user.h"
#include "tests/support/file_faults.h"
#include "tests/support/scripted_server.h"
#include "tests/support/secret_watch.h"
#include "tests/support/temp_folder.h"

namespace {

using testing::ElementsAreArray;
using testing::IsEmpty;
using Lines = std::vector<std::string>;

const std::string kNippon = "fj.\x93\xFA\x96\x7B";
const Lines kActive = {"junk",     "fj.test", "fjx.test", "alt.test", kNippon,
                       "fj.a:b",   "fj.comp", "fj.a/b",   "fj.a?",    "fj.ab",
                       "alt.\x01", "fj.ba",   "Fj.other", "",         "fj." + std::string(297, 'x')};

std::string AsFile(const Lines& lines) {
    std::string file;
    for (const std::string& line : lines)
        file += line + "\r\n";
    return file;
}

// The file of names that came in this order: 91 chains by the names' bytes, each from its newest name on.
std::string InHashOrder(const Lines& names) {
    std::array<std::string, 91> chains;
    for (const std::string& name : names) {
        unsigned hash = 0;
        for (const char byte : name)
            hash ^= static_cast<unsigned char>(byte) < 0x80 ? static_cast<unsigned char>(byte)
                                                            : 0xFFFFFF00u | static_cast<unsigned char>(byte);
        std::string& chain = chains[hash % 91];
        chain = name + "\r\n" + chain;
    }
    std::string file;
    for (const std::string& chain : chains)
        file += chain;
    return file;
}

HWND ListOf(HWND dialog) {
    return GetDlgItem(dialog, IDC_SUBSCRIBE_LIST);
}

// A row as it shows: its text, and '*' with the mark of a subscribed group.
std::string Row(HWND list, int row) {
    wchar_t text[256] = L"";
    LVITEMW item = {};
    item.mask = LVIF_TEXT | LVIF_IMAGE;
    item.iItem = row;
    item.pszText = text;
    item.cchTextMax = 256;
    SendMessageW(list, LVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item));
    return Utf8(text) + (item.iImage == 1 ? "*" : item.iImage == 0 ? "" : "?");
}

int CountRows(HWND list) {
    return static_cast<int>(SendMessageW(list, LVM_GETITEMCOUNT, 0, 0));
}

std::string Rows(HWND list) {
    std::string rows = "?";
    for (int row = 0; row < CountRows(list); ++row)
        rows += " " + Row(list, row);
    return rows;
}

bool DoubleClick(HWND list, int x, int y) {
    for (const UINT message : {WM_LBUTTONDOWN, WM_LBUTTONUP, WM_LBUTTONDBLCLK, WM_LBUTTONUP})
        PostMessageW(list, message, message == WM_LBUTTONUP ? 0 : MK_LBUTTON, MAKELPARAM(x, y));
    return true;
}

bool DoubleClickRow(HWND list, const std::string& name) {
    int row = 0;
    while (row < CountRows(list) && Row(list, row) != name && Row(list, row) != name + "*")
        ++row;
    EXPECT_LT(row, CountRows(list)) << name << " is not offered";
    SendMessageW(list, LVM_ENSUREVISIBLE, static_cast<WPARAM>(row), FALSE);
    RECT place = {LVIR_LABEL, 0, 0, 0};
    SendMessageW(list, LVM_GETITEMRECT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&place));
    return DoubleClick(list, place.left + 4, (place.top + place.bottom) / 2);
}

const struct {
    const char* word;
    int id;
} kButtons[] = {{"OK", IDOK},
                {"cancel", IDCANCEL},
                {"download", IDC_SUBSCRIBE_DOWNLOAD},
                {"back", IDC_SUBSCRIBE_CATEGORIES}};

// A button's word presses it, as a click does that gives it the focus; "? a b*" are the rows that must show,
// b marked; "on back" and "off back" say whether the way back is open, "focus" and an id who has the focus,
// "below" is the empty space in the list. All else is a row to double-click.
bool Play(HWND dialog, const std::string& part) {
    const HWND list = ListOf(dialog);
    for (const auto& button : kButtons) {
        if (part != button.word) continue;
        SetFocus(GetDlgItem(dialog, button.id));
        Press(dialog, button.id);
        return true;
    }
    RECT area{};
    GetClientRect(list, &area);
    if (part == "below") return DoubleClick(list, 20, area.bottom - 4);
    const bool back = IsWindowEnabled(GetDlgItem(dialog, IDC_SUBSCRIBE_CATEGORIES)) != 0;
    if (part == "on back" || part == "off back") {
        EXPECT_EQ(back, part == "on back");
    } else if (part.rfind("focus ", 0) == 0) {
        EXPECT_EQ(GetDlgCtrlID(GetFocus()), std::stoi(part.substr(6)));
    } else if (part.front() == '?') {
        EXPECT_EQ(Rows(list), part);
    } else {
        return DoubleClickRow(list, part);
    }
    return true;
}

class SubscribeTest : public testing::Test {
  protected:
    void SetUp() override {
        folder_.Write(L"active.dat", AsFile(kActive));
        folder_.Write(L"category.dat", "junk\r\nfj\r\nfjx\r\nalt\r\n");
    }

    void PutGroups(const std::string& file) { folder_.Write(L"group.dat", file); }
    std::string Groups() const { return folder_.Read(L"group.dat"); }

    // 1 after OK, 2 after Cancel.
    void Run(const std::string& script, const Lines& boxes = {}, const std::vector<UserStep>& between = {}) {
        SubscribeState state;
        state.activePath = active_.c_str();
        state.categoryPath = category_.c_str();
        state.groupPath = group_.c_str();
        state.server = L"127.0.0.1";
        state.port = port_;
        state.user = "taro";
        std::vector<UserStep> steps = Steps(IDC_SUBSCRIBE_LIST, script, Play);
        steps.insert(steps.begin() + 1, between.begin(), between.end());
        DialogUser user(steps);
        const INT_PTR result = RunSubscribeDialog(state, GetModuleHandleW(nullptr), nullptr);
        EXPECT_EQ(result, script.substr(script.size() - 2) == "OK" ? 1 : 2);
        EXPECT_THAT(user.boxes, ElementsAreArray(boxes));
        EXPECT_FALSE(state.subscriptions.heap);
    }

    TempFolder folder_;
    std::wstring active_ = folder_.FilePath(L"active.dat");
    std::wstring category_ = folder_.FilePath(L"category.dat");
    std::wstring group_ = folder_.FilePath(L"group.dat");
    unsigned short port_ = 0;
};

const Lines kWild = {"# a comment", "fj.ab", "", "gone.group", kNippon, "fj.ba", "fj.ab", "\xB1.\xC0"};

struct ChoiceCase {
    const char* sentence;
    Lines before;
    const char* script;
    Lines added;  // what the file holds afterwards, in the order in which it came; empty: as before
};

const ChoiceCase kChoices[] = {
    {"categories are sorted and unmarked", {"fj"}, "? alt fj fjx junk | off back | focus 1015 | cancel", {}},
    {"a category lists what begins like it, in its own case, but no name that can be no file's",
     {"fj.ba"},
     "fj | ? fj.ab fj.ba* fj.comp fj.test fj.日本 fjx.test | on back | back | off back | focus 1015 | alt | "
     "? alt.test | "
     "cancel",
     {}},
    {"what was chosen is remembered while other categories show",
     {},
     "fj | fj.test | fj.日本 | fj.ba | fj.ab | back | junk | junk | ? junk* | back | fj | "
     "? fj.ab* fj.ba* fj.comp fj.test* fj.日本* fjx.test | OK",
     {"fj.test", kNippon, "fj.ba", "fj.ab", "junk"}},
    {"comments, empty lines, vanished groups, any bytes and repeated names survive", kWild, "OK", kWild},
    {"a name that stands twice is left once at a time",
     {"fj.ab", "fj.ab"},
     "fj | fj.ab | back | fj | ? fj.ab* fj.ba fj.comp fj.test fj.日本 fjx.test | OK",
     {"fj.ab"}},
    {"without a row under it a double click does nothing",
     {"fj.ab"},
     "below | ? alt fj fjx junk | OK",
     {"fj.ab"}},
    {"Cancel writes nothing", {"fj.ba", "fj.ab"}, "fj | fj.test | cancel", {}},
};

TEST_F(SubscribeTest, ChoicesAreWrittenInTheOrderOfTheHash) {
    for (const ChoiceCase& row : kChoices) {
        SCOPED_TRACE(row.sentence);
        PutGroups(AsFile(row.before));
        Run(row.script);
        EXPECT_EQ(Groups(), row.added.empty() ? AsFile(row.before) : InHashOrder(row.added));
    }
}

TEST_F(SubscribeTest, OverlongLinesStayInTheFile) {
    const std::string longest(1022, 'x');
    const std::string lines[] = {longest + "y\r\n", "a\rb" + std::string(5000, '\0') + "\n",
                                 std::string(2000, 'z')};
    PutGroups("fj.ab\r\n" + lines[0] + longest + "\r\n" + lines[1] + "fj.ba\r\n" + lines[2]);
    Run("fj | ? fj.ab* fj.ba* fj.comp fj.test fj.日本 fjx.test | fj.test | OK");
    EXPECT_EQ(Groups(), InHashOrder({"fj.ab", longest, "fj.ba", "fj.test"}) + lines[0] + lines[1] + lines[2]);
}

TEST_F(SubscribeTest, AFileThatWasNotReadWholeIsNotWrittenOver) {
    constexpr int kAllReads = 99;
    const struct {
        const char* sentence;
        std::string file;
        bool held;  // by another program, while the dialog reads it
        int reads;  // that succeed
        const char* box;
    } rows[] = {
        {"held by another program", "fj.test\r\n", true, kAllReads, "グループファイルが開けません(32)"},
        {"more names than the set can hold", AsFile(Lines(30000, std::string(40, 'x'))), false, kAllReads,
         "グループファイルが開けません(Load:8)"},
        {"a bad spot", "fj.test\r\n", false, 0, "グループファイルが開けません(Load:23)"},
        {"a bad spot in a line that is too long", std::string(20000, 'x') + "\r\nfj.test\r\n", false, 1,
         "グループファイルが開けません(Load:23)"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sentence);
        PutGroups(row.file);
        DataFile held;
        ASSERT_TRUE(!row.held || OpenDataFile(held, group_.c_str(), FileMode::kReadAlone));
        const FileCalls reads(FileCall::kRead, ERROR_CRC, row.reads + 1);
        const std::string error = row.held ? "(32)" : row.reads < kAllReads ? "(23)" : "(8)";
        Run("? | OK",
            {std::string("x|PELNOR|") + row.box, "x|PELNOR|グループファイルが開けませんでした" + error},
            {{IDC_SUBSCRIBE_LIST, [&](HWND) { return CloseDataFile(held); }}});
        EXPECT_EQ(Groups(), row.file);
    }
}

TEST_F(SubscribeTest, ListsThatCannotBeOpenedStayAsTheyAre) {
    PutGroups("");
    DeleteFileW(active_.c_str());
    // The categories then pass for groups.
    Run("fj | ? alt fj fjx junk | junk | ? alt fj fjx junk* | OK");
    EXPECT_EQ(Groups(), "junk\r\n");
    DeleteFileW(category_.c_str());
    Run("? | focus 1016 | cancel");
}

bool PlayPrompt(HWND prompt, const std::string& part) {
    SetDlgItemTextW(prompt, IDC_PASSWORD_EDIT, L"hi mitsu");
    Press(prompt, part == "OK" ? IDOK : IDCANCEL);
    return true;
}

TEST_F(SubscribeTest, AFirstStartLeadsToTheDownload) {
    folder_.Write(L"active.dat", "");
    folder_.Write(L"category.dat", "");
    ScriptedServer server(
        Script("S: 200 hi\nC: authinfo user taro\nC:\nS: 381\nC: authinfo pass hi mitsu\nC:\nS: 281\n"
               "C: LIST active\nS: 215 list\nS: fj.test 1 1 y\nS: " +
               kNippon + " 1 1 y\nS: alt.test 1 1 y\nS: .\n"));
    port_ = server.Start();
    const SecretWatch watch("hi mitsu");
    Run("download | ? alt fj | fj | ? fj.test fj.日本 | fj.日本 | on back | OK",
        {"x|PELNOR|グループファイルが開けません(2)"}, Steps(IDC_PASSWORD_EDIT, "OK", PlayPrompt));
    EXPECT_EQ(watch.found, 0) << "a password was left in memory";
    EXPECT_THAT(server.Finish(), IsEmpty());
    EXPECT_EQ(folder_.Read(L"category.dat"), AsFile({"fj", "alt"}));
    EXPECT_EQ(Groups(), AsFile({kNippon}));
    // A prompt that is cancelled fetches nothing.
    Run("download | cancel", {}, Steps(IDC_PASSWORD_EDIT, "cancel", PlayPrompt));
    EXPECT_EQ(folder_.Read(L"category.dat"), AsFile({"fj", "alt"}));
}

}  // namespace
