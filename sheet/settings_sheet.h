// The properties sheet, the only place where the user edits the settings.
#pragma once

#include <memory>

#include "sheet/settings_page.h"

// Loads the record from the registry, edits it in place, modally, and saves it on OK. IDOK when the sheet was
// closed with OK, even if the save failed; else IDCANCEL.
INT_PTR RunSettingsSheet(Settings& settings, HINSTANCE instance, HWND owner);

// The pages, those of the sheet first; the tests make a sheet of the others too.
constexpr int kPageCount = 8;
constexpr int kShownPageCount = 6;
using SettingsPages = std::unique_ptr<SettingsPage>[kPageCount];

// False with error 8.
[[nodiscard]] bool MakeSettingsPages(SettingsPages& pages, Settings& settings, HINSTANCE instance);

// Runs a sheet of `count` pages from `first` on; IDOK when it was closed with OK.
INT_PTR RunPropertySheet(const SettingsPages& pages, int first, int count, HINSTANCE instance, HWND owner);
