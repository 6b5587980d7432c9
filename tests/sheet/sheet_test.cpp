// The sheet through its own controls: what each page shows, refuses and stores.
#include "tests/sheet/sheet_run.h"

#include <map>

#include "tests/support/secret_watch.h"

namespace {

template <class Owner>
std::string OrNone(const Owner& text) {
    return text ? text.get() : "(none)";
}

// Name to type and bytes.
std::map<std::wstring, std::string> RegistryValues() {
    std::map<std::wstring, std::string> values;
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, RegistryGuard::kKey, 0, KEY_READ, &key)) return values;
    for (DWORD i = 0;; ++i) {
        wchar_t name[64];
        BYTE bytes[1024];
        DWORD nameSize = 64, type = 0, size = sizeof bytes;
        if (RegEnumValueW(key, i, name, &nameSize, nullptr, &type, bytes, &size)) break;
        values[name] = std::to_string(type) + ":" + std::string(reinterpret_cast<char*>(bytes), size);
    }
    RegCloseKey(key);
    return values;
}

enum Kind { kEdit, kBox, kList };

struct Field {
    Page page;
    int id;
    Kind kind;
    std::wstring first;  // what a new registry shows; "1" for a checked box
    std::wstring typed;
    std::wstring again;  // what the next sheet shows
};

std::wstring Show(HWND page, const Field& field) {
    if (field.kind == kBox) return std::to_wstring(Ask(page, field.id, BM_GETCHECK));
    return TextOf(GetDlgItem(page, field.id));
}

void Enter(const SheetRun& run, HWND page, const Field& field) {
    if (field.kind == kEdit) Type(page, field.id, field.typed);
    if (field.kind == kBox) run.Check(page, field.id, field.typed == L"1");
    if (field.kind == kList) {
        run.Select(page, field.id,
                   Ask(page, field.id, CB_FINDSTRINGEXACT, static_cast<WPARAM>(-1),
                       reinterpret_cast<LPARAM>(field.typed.c_str())));
    }
}

TEST_F(SheetTest, WhatIsEnteredComesBackAndCancelStoresNothing) {
    const Field fields[] = {
        {kMain, IDC_SERVER, kEdit, L"", L"  news.a.jp ", L"news.a.jp "},
        {kMain, IDC_PORT, kEdit, L"119", L"81190", L"81190"},
        {kMain, IDC_DATA_FOLDER, kEdit, L"", folder.Path() + L"\\", folder.Path()},
        {kMain, IDC_LIMIT, kEdit, L"50", L"007", L"7"},
        {kAccount, IDC_USE_PASSWORD, kBox, L"0", L"1", L"1"},
        {kAccount, IDC_ACCOUNT_ID, kEdit, L"", L"  太郎 1", L"太郎 1"},
        {kAccount, IDC_ACCOUNT_PASSWORD, kEdit, L"", L" p\\w ", L" p\\w "},
        {kAccount, IDC_ACCOUNT_REPEAT, kEdit, L"", L" p\\w ", L" p\\w "},
        {kKeys, IDC_KEY_MODE, kBox, L"0", L"1", L"1"},
        {kKeys, IDC_AUTO_NEXT, kBox, L"1", L"0", L"0"},
        {kConnection, IDC_WAIT_TIME, kEdit, L"0", L"90", L"90"},
        {kFont, IDC_SUBJECT_SIZE, kList, L"14", L"18", L"18"},
        {kFont, IDC_ARTICLE_SIZE, kList, L"14", L"9", L"9"},
    };
    Settings abandoned, edited;
    for (Settings* settings : {&abandoned, &edited}) {
        const SheetRun run(*settings);
        for (const Field& field : fields) {
            const HWND page = run.Turn(field.page);
            EXPECT_EQ(Show(page, field), field.first) << field.id;
            Enter(run, page, field);
        }
        if (settings == &abandoned) {
            run.Turn(kMain);  // leaving a page is no reason to store it
            EXPECT_EQ(run.Close(PSBTN_CANCEL), 2);
            EXPECT_TRUE(RegistryValues().empty());
        } else {
            EXPECT_EQ(run.Close(PSBTN_OK), 1);
        }
    }
    EXPECT_EQ(edited.DataPath, folder.Path());
    const auto stored = RegistryValues();
    EXPECT_EQ(stored.size(), 20u);
    Settings again;
    const SheetRun run(again);
    for (const Field& field : fields)
        EXPECT_EQ(Show(run.Turn(field.page), field), field.again) << field.id;
    EXPECT_EQ(run.Close(PSBTN_OK), 1);
    EXPECT_EQ(RegistryValues(), stored);
}

TEST_F(SheetTest, ARefusedFieldKeepsThePageAndTheFocus) {
    const struct {
        const char* why;
        Page page;
        int id;
        std::wstring text;
    } rows[] = {
        {"no server", kMain, IDC_SERVER, L""},
        {"a port that is no number", kMain, IDC_PORT, L"80a"},
        {"no folder", kMain, IDC_DATA_FOLDER, L"  "},
        {"a folder that is not there", kMain, IDC_DATA_FOLDER, folder.FilePath(L"missing")},
        {"a negative limit", kMain, IDC_LIMIT, L"-1"},
        {"a wait that is no number", kConnection, IDC_WAIT_TIME, L"1.5"},
    };
    Store();
    const auto stored = RegistryValues();
    Settings settings;
    const SheetRun run(settings);
    for (const auto& row : rows) {
        const HWND page = run.Turn(row.page);
        const std::wstring before = TextOf(GetDlgItem(page, row.id));
        for (const bool leaving : {true, false}) {
            Type(page, row.id, row.text);
            SetFocus(nullptr);
            if (leaving) {
                EXPECT_EQ(run.Turn(kKeys), page) << row.why;
            } else {
                SendMessageW(run.sheet, PSM_PRESSBUTTON, PSBTN_OK, 0);
            }
            EXPECT_EQ(run.WhyNotRefused(row.id), "") << row.why;
            Type(page, row.id, before);
        }
    }
    EXPECT_EQ(RegistryValues(), stored);
    Type(run.Turn(kMain), IDC_PORT, L"");
    EXPECT_NE(run.Turn(kKeys), run.Turn(kMain));
    EXPECT_EQ(run.Close(PSBTN_OK), 1);
    EXPECT_EQ(Stored().Port, 0u) << "an empty port is 0";
}

TEST_F(SheetTest, AnAccountNeedsAnIdAndTheSamePasswordTwice) {
    constexpr int kAccepted = 0;
    const struct {
        const char* why;
        bool checked;
        const wchar_t* id;
        std::wstring password, repeat;
        int refused;
        std::string user, stored;  // in the record afterwards
    } rows[] = {
        {"no id", true, L"  ", L"p", L"p", IDC_ACCOUNT_ID, "old", "secret"},
        {"different", true, L"taro", L"p", L"P", IDC_ACCOUNT_REPEAT, "taro", "secret"},
        {"not repeated", true, L"taro", L"p", L"", IDC_ACCOUNT_PASSWORD, "taro", "secret"},
        {"equal", true, L" taro ", L" p", L" p", kAccepted, "taro ", " p"},
        {"cut to 255", true, L"taro", std::wstring(300, L'x'), std::wstring(300, L'x'), kAccepted, "taro",
         std::string(255, 'x')},
        {"not wanted", false, L"taro", L"p", L"q", kAccepted, "(none)", "(none)"},
    };
    Settings settings;
    Store();
    const SecretWatch watch("secret");
    const SheetRun run(settings);
    for (const auto& row : rows) {
        const HWND page = run.Turn(kAccount);
        settings.UserID = CopyText("old");
        settings.Password = CopyText("secret");
        run.Check(page, IDC_USE_PASSWORD, false);
        EXPECT_FALSE(IsOn(page, IDC_ACCOUNT_ID) || IsOn(page, IDC_ACCOUNT_PASSWORD) ||
                     IsOn(page, IDC_ACCOUNT_REPEAT));
        run.Check(page, IDC_USE_PASSWORD, true);
        EXPECT_TRUE(IsOn(page, IDC_ACCOUNT_ID) && IsOn(page, IDC_ACCOUNT_PASSWORD) &&
                    IsOn(page, IDC_ACCOUNT_REPEAT));
        EXPECT_EQ(TextOf(GetDlgItem(page, IDC_ACCOUNT_ID)), L"old") << "what is stored shows again";
        EXPECT_EQ(TextOf(GetDlgItem(page, IDC_ACCOUNT_REPEAT)), L"secret");
        run.Check(page, IDC_USE_PASSWORD, row.checked);
        Type(page, IDC_ACCOUNT_ID, row.id);
        Type(page, IDC_ACCOUNT_PASSWORD, row.password);
        Type(page, IDC_ACCOUNT_REPEAT, row.repeat);
        EXPECT_EQ(run.Turn(kMain) == page, row.refused != kAccepted) << row.why;
        if (row.refused != kAccepted) EXPECT_EQ(run.WhyNotRefused(row.refused), "") << row.why;
        EXPECT_EQ(OrNone(settings.UserID), row.user) << row.why;
        EXPECT_EQ(OrNone(settings.Password), row.stored) << row.why;
    }
    EXPECT_EQ(run.Close(PSBTN_OK), 1);
    EXPECT_EQ(watch.found, 0) << "a password was left in memory";
    EXPECT_EQ(OrNone(Stored().UserID), "(none)");
}

// Empty when each stands there once, and where the system reported it.
std::wstring FaceOutOfPlace(HWND page) {
    if (GetWindowLongW(GetDlgItem(page, IDC_FONT_NAME), GWL_STYLE) & CBS_SORT) return L"sorted";
    for (LRESULT i = 0; i < Ask(page, IDC_FONT_NAME, CB_GETCOUNT); ++i) {
        wchar_t name[LF_FACESIZE] = {};
        const auto text = reinterpret_cast<LPARAM>(name);
        Ask(page, IDC_FONT_NAME, CB_GETLBTEXT, static_cast<WPARAM>(i), text);
        if (Ask(page, IDC_FONT_NAME, CB_FINDSTRINGEXACT, static_cast<WPARAM>(-1), text) != i) return name;
    }
    return L"";
}

TEST_F(SheetTest, TheFontPage) {
    const auto face = [](HWND page) { return TextOf(GetDlgItem(page, IDC_FONT_NAME)); };
    const auto choicesAreOn = [](HWND page) {
        return IsOn(page, IDC_FONT_NAME) + IsOn(page, IDC_SUBJECT_SIZE) + IsOn(page, IDC_ARTICLE_SIZE);
    };
    Store();
    Settings settings = Stored();
    settings.FontSizeS = 20;
    settings.FontSizeA = 7;
    wcscpy(settings.FontName, L"No Such Face");
    Change(settings);
    std::wstring first, last;
    {
        const SheetRun run(settings);
        const HWND page = run.Turn(kFont);
        first = face(page);
        EXPECT_EQ(Ask(page, IDC_FONT_NAME, CB_GETCURSEL), 0) << "a face that is not there";
        EXPECT_EQ(TextOf(GetDlgItem(page, IDC_SUBJECT_SIZE)), L"8") << "too large for the list";
        EXPECT_EQ(TextOf(GetDlgItem(page, IDC_ARTICLE_SIZE)), L"8") << "too small";
        EXPECT_EQ(
            Ask(page, IDC_FONT_NAME, CB_FINDSTRING, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(L"@")),
            CB_ERR)
            << "faces for vertical writing";
        EXPECT_EQ(FaceOutOfPlace(page), L"");
        EXPECT_FALSE(IsOn(page, IDC_SYSTEM_FONT));
        EXPECT_EQ(choicesAreOn(page), 3);
        EXPECT_EQ(run.Close(PSBTN_OK), 1);
    }
    LOGFONTW font = {};
    GetObjectW(settings.SubjectFont.Get(), sizeof(font), &font);
    EXPECT_EQ(font.lfFaceName, first);
    EXPECT_EQ(font.lfHeight, 8);
    EXPECT_EQ(Stored().FontSizeS, 8);
    {
        const SheetRun run(settings);
        const HWND page = run.Turn(kFont);
        run.Select(page, IDC_FONT_NAME, Ask(page, IDC_FONT_NAME, CB_GETCOUNT) - 1);
        last = face(page);
        EXPECT_EQ(run.Close(PSBTN_OK), 1);
    }
    EXPECT_NE(last, first);
    EXPECT_EQ(Stored().FontName, last);
    settings.FontSizeA = settings.FontSizeS = kSystemFont;
    Change(settings);
    const SheetRun run(settings);
    const HWND page = run.Turn(kFont);
    EXPECT_EQ(Ask(page, IDC_SYSTEM_FONT, BM_GETCHECK), BST_CHECKED);
    EXPECT_EQ(choicesAreOn(page), 0);
    EXPECT_EQ(run.Close(PSBTN_OK), 1);
    EXPECT_FALSE(settings.ArticleFont || settings.SubjectFont);
    EXPECT_EQ(Stored().FontSizeA, kSystemFont);
    EXPECT_STREQ(Stored().FontName, L"");
}

TEST_F(SheetTest, AnUnwritableRegistryIsNotTold) {
    HKEY gone = nullptr;
    ASSERT_EQ(RegCreateKeyW(HKEY_CURRENT_USER, L"Software\\PelnorGone", &gone), 0);
    RegDeleteKeyW(HKEY_CURRENT_USER, L"Software\\PelnorGone");
    RegOverridePredefKey(HKEY_CURRENT_USER, gone);
    Settings settings;
    {
        const SheetRun run(settings);
        const HWND page = run.Current();
        Type(page, IDC_SERVER, L"a");
        Type(page, IDC_DATA_FOLDER, folder.Path());
        EXPECT_EQ(run.Close(PSBTN_OK), 1);
    }
    RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
    RegCloseKey(gone);
    EXPECT_STREQ(settings.Server, L"a");
    EXPECT_TRUE(RegistryValues().empty());
}

// The two that a later version adds to the sheet.
TEST_F(SheetTest, TheUserAndPostingPages) {
    Store();
    Settings settings = Stored();
    settings.Organization = CopyText("old");
    {
        const SheetRun run([&settings]() -> INT_PTR {
            SettingsPages pages;
            const HINSTANCE instance = GetModuleHandleW(nullptr);
            if (!MakeSettingsPages(pages, settings, instance)) return -1;
            return RunPropertySheet(pages, kShownPageCount, kPageCount - kShownPageCount, instance, nullptr);
        });
        EXPECT_EQ(TextOf(GetDlgItem(run.Current(), IDC_ORGANIZATION)), L"old");
        Type(run.Current(), IDC_USER_NAME, L"山田 太郎");
        Type(run.Current(), IDC_MAIL_ADDRESS, L"taro@a.jp");
        Type(run.Current(), IDC_ORGANIZATION, L"");
        Type(run.Turn(1), IDC_EDITOR_PATH, L"\\" + std::wstring(300, L'e'));
        EXPECT_EQ(run.Close(PSBTN_OK), 1);
    }
    EXPECT_EQ(settings.EditorPath.get(), L"\\" + std::wstring(300, L'e'));
    Change(settings);
    settings = Stored();
    EXPECT_EQ(OrNone(settings.UserName), "\x8E\x52\x93\x63 \x91\xBE\x98\x59");
    EXPECT_EQ(OrNone(settings.MailAddress), "taro@a.jp");
    EXPECT_EQ(OrNone(settings.Organization), "(none)");
}

}  // namespace
