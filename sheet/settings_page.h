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

    // Reacts to a control; the dialog procedure's answer.
    virtual INT_PTR Command(HWND, int id, int notice);

    // Checks the controls and copies them into the record. A control that is refused gets the focus with its
    // text selected; those before it are copied already.
    [[nodiscard]] virtual bool Apply(HWND) { return true; }

    virtual ~SettingsPage() = default;

    WORD dialogId;
    DLGPROC procedure;
    wchar_t title[kTextCapacity] = {};
    Settings* settings = nullptr;  // the record being edited; not owned
    HINSTANCE instance = nullptr;
    bool shown = true;  // the controls show what the record holds; texts that they do not are not taken
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

// Gives the control the focus and selects its text. Answers false.
bool RefuseControl(HWND dialog, int id);

// Digits of an edit control into `value`; else the control is refused.
[[nodiscard]] bool TakeDecimal(HWND dialog, int id, uint32_t& value);

// Behind the leading blanks.
const wchar_t* SkipBlanks(const wchar_t* text);

LRESULT SelectedIndex(HWND dialog, int comboId);
