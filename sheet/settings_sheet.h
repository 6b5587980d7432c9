// The properties sheet, the only place where the user edits the settings.
#pragma once

#include "platform/platform.h"
#include "settings/settings.h"

// Loads the record from the registry, edits it in place, modally, and saves it on OK. 1 when the sheet was
// closed with OK (a failed save is not told), else 2.
INT_PTR RunSettingsSheet(Settings& settings, HINSTANCE instance, HWND owner);

// The pages, those of the sheet first; the tests make a sheet of the others too.
class SettingsPage;
constexpr int kPageCount = 8;
constexpr int kShownPageCount = 6;

struct SettingsPages {
    SettingsPage* all[kPageCount] = {};  // owned

    SettingsPages() = default;
    SettingsPages(const SettingsPages&) = delete;
    SettingsPages& operator=(const SettingsPages&) = delete;
    ~SettingsPages();
};

// False with error 8.
[[nodiscard]] bool MakeSettingsPages(SettingsPages& pages, Settings& settings, HINSTANCE instance);

// Runs a sheet of `count` pages from `first` on; the platform's answer, 1 for OK.
INT_PTR RunPropertySheet(const SettingsPages& pages, int first, int count, HINSTANCE instance, HWND owner);
