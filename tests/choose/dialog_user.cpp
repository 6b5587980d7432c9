#include "tests/choose/dialog_user.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

constexpr UINT kPeriod = 10;        // milliseconds
constexpr DWORD kPatience = 10000;  // milliseconds in which something must happen
constexpr wchar_t kConfirmed[] = L"PelnorTestConfirmed";

DialogUser* user = nullptr;

std::wstring TextOf(HWND window) {
    wchar_t text[2048] = L"";
    GetWindowTextW(window, text, 2048);
    return text;
}

BOOL CALLBACK CollectDialog(HWND window, LPARAM dialogs) {
    wchar_t name[16] = L"";
    GetClassNameW(window, name, 16);
    if (name == std::wstring(L"#32770") && IsWindowVisible(window))
        reinterpret_cast<std::vector<HWND>*>(dialogs)->push_back(window);
    return TRUE;
}

HICON IconOf(HWND dialog) {
    HWND child = nullptr;
    while ((child = FindWindowExW(dialog, child, L"Static", nullptr))) {
        const LRESULT icon = SendMessageW(child, STM_GETICON, 0, 0);
        if (icon) return reinterpret_cast<HICON>(icon);
    }
    return nullptr;
}

std::string Describe(HWND box, HICON icon) {
    std::wstring text;
    HWND child = nullptr;
    while ((child = FindWindowExW(box, child, L"Static", nullptr)))
        text += TextOf(child);
    const char* sign = icon == LoadIconW(nullptr, IDI_EXCLAMATION) ? "!"
                       : icon == LoadIconW(nullptr, IDI_HAND)      ? "x"
                                                                   : "?";
    return sign + ("|" + Utf8(TextOf(box))) + "|" + Utf8(text);
}

}  // namespace

std::string Utf8(const std::wstring& text) {
    std::string bytes(text.size() * 3 + 1, '\0');
    const int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), bytes.data(),
                                         static_cast<int>(bytes.size()), nullptr, nullptr);
    bytes.resize(static_cast<size_t>(size));
    return bytes;
}
std::wstring Wide(const std::string& utf8) {
    wchar_t text[256] = L"";
    MultiByteToWideChar(CP_UTF8, 0, utf8.c_str(), -1, text, 256);
    return text;
}

void Press(HWND dialog, int id) {
    const HWND button = GetDlgItem(dialog, id);
    EXPECT_TRUE(!button || IsWindowEnabled(button)) << "button " << id;
    PostMessageW(button ? button : dialog, button ? BM_CLICK : WM_COMMAND,
                 button ? 0 : static_cast<WPARAM>(id), 0);
}

std::vector<UserStep> Steps(int control, const std::string& script, bool (*play)(HWND, const std::string&)) {
    const std::string sign = " | ";
    std::vector<UserStep> steps;
    for (size_t at = 0, end; at <= script.size(); at = end + sign.size()) {
        end = std::min(script.find(sign, at), script.size());
        const std::string part = script.substr(at, end - at);
        steps.push_back({control, [=](HWND dialog) { return play(dialog, part); }});
    }
    return steps;
}

DialogUser::DialogUser(std::vector<UserStep> steps) : steps_(std::move(steps)), movedAt_(GetTickCount()) {
    user = this;
    InitCommonControls();
    timer_ = SetTimer(nullptr, 0, kPeriod, OnTimer);
}

DialogUser::~DialogUser() {
    KillTimer(nullptr, timer_);
    user = nullptr;
    EXPECT_TRUE(mayComeTooLate || next_ == steps_.size()) << "the dialog closed before all steps were played";
}

void CALLBACK DialogUser::OnTimer(HWND, UINT, UINT_PTR, DWORD) {
    std::vector<HWND> dialogs;
    EnumThreadWindows(GetCurrentThreadId(), CollectDialog, reinterpret_cast<LPARAM>(&dialogs));
    if (dialogs.empty() || !user || user->ConfirmBox(dialogs)) return;
    user->PlayStep(dialogs);
    if (GetTickCount() - user->movedAt_ < kPatience) return;
    ADD_FAILURE() << "nothing happened before step " << user->next_;
    for (const HWND dialog : dialogs)
        PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
}

bool DialogUser::ConfirmBox(const std::vector<HWND>& dialogs) {
    for (const HWND dialog : dialogs) {
        const HICON icon = IconOf(dialog);
        if (!icon) continue;
        if (!GetPropW(dialog, kConfirmed)) {
            boxes.push_back(Describe(dialog, icon));
            SetPropW(dialog, kConfirmed, dialog);
            PostMessageW(dialog, WM_COMMAND, IDOK, 0);
            movedAt_ = GetTickCount();
        }
        return true;
    }
    return false;
}

void DialogUser::PlayStep(const std::vector<HWND>& dialogs) {
    if (next_ == steps_.size()) return;
    const UserStep& step = steps_[next_];
    for (const HWND dialog : dialogs) {
        if (!GetDlgItem(dialog, step.control) || !IsWindowEnabled(dialog) || !step.play(dialog)) continue;
        ++next_;
        movedAt_ = GetTickCount();
        return;
    }
}
