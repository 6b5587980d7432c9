// The pages of the properties sheet. Each edits the fields of the record that its comment names.
#pragma once

#include "sheet/settings_page.h"

// Server, Port, DataPath, Limit.
class MainPage final : public SettingsPage {
  public:
    MainPage();
    void Init(HWND dialog) override;
    INT_PTR Command(HWND dialog, int id, int notice) override;
    [[nodiscard]] bool Apply(HWND dialog) override;
};

// UserID, Password.
class AccountPage final : public SettingsPage {
  public:
    AccountPage();
    void Init(HWND dialog) override;
    INT_PTR Command(HWND dialog, int id, int notice) override;
    [[nodiscard]] bool Apply(HWND dialog) override;
};

// KeyMode, AutoNextArticle.
class KeysPage final : public SettingsPage {
  public:
    KeysPage();
    void Init(HWND dialog) override;
    [[nodiscard]] bool Apply(HWND dialog) override;
};

// Dialup, EntryName, DisconnectWaitTime.
class ConnectionPage final : public SettingsPage {
  public:
    ConnectionPage();
    void Init(HWND dialog) override;
    INT_PTR Command(HWND dialog, int id, int notice) override;
    [[nodiscard]] bool Apply(HWND dialog) override;
};

// FontName, FontSizeA, FontSizeS and both fonts.
class FontPage final : public SettingsPage {
  public:
    FontPage();
    void Init(HWND dialog) override;
    INT_PTR Command(HWND dialog, int id, int notice) override;
    [[nodiscard]] bool Apply(HWND dialog) override;
};

// HeaderColor, ReferenceLine, and SampleColor as a preview.
class ColourPage final : public SettingsPage {
  public:
    ColourPage();
    void Init(HWND dialog) override;
    INT_PTR Command(HWND dialog, int id, int notice) override;
    [[nodiscard]] bool Apply(HWND dialog) override;

    LRESULT shownItem = 0;  // 0 header lines, 1 quoted lines: whose colour the bars show
};

// Where a colour's scroll bar goes from `position`, 0 to 255, with a scroll code; `tracked` is the thumb's
// place.
int NextColourPosition(int position, int code, int tracked);

// UserName, MailAddress, Organization. Not in the sheet yet.
class UserPage final : public SettingsPage {
  public:
    UserPage();
    void Init(HWND dialog) override;
    [[nodiscard]] bool Apply(HWND dialog) override;
};

// EditorPath. Not in the sheet yet.
class PostingPage final : public SettingsPage {
  public:
    PostingPage();
    void Init(HWND dialog) override;
    INT_PTR Command(HWND dialog, int id, int notice) override;
    [[nodiscard]] bool Apply(HWND dialog) override;
};
