// One page of the properties sheet: shows a part of the settings, checks its fields when the user leaves it
// or presses OK, and writes them back into the record.
#pragma once

#include "platform/platform.h"
#include "settings/settings.h"
#include "text/messages.h"

class SettingsPage {
  public:
    // `titleId` is the string of the page's tab.
    SettingsPage(WORD dialogId, UINT titleId);
    SettingsPage(const SettingsPage&) = delete;
    SettingsPage& operator=(const SettingsPage&) = delete;

    // Fills the controls from the record.
    virtual void Init(HWND) {}

    // Handles a control's notice. Returns the dialog procedure's result.
    virtual INT_PTR Command(HWND, int id, int notice);

    // Checks the controls and copies them into the record. A refused control gets the focus with its text
    // selected; the ones before it have been copied.
    [[nodiscard]] virtual bool Apply(HWND) { return true; }

    virtual ~SettingsPage() = default;

    WORD dialogId;
    DLGPROC procedure;
    wchar_t title[kTextCapacity] = {};
    Settings* settings = nullptr;  // the record being edited; not owned
    HINSTANCE instance = nullptr;
    bool shown = true;  // false: the record could not be shown, so nothing is copied back
};

// The procedure of all pages but the colour page, which calls it first.
INT_PTR CALLBACK PageProcedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);

// The page of a dialog; null before its init message.
SettingsPage* PageOf(HWND dialog);

// What the pages share.

constexpr int kEditSize = 260;  // UTF-16 units read from most edit controls, the terminator included

bool IsBoxChecked(HWND dialog, int id);
void CheckBox(HWND dialog, int id, bool checked);
void EnableControl(HWND dialog, int id, bool enabled);
void ShowDecimal(HWND dialog, int id, uint32_t value);

// Shows a text of the record; null shows as empty. Error 8 shows nothing.
[[nodiscard]] bool ShowNarrow(HWND dialog, int id, const NarrowText& text);

// Gives the control the focus and selects its text. Returns false.
bool RefuseControl(HWND dialog, int id);

// Reads an edit control's digits. Refuses the control when it holds anything else.
[[nodiscard]] bool TakeDecimal(HWND dialog, int id, uint32_t& value);

// The text after its leading blanks.
const wchar_t* SkipBlanks(const wchar_t* text);

LRESULT SelectedIndex(HWND dialog, int comboId);
