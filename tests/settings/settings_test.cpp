// What the walk through the windows cannot see of the settings.
#include "settings/settings.h"

#include <gtest/gtest.h>

#include <string>

#include "settings/registry.h"
#include "tests/support/secret_watch.h"
#include "tests/support/temp_folder.h"
#include "text/convert.h"

namespace {

class SettingsTest : public testing::Test {
  protected:
    static void Write(const wchar_t* name, const wchar_t* text) {
        RegistryKeyOwner key;
        EXPECT_TRUE(OpenKey(HKEY_CURRENT_USER, kProgramKey, key) && WriteText(key, name, text));
    }
    void Load() { EXPECT_TRUE(LoadSettings(settings, complete)); }

    RegistryGuard guard;
    Settings settings;
    bool complete = false;
};

TEST_F(SettingsTest, NoPasswordStaysInMemoryThatIsFree) {
    Write(L"UserID", L"taro");
    Write(L"Password", L"himitsu");
    SecretWatch watch("himitsu");
    Load();
    EXPECT_FALSE(complete) << "no server";
    EXPECT_STREQ(settings.Password.get(), "himitsu");
    ASSERT_TRUE(SaveSettings(settings));
    FreeSettings(settings);
    EXPECT_GT(watch.freed, 0);
    EXPECT_EQ(watch.found, 0);
}

TEST_F(SettingsTest, AnOrganisationIsBlankOnlyBesideAnAddress) {
    for (const wchar_t* address : {L"", L"a"}) {
        Write(L"Organization", L"\t ");
        Write(L"MailAddress", address);
        Load();
        EXPECT_EQ(settings.Organization == nullptr, *address != 0);
    }
}

TEST_F(SettingsTest, TheDraftFolderHangsOnTheDataFolder) {
    Write(L"DataPath", L"\\Storage\\news");
    Load();
    EXPECT_STREQ(settings.DraftPath.get(), L"\\Storage\\news\\draft\\");
    ASSERT_TRUE(SaveSettings(settings));
    EXPECT_STREQ(settings.DataPath, L"\\Storage\\news\\");
    Load();
    EXPECT_STREQ(settings.DraftPath.get(), L"\\Storage\\news\\\\draft\\") << "two backslashes in a row";
}

}  // namespace
