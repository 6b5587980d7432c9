// Editing keywords, through the dialog's own controls.
#include "keywords/keyword_dialog.h"

#include <gmock/gmock.h>

#include "files/data_file.h"
#include "resources/resource.h"
#include "tests/choose/dialog_user.h"
#include "tests/support/file_faults.h"
#include "tests/support/temp_folder.h"

namespace {

using testing::ElementsAreArray;

const char* const kNone = "(no file)";

LRESULT Ask(HWND combo, UINT message, LRESULT item = 0, void* result = nullptr) {
    return SendMessageW(combo, message, static_cast<WPARAM>(item), reinterpret_cast<LPARAM>(result));
}

std::string ItemText(HWND combo, LRESULT item) {
    wchar_t text[2048] = L"";
    Ask(combo, CB_GETLBTEXT, item, text);
    return Utf8(text);
}

// What shows: each keyword with its priority ('+', '-', '='), the selected one in brackets, then the edit
// field and the checked button.
std::string Describe(HWND dialog) {
    const HWND combo = GetDlgItem(dialog, IDC_KEYWORD);
    std::string shown;
    for (LRESULT item = 0; item < Ask(combo, CB_GETCOUNT); ++item) {
        const std::string text = ItemText(combo, item) + "=-+"[Ask(combo, CB_GETITEMDATA, item) % 3];
        shown += (Ask(combo, CB_GETCURSEL) == item ? "[" + text + "]" : text) + " ";
    }
    wchar_t text[2048] = L"";
    GetWindowTextW(combo, text, 2048);
    shown += "<" + Utf8(text) + ">";
    for (const int id : {IDC_KEYWORD_HIGH, IDC_KEYWORD_NORMAL, IDC_KEYWORD_LOW})
        if (IsDlgButtonChecked(dialog, id)) shown += std::string(" ") + "+=-"[id - IDC_KEYWORD_HIGH];
    return shown;
}

bool Type(HWND edit, const std::wstring& text) {
    PostMessageW(edit, EM_SETSEL, 0, -1);
    PostMessageW(edit, WM_CLEAR, 0, 0);
    for (const wchar_t unit : text)
        PostMessageW(edit, WM_CHAR, unit, 1);
    return true;
}

// With the arrow keys.
bool Choose(HWND combo, HWND edit, const std::string& keyword) {
    LRESULT goal = 0;
    while (goal < Ask(combo, CB_GETCOUNT) && ItemText(combo, goal) != keyword)
        ++goal;
    EXPECT_LT(goal, Ask(combo, CB_GETCOUNT)) << keyword;
    for (LRESULT at = Ask(combo, CB_GETCURSEL); at != goal; at += at < goal ? 1 : -1)
        PostMessageW(edit, WM_KEYDOWN, at < goal ? VK_DOWN : VK_UP, 1);
    return true;
}

const struct {
    const char* word;
    int id;
} kButtons[] = {{"OK", IDOK},
                {"cancel", IDCANCEL},
                {"high", IDC_KEYWORD_HIGH},
                {"normal", IDC_KEYWORD_NORMAL},
                {"low", IDC_KEYWORD_LOW}};

// A button's word presses it; "choose a" takes a keyword from the list, "type a" writes one over what stands
// in the field; all else is what must show.
bool Play(HWND dialog, const std::string& part) {
    const HWND combo = GetDlgItem(dialog, IDC_KEYWORD);
    const HWND edit = FindWindowExW(combo, nullptr, L"Edit", nullptr);
    for (const auto& button : kButtons) {
        if (part == button.word) Press(dialog, button.id);
        if (part == button.word) return true;
    }
    if (part.rfind("choose ", 0) == 0) return Choose(combo, edit, part.substr(7));
    if (part.rfind("type ", 0) == 0) return Type(edit, Wide(part.substr(5)));
    EXPECT_EQ(Describe(dialog), part);
    return true;
}

class KeywordDialogTest : public testing::Test {
  protected:
    void Put(const std::string& file) {
        if (file == kNone) {
            DeleteFileW(path_.c_str());
        } else {
            folder_.Write(L"fj.test.flt", file);
        }
    }
    std::string File() const { return folder_.Has(L"fj.test.flt") ? folder_.Read(L"fj.test.flt") : kNone; }

    // 1 when the file was replaced, else 2.
    INT_PTR Run(const wchar_t* proposed, const std::string& script,
                const std::vector<std::string>& boxes = {}) {
        KeywordDialogState state;
        DialogUser user(Steps(IDC_KEYWORD, script, Play));
        const INT_PTR result =
            RunKeywordDialog(state, GetModuleHandleW(nullptr), nullptr, path_.c_str(), proposed);
        EXPECT_THAT(user.boxes, ElementsAreArray(boxes));
        return result;
    }

    TempFolder folder_;
    const std::wstring path_ = folder_.FilePath(L"fj.test.flt");
};

// "日本語" in Shift_JIS.
const std::string kNihongo = "\x93\xFA\x96\x7B\x8C\xEA";

// Lines that the filter does not read, and that the dialog does not either.
const std::string kUnread = "+ " + std::string(510, 'a') + "\r\n";
const std::string kOverlong = "- " + std::string(1100, 'x') + "\r\n";

struct EditCase {
    const char* sentence;
    std::string before;
    std::wstring proposed;
    std::string script;
    std::string after;
};

const EditCase kEdits[] = {
    {"a proposal becomes a keyword by its priority", kNone, L"日本語",
     "[日本語=] <日本語> = | high | [日本語+] <日本語> + | OK", "+ " + kNihongo + "\r\n"},
    {"a proposal that is left normal is not kept", "- b\r\n", L"日本語", "OK", "- b\r\n"},
    {"the file's order is the list's, not that of before", "+ c\r\n- a\r\n+ " + kNihongo + "\r\n- b\r\n",
     L"aa", "a- [aa=] b- c+ 日本語+ <aa> = | low | OK",
     "- a\r\n- aa\r\n- b\r\n+ c\r\n+ " + kNihongo + "\r\n"},
    {"a chosen keyword shows its priority", "+ b\r\n- " + kNihongo + "\r\n", L"a",
     "choose b | a= [b+] 日本語- <b> + | choose 日本語 | a= b+ [日本語-] <日本語> - | choose a | "
     "[a=] b+ 日本語- <a> = | cancel",
     "+ b\r\n- " + kNihongo + "\r\n"},
    {"normal takes a keyword out of the file", "+ b\r\n- c\r\n", L"a", "choose b | normal | OK", "- c\r\n"},
    {"a typed one is added when it gets its priority", "+ b\r\n", L"a",
     "type 新語 | low | a= b+ [新語-] <新語> - | OK", "+ b\r\n- \x90\x56\x8C\xEA\r\n"},
    {"a typed one is added by OK too", "+ b\r\n", L"a", "high | type new | OK", "+ a\r\n+ b\r\n+ new\r\n"},
    {"an empty field makes an empty keyword", kNone, L"a", "type  | high | OK", "+ \r\n"},
    {"Cancel leaves every byte", "x y\r\n\r\n+\r\nno end", L"a", "high | type new | low | cancel",
     "x y\r\n\r\n+\r\nno end"},
    {"a line too short for a keyword does not become an empty one, which matches everything",
     "+\r\n-\r\n+ a\r\n", L"b", "OK", "+ a\r\n"},
    {"a proposal ends with its first line: each line of the file is a keyword", "- c\r\n", L"a\r\nxyz",
     "[a=] c- <a> = | high | OK", "+ a\r\n- c\r\n"},
    {"lines of any form are brought into the one form", "x y\r\n\r\n+-z\r\n+ no end", L"a", "OK",
     "+ no end\r\n- y\r\n+ z\r\n"},
    {"a proposal that is a keyword already stands twice", "+ a\r\n", L"a", "[a+] a= <a> = | low | OK",
     "- a\r\n"},
    {"a long proposal is cut to what the filter reads, between two characters", "- b\r\n",
     std::wstring(506, L'a') + L"日本", "high | OK", "+ " + std::string(506, 'a') + "\r\n- b\r\n"},
    {"no more can be typed than the filter reads", "- b\r\n", L"a",
     "type " + std::string(255, 'q') + " | low | OK", "- b\r\n- " + std::string(253, 'q') + "\r\n"},
    {"a line that the filter does not read keeps no other from it", kUnread + "- b\r\n", L"c", "high | OK",
     "- b\r\n+ c\r\n" + kUnread},
    {"what stands from an overlong line on stays", "+ c\r\n" + kOverlong + "+ d\r\nno end", L"a",
     "[a=] c+ <a> = | low | OK", "- a\r\n+ c\r\n" + kOverlong + "+ d\r\nno end"},
};

TEST_F(KeywordDialogTest, KeywordsAreEdited) {
    for (const EditCase& row : kEdits) {
        SCOPED_TRACE(row.sentence);
        Put(row.before);
        EXPECT_EQ(Run(row.proposed.c_str(), row.script),
                  row.script.find("cancel") == std::string::npos ? 1 : 2);
        EXPECT_EQ(File(), row.after);
        EXPECT_FALSE(folder_.Has(L"fj.test.flt~"));
    }
}

// The old file stays until the new one is complete.
TEST_F(KeywordDialogTest, FailuresAreToldAndLeaveTheOldFile) {
    const std::string old = "+ b\r\n- " + kNihongo + "\r\n";
    Put(old);
    DataFile held;
    ASSERT_TRUE(OpenDataFile(held, path_.c_str(), FileMode::kReadAlone));
    EXPECT_EQ(Run(L"a", "[a=] <a> = | cancel", {"x|" + Utf8(path_) + "|ファイルが開けませんでした(32)"}), 2);
    CloseDataFile(held);
    {
        const FileCalls calls(FileCall::kWrite, ERROR_DISK_FULL);
        EXPECT_EQ(
            Run(L"a", "high | OK", {"x|" + Utf8(path_) + "~|フィルタファイルが書き込めませんでした(112)"}),
            2);
    }
    EXPECT_EQ(File(), old);
    EXPECT_EQ(Run(L"a", "high | OK"), 1);
    EXPECT_EQ(File(), "+ a\r\n" + old) << "what the failure left is no hindrance";
    EXPECT_FALSE(folder_.Has(L"fj.test.flt~"));
}

}  // namespace
