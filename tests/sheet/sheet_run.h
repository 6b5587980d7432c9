// The properties sheet on a thread of its own, page by page.
#pragma once

#include "resources/resource.h"
#include "sheet/settings_sheet.h"
#include "tests/support/temp_folder.h"
#include "tests/support/ui_thread.h"
#include "text/convert.h"
#include "text/messages.h"

enum Page { kMain, kAccount, kKeys, kConnection, kFont, kColour };

constexpr wchar_t kSheetCaption[] = L"プロパティ";

class SheetRun {
  public:
    explicit SheetRun(Settings& settings)
        : SheetRun([&settings] { return RunSettingsSheet(settings, GetModuleHandleW(nullptr), nullptr); }) {}

    explicit SheetRun(std::function<INT_PTR()> run) : thread(std::move(run)) {
        sheet = thread.Window(kSheetCaption);
    }

    HWND Current() const { return reinterpret_cast<HWND>(SendMessageW(sheet, PSM_GETCURRENTPAGEHWND, 0, 0)); }
    // The page that is shown after the user asked for this one.
    HWND Turn(int page) const {
        SendMessageW(sheet, PSM_SETCURSEL, static_cast<WPARAM>(page), 0);
        return Current();
    }
    INT_PTR Close(int button) const {
        PostMessageW(sheet, PSM_PRESSBUTTON, static_cast<WPARAM>(button), 0);
        return thread.Result();
    }
    // What a click would do.
    void Check(HWND page, int id, bool checked) const {
        if ((Ask(page, id, BM_GETCHECK) == BST_CHECKED) != checked) Ask(page, id, BM_CLICK);
    }
    void Select(HWND page, int id, LRESULT index) const {
        Ask(page, id, CB_SETCURSEL, static_cast<WPARAM>(index));
        SendMessageW(page, WM_COMMAND, MAKEWPARAM(id, CBN_SELCHANGE),
                     reinterpret_cast<LPARAM>(GetDlgItem(page, id)));
    }
    // Empty when the control has the focus and its whole text is selected.
    std::string WhyNotRefused(int id) const {
        const HWND control = GetDlgItem(Current(), id);
        DWORD from = 1, to = 0;
        SendMessageW(control, EM_GETSEL, reinterpret_cast<WPARAM>(&from), reinterpret_cast<LPARAM>(&to));
        if (thread.Ended()) return "the sheet is closed";
        if (thread.Focus() != control) return "the focus is elsewhere";
        return from == 0 && to == TextOf(control).size() ? "" : "not all is selected";
    }

    UiThread thread;
    HWND sheet = nullptr;
};

// Begins with an empty registry and a data folder that is there.
class SheetTest : public testing::Test {
  protected:
    SheetTest() {
        SetResourceInstance(GetModuleHandleW(nullptr));
        InitCommonControls();
    }

    // Complete settings, as an earlier run of the sheet stored them.
    void Store() {
        Settings settings;
        wcscpy(settings.Server, L"news.a.jp");
        wcscpy(settings.DataPath, folder.Path().c_str());
        settings.Port = 119;
        settings.Limit = 50;
        Change(settings);
    }
    void Change(Settings& settings) { ASSERT_TRUE(SaveSettings(settings)); }

    Settings Stored() const {
        Settings settings;
        bool complete = false;
        EXPECT_TRUE(LoadSettings(settings, complete));
        return settings;
    }

    RegistryGuard guard;
    TempFolder folder;
};
