// What the resource compiler cannot see: that everything fits the device's screen and can be made there.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/platform.h"
#include "resources/resource.h"
#include "shell/commands.h"

namespace {

constexpr int kScreenWidth = 240;
constexpr int kScreenHeight = 320;

INT_PTR CALLBACK NoProcedure(HWND, UINT, WPARAM, LPARAM) {
    return FALSE;
}

BOOL CALLBACK CollectName(HMODULE, LPCWSTR, LPWSTR name, LONG_PTR parameter) {
    reinterpret_cast<std::vector<LPWSTR>*>(parameter)->push_back(name);
    return TRUE;
}

std::vector<LPWSTR> ResourcesOf(LPCWSTR type) {
    std::vector<LPWSTR> names;
    EnumResourceNamesW(nullptr, type, CollectName, reinterpret_cast<LONG_PTR>(&names));
    return names;
}

bool IsExtended(LPCWSTR name) {
    HRSRC resource = FindResourceW(nullptr, name, RT_DIALOG);
    auto words = static_cast<const WORD*>(LockResource(LoadResource(nullptr, resource)));
    return words[0] == 1 && words[1] == 0xFFFF;
}

// A control beyond the dialog's edge is cut off, one beyond its neighbour's hides it.
void ExpectControlsApart(HWND dialog) {
    RECT client{};
    GetClientRect(dialog, &client);
    std::vector<RECT> areas;
    for (HWND control = GetWindow(dialog, GW_CHILD); control; control = GetWindow(control, GW_HWNDNEXT)) {
        WCHAR className[32] = L"";
        GetClassNameW(control, className, 32);
        const LONG style = GetWindowLongW(control, GWL_STYLE);
        if (!lstrcmpiW(className, L"Button") && (style & BS_TYPEMASK) == BS_GROUPBOX) continue;
        RECT area{};
        GetWindowRect(control, &area);
        MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT*>(&area), 2);
        EXPECT_TRUE(area.left >= 0 && area.top >= 0 && area.right <= client.right &&
                    area.bottom <= client.bottom)
            << "control " << GetDlgCtrlID(control) << " stands out of the dialog";
        for (const RECT& other : areas) {
            RECT common{};
            EXPECT_FALSE(IntersectRect(&common, &area, &other))
                << "control " << GetDlgCtrlID(control) << " covers another";
        }
        areas.push_back(area);
    }
    EXPECT_FALSE(areas.empty());
}

TEST(Resources, DialogsFitTheDevice) {
    InitCommonControls();
    const std::vector<LPWSTR> dialogs = ResourcesOf(RT_DIALOG);
    EXPECT_GE(dialogs.size(), 4u);
    // The pages of the properties sheet are child windows.
    HWND parent =
        CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 10, 10, nullptr, nullptr, nullptr, nullptr);
    for (LPWSTR name : dialogs) {
        SCOPED_TRACE("dialog " + std::to_string(reinterpret_cast<ULONG_PTR>(name)));
        EXPECT_FALSE(IsExtended(name)) << "the device has no extended templates";
        HWND dialog = CreateDialogParamW(nullptr, name, parent, NoProcedure, 0);
        ASSERT_TRUE(dialog) << "a control's class is missing, error " << GetLastError();
        RECT area{};
        GetWindowRect(dialog, &area);
        EXPECT_LE(area.right - area.left, kScreenWidth);
        EXPECT_LE(area.bottom - area.top, kScreenHeight);
        ExpectControlsApart(dialog);
        DestroyWindow(dialog);
    }
    DestroyWindow(parent);
}

TEST(Resources, EverythingIsJapanese) {
    for (LPCWSTR type : {RT_DIALOG, RT_MENU, RT_STRING, RT_ACCELERATOR, RT_RCDATA, RT_BITMAP}) {
        const std::vector<LPWSTR> names = ResourcesOf(type);
        EXPECT_FALSE(names.empty());
        for (LPWSTR name : names) {
            EXPECT_TRUE(FindResourceExW(nullptr, type, name, 0x0411))
                << "type " << reinterpret_cast<ULONG_PTR>(type) << ", name "
                << reinterpret_cast<ULONG_PTR>(name);
        }
    }
}

void ExpectCommands(HMENU menu) {
    for (int i = 0; i < GetMenuItemCount(menu); ++i) {
        const UINT id = GetMenuItemID(menu, i);
        if (const HMENU popup = GetSubMenu(menu, i)) {
            ExpectCommands(popup);
        } else if (id != 0) {
            EXPECT_TRUE(IsCommand(id)) << id;
        }
    }
}

// Of a bar's buttons a drop-down opens a menu; the others are commands.
void ExpectCommandsOfBar(LPWSTR name) {
    HRSRC resource = FindResourceW(nullptr, name, RT_RCDATA);
    auto words = static_cast<const WORD*>(LockResource(LoadResource(nullptr, resource)));
    for (const WORD* button = words + 2; button < words + 2 + 7 * words[1]; button += 7) {
        const bool opensMenu = (button[3] & 0x08) != 0;
        EXPECT_TRUE(opensMenu || IsCommand(button[1])) << button[1];
    }
}

TEST(Resources, EveryItemButtonAndKeyDoesSomething) {
    for (LPWSTR name : ResourcesOf(RT_MENU))
        ExpectCommands(LoadMenuW(nullptr, name));
    for (LPWSTR name : ResourcesOf(RT_RCDATA))
        ExpectCommandsOfBar(name);
    for (LPWSTR name : ResourcesOf(RT_ACCELERATOR)) {
        ACCEL keys[16];
        const int count = CopyAcceleratorTableW(LoadAcceleratorsW(nullptr, name), keys, 16);
        for (int i = 0; i < count; ++i)
            EXPECT_TRUE(IsCommand(keys[i].cmd)) << keys[i].cmd;
    }
}

}  // namespace
