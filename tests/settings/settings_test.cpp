// What the registry keeps, name by name and type by type.
#include "settings/settings.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "settings/view_options.h"
#include "tests/support/secret_watch.h"
#include "tests/support/temp_folder.h"
#include "text/convert.h"

namespace {

// Type and bytes; REG_NONE when there is no such value.
using Value = std::pair<DWORD, std::string>;

Value Text(const std::wstring& text) {
    return {REG_SZ, std::string(reinterpret_cast<const char*>(text.c_str()), (text.size() + 1) * 2)};
}
Value Number(DWORD number, DWORD type = REG_DWORD) {
    return {type, std::string(reinterpret_cast<const char*>(&number), 4)};
}

class SettingsTest : public testing::Test {
  protected:
    Value Read(const wchar_t* name, const wchar_t* subkey = L"") const {
        Value value{REG_NONE, ""};
        char bytes[4096];
        DWORD size = sizeof bytes;
        HKEY key = nullptr;
        const std::wstring path = RegistryGuard::kKey + (*subkey ? std::wstring(L"\\") + subkey : L"");
        if (RegOpenKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, KEY_READ, &key)) return value;
        if (RegQueryValueExW(key, name, nullptr, &value.first, reinterpret_cast<BYTE*>(bytes), &size) == 0)
            value.second.assign(bytes, size);
        RegCloseKey(key);
        return value;
    }

    void Write(const wchar_t* name, const Value& value) const {
        HKEY key = nullptr;
        ASSERT_EQ(RegCreateKeyW(HKEY_CURRENT_USER, RegistryGuard::kKey, &key), 0);
        auto data = reinterpret_cast<const BYTE*>(value.second.data());
        EXPECT_EQ(RegSetValueExW(key, name, 0, value.first, data, static_cast<DWORD>(value.second.size())),
                  0);
        RegCloseKey(key);
    }

    void Load() { ASSERT_TRUE(LoadSettings(settings, complete)); }

    RegistryGuard guard;
    Settings settings;
    bool complete = false;
};

template <class Owner>
std::string OrNone(const Owner& text) {
    return text ? text.get() : "(none)";
}

const Value kNone{REG_NONE, ""};

TEST_F(SettingsTest, EveryValueHasADefaultAndGoesThereAndBack) {
    const struct {
        const wchar_t* name;
        Value missing;  // what a save writes after a load from an empty registry
        Value value;
    } rows[] = {
        {L"Server", Text(L""), Text(L"news.a.jp")},
        {L"Port", Number(119), Number(0)},
        {L"DataPath", Text(L""), Text(L"\\news\\")},
        {L"Limit", Number(50), Number(7)},
        {L"UserID", kNone, Text(L"taro")},
        {L"Password", kNone, Text(L" p\\w ")},
        {L"KeyMode", Number(0), Number(1)},
        {L"AutoNextArticle", Number(1), Number(0)},
        {L"Dialup", Number(0), Number(1)},
        {L"EntryName", Text(L""), Text(L"\u65E5\u672C")},
        {L"DisconnectWaitTime", Number(0), Number(9)},
        {L"FontName", Text(L"Tahoma"), Text(L"Courier New")},
        {L"FontSizeA", Number(14), Number(0xFFFFFFFF)},
        {L"FontSizeS", Number(14), Number(20)},
        {L"HeaderColor", Number(0, REG_BINARY), Number(0x00FF8001, REG_BINARY)},
        {L"ReferenceLine", Number(0, REG_BINARY), Number(0x00010203, REG_BINARY)},
        {L"UserName", Text(L""), Text(TextCodePage() == 932 ? L"\u65E5\u672C" : L"Taro")},
        {L"MailAddress", Text(L""), Text(L"t@a.jp")},
        {L"Organization", Text(L""), Text(L"Lab")},
        {L"EditorPath", Text(L""), Text(L"\\editor.exe")},
    };
    wcscpy(settings.Server, L"old");
    settings.UserName = CopyText("old");
    Load();
    EXPECT_FALSE(complete);
    EXPECT_TRUE(settings.ArticleFont && settings.SubjectFont);
    EXPECT_EQ(Read(L"Server"), kNone) << "a load writes nothing";
    ASSERT_TRUE(SaveSettings(settings));
    for (const auto& row : rows) {
        EXPECT_EQ(Read(row.name), row.missing) << testing::PrintToString(row.name);
        Write(row.name, row.value);
    }
    Load();
    EXPECT_TRUE(complete);
    EXPECT_EQ(settings.Port, 0u) << "an empty port field stays 0";
    EXPECT_EQ(settings.HeaderColor, COLORREF{0x00FF8001});
    EXPECT_FALSE(settings.ArticleFont) << "-1 asks for the system's font";
    EXPECT_TRUE(settings.SubjectFont);
    if (TextCodePage() == 932) EXPECT_EQ(OrNone(settings.UserName), "\x93\xFA\x96{");
    const RegistryGuard empty;
    ASSERT_TRUE(SaveSettings(settings));
    for (const auto& row : rows)
        EXPECT_EQ(Read(row.name), row.value) << testing::PrintToString(row.name);
}

TEST_F(SettingsTest, CompleteNeedsFourValues) {
    const wchar_t* const names[] = {L"Server", L"Port", L"DataPath", L"Limit"};
    for (const wchar_t* missing : names) {
        RegistryGuard empty;
        for (const wchar_t* name : names)
            if (name != missing) Write(name, *name == L'S' || *name == L'D' ? Text(L"x") : Number(1));
        Load();
        EXPECT_FALSE(complete) << testing::PrintToString(missing);
        Write(missing, *missing == L'S' || *missing == L'D' ? Text(L"") : Number(0));
        Load();
        EXPECT_TRUE(complete) << testing::PrintToString(missing);
    }
}

TEST_F(SettingsTest, BlankTextsAreNone) {
    const struct {
        const char* why;
        const wchar_t* name;
        const wchar_t* stored;
        const wchar_t* address;  // null: no MailAddress value
        NarrowText Settings::*field;
        const char* loaded;
    } rows[] = {
        {"blanks and tabs", L"UserName", L"  \t ", nullptr, &Settings::UserName, "(none)"},
        {"not only blanks", L"UserName", L" a ", nullptr, &Settings::UserName, " a "},
        {"a blank address", L"MailAddress", L" ", nullptr, &Settings::MailAddress, "(none)"},
        {"blank beside an address", L"Organization", L" ", L"a", &Settings::Organization, "(none)"},
        {"blank alone: stays", L"Organization", L" ", nullptr, &Settings::Organization, " "},
        {"beside a blank address: stays", L"Organization", L"\t", L" ", &Settings::Organization, "\t"},
    };
    for (const auto& row : rows) {
        RegistryGuard empty;
        Write(row.name, Text(row.stored));
        if (row.address) Write(L"MailAddress", Text(row.address));
        Load();
        EXPECT_EQ(OrNone(settings.*row.field), row.loaded) << row.why;
    }
    RegistryGuard empty;
    Load();
    ASSERT_TRUE(SaveSettings(settings));
    for (const wchar_t* name : {L"UserName", L"MailAddress", L"Organization", L"EditorPath"})
        EXPECT_EQ(Read(name), Text(L"")) << "always there after a save";
}

TEST_F(SettingsTest, APasswordNeedsAUser) {
    const struct {
        const char* why;
        const char* user;
        const char* password;
        Value savedUser;
        Value savedPassword;
    } rows[] = {
        {"both", "u", "p", Text(L"u"), Text(L"p")},
        {"no password", "u", nullptr, Text(L"u"), kNone},
        {"no user", nullptr, "p", kNone, kNone},
    };
    for (const auto& row : rows) {
        Write(L"UserID", Text(L"old"));
        Write(L"Password", Text(L"old"));
        Load();
        settings.UserID = row.user ? CopyText(row.user) : nullptr;
        settings.Password = row.password ? CopyText(row.password) : nullptr;
        ASSERT_TRUE(SaveSettings(settings)) << row.why;
        EXPECT_EQ(Read(L"UserID"), row.savedUser) << row.why;
        EXPECT_EQ(Read(L"Password"), row.savedPassword) << row.why;
    }
    Write(L"Password", Text(L"p"));
    Load();
    EXPECT_EQ(OrNone(settings.Password), "p") << "loaded without a user";
    ASSERT_TRUE(SaveSettings(settings));
    EXPECT_EQ(Read(L"Password"), kNone) << "and gone with the next save";
}

TEST_F(SettingsTest, NoPasswordStaysInMemoryThatIsFree) {
    Write(L"UserID", Text(L"taro"));
    Write(L"Password", Text(L"himitsu"));
    SecretWatch watch("himitsu");
    Load();
    EXPECT_EQ(OrNone(settings.Password), "himitsu");
    ASSERT_TRUE(SaveSettings(settings));
    FreeSettings(settings);
    EXPECT_GT(watch.freed, 0);
    EXPECT_EQ(watch.found, 0);
    alignas(SecretBuffer<8>) wchar_t memory[8];
    const auto typed = new (memory) SecretBuffer<8>;
    wcscpy(typed->text, L"himitsu");
    typed->~SecretBuffer();
    EXPECT_EQ(std::wstring(memory, 8), std::wstring(8, L'\0'));
}

TEST_F(SettingsTest, TheDraftFolderHangsOnTheDataFolder) {
    Write(L"DataPath", Text(L"\\Storage\\news"));
    Load();
    EXPECT_STREQ(settings.DraftPath.get(), L"\\Storage\\news\\draft\\");
    ASSERT_TRUE(SaveSettings(settings));
    EXPECT_STREQ(settings.DataPath, L"\\Storage\\news\\");
    EXPECT_EQ(Read(L"DataPath"), Text(L"\\Storage\\news\\"));
    Load();
    EXPECT_STREQ(settings.DraftPath.get(), L"\\Storage\\news\\\\draft\\") << "two backslashes in a row";
}

TEST_F(SettingsTest, OverlongValuesAreCut) {
    const std::wstring x(300, L'x');
    for (const wchar_t* name : {L"Server", L"DataPath", L"EntryName", L"FontName", L"UserID", L"UserName"})
        Write(name, Text(x));
    Write(L"EditorPath", {REG_SZ, std::string("a\0b\0c", 5)});  // neither terminated nor even
    Load();
    EXPECT_EQ(settings.Server, x.substr(0, 259));
    EXPECT_EQ(settings.DataPath, x.substr(0, 259));
    EXPECT_EQ(settings.EntryName, x.substr(0, 20));
    EXPECT_EQ(settings.FontName, x.substr(0, 31));
    EXPECT_EQ(OrNone(settings.UserID), std::string(255, 'x'));
    EXPECT_EQ(OrNone(settings.UserName), std::string(300, 'x')) << "has no limit";
    EXPECT_STREQ(settings.EditorPath.get(), L"ab");
    EXPECT_TRUE(SaveSettings(settings));
    EXPECT_EQ(settings.DataPath, x.substr(0, 259)) << "no room for a backslash";
}

TEST_F(SettingsTest, ViewOptionsStandInTheirSubkeys) {
    EXPECT_TRUE(WriteViewReadArticle(true) && WritePriorityViewLevel(3) && WriteShowArticleHeader(true));
    EXPECT_EQ(Read(L"ViewReadArticle", L"SubjectView"), Number(1));
    EXPECT_EQ(Read(L"PriorityViewLevel", L"SubjectView"), Number(3));
    EXPECT_EQ(Read(L"ShowArticleHeader", L"ArticleView"), Number(1));
}

}  // namespace
