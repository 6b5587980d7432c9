// Windows that run on a thread of their own while the test, from outside, operates their controls as a user
// would.
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>

#include "platform/platform.h"

// Polls until the condition holds; false when it has not after ten seconds.
inline bool Await(const std::function<bool()>& condition) {
    for (const DWORD start = GetTickCount(); !condition();) {
        if (GetTickCount() - start > 10000) return false;
        Sleep(5);
    }
    return true;
}

inline LRESULT Ask(HWND dialog, int id, UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
    return SendMessageW(GetDlgItem(dialog, id), message, wParam, lParam);
}

inline std::wstring TextOf(HWND window) {
    std::wstring text(static_cast<size_t>(SendMessageW(window, WM_GETTEXTLENGTH, 0, 0)) + 1, L'\0');
    SendMessageW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
    text.pop_back();
    return text;
}

inline void Type(HWND dialog, int id, const std::wstring& text) {
    Ask(dialog, id, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()));
}

inline bool IsOn(HWND dialog, int id) {
    return IsWindowEnabled(GetDlgItem(dialog, id)) != 0;
}

class UiThread {
  public:
    // `run` is called on the new thread; what it answers is the result.
    explicit UiThread(std::function<INT_PTR()> run)
        : thread_([this, run = std::move(run)] {
              id_ = GetCurrentThreadId();
              result_ = run();
              ended_ = true;
          }) {}

    // What a failed test left open is closed.
    ~UiThread() {
        Await([this] {
            const HWND window = ended_ ? nullptr : Find({});
            if (window) PostMessageW(window, WM_COMMAND, IDCANCEL, 0);
            if (window) PostMessageW(window, WM_CLOSE, 0, 0);
            return ended_.load();
        });
        thread_.join();
    }

    // Waits for a visible window with just this caption.
    HWND Window(const std::wstring& caption) const {
        HWND found = nullptr;
        EXPECT_TRUE(Await([&] { return ended_ || (found = Find(caption)) != nullptr; }));
        EXPECT_TRUE(found) << "no window " << testing::PrintToString(caption);
        return found;
    }

    // The topmost of the thread's visible windows with this caption (empty: any); null when there is none.
    HWND Find(const std::wstring& caption) const {
        Search search{caption, nullptr};
        if (id_) EnumThreadWindows(id_, Match, reinterpret_cast<LPARAM>(&search));
        return search.found;
    }

    // Waits for a message box, presses OK and answers its text.
    std::wstring CloseBox(const std::wstring& caption) const {
        constexpr int kBoxText = 0xFFFF;
        const HWND box = Window(caption);
        const std::wstring text = TextOf(GetDlgItem(box, kBoxText));
        PostMessageW(box, WM_COMMAND, IDOK, 0);
        EXPECT_TRUE(Await([box] { return !IsWindow(box); }));
        return text;
    }

    HWND Focus() const {
        GUITHREADINFO info = {};
        info.cbSize = sizeof(info);
        GetGUIThreadInfo(id_, &info);
        return info.hwndFocus;
    }

    bool Ended() const { return ended_; }

    INT_PTR Result() const {
        EXPECT_TRUE(Await([this] { return ended_.load(); })) << "the dialog did not close";
        return ended_ ? result_ : -1;
    }

  private:
    struct Search {
        std::wstring caption;
        HWND found;
    };

    static BOOL CALLBACK Match(HWND window, LPARAM parameter) {
        auto search = reinterpret_cast<Search*>(parameter);
        wchar_t caption[256] = {};
        GetWindowTextW(window, caption, 256);
        const bool fits = search->caption.empty() || search->caption == caption;
        if (!IsWindowVisible(window) || !fits) return TRUE;
        search->found = window;
        return FALSE;
    }

    std::atomic<DWORD> id_{0};
    std::atomic<bool> ended_{false};
    INT_PTR result_ = -1;
    std::thread thread_;
};
