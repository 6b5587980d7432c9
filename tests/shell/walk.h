// The program's own frame, driven by messages as a reader drives it, over a data folder that the test made.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "settings/registry.h"
#include "settings/settings.h"
#include "shell/app_frame.h"
#include "tests/store/group_files.h"
#include "text/convert.h"
#include "text/messages.h"

// A message box that opened, and was answered.
struct Box {
    std::wstring caption, text;
    bool operator==(const Box& other) const { return caption == other.caption && text == other.text; }
};

inline void PrintTo(const Box& box, std::ostream* out) {
    *out << testing::PrintToString(box.caption) << ": " << testing::PrintToString(box.text);
}

struct Article {
    uint32_t flags = 0;  // 1 read, 2 low, 4 high
    std::wstring text = {};
};

inline std::string Narrow(const std::wstring& text) {
    return ToNarrow(text.c_str()).get();
}

// As it stands in the log, `number` being its own on the server.
inline std::wstring ArticleText(uint32_t number, const std::wstring& body) {
    const std::wstring digits = std::to_wstring(number);
    return L"From: 山田 花子 <hanako@example.jp>\r\nNewsgroups: fj.test\r\nSubject: 第" + digits +
           L"号 ポケットの中の読書\r\nDate: Mon, 3 Dec 2001 10:00:00 +0900\r\nX-Local-Seq: " + digits +
           L"\r\n\r\n" + body + L"================\r\n";
}

inline std::wstring SomeBody(uint32_t number) {
    std::wstring body = L"> 引用した行です。長いので、狭い画面では次の行に続きます。\r\n＞ 全角の引用\r\n";
    for (uint32_t i = 0; i < 3 + number % 5 * 12; ++i)
        body += L"本文の " + std::to_wstring(i) + L" 行目、ASCII と日本語。\r\n";
    return body;
}

class WalkTest : public testing::Test {
  protected:
    void SetUp() override {
        RegistryKeyOwner key;
        ASSERT_TRUE(OpenKey(HKEY_CURRENT_USER, kProgramKey, key) && WriteText(key, L"Server", L"127.0.0.1") &&
                    WriteText(key, L"DataPath", folder.Path().c_str()));
        SetNumber(L"Port", 9);
        SetNumber(L"Limit", 50);
        SetResourceInstance(GetModuleHandleW(nullptr));
        InitCommonControls();
        boxes.clear();
        answer = IDOK;
        onBox = nullptr;
        timer_ = SetTimer(nullptr, 0, 10, AnswerBox);
    }
    void TearDown() override {
        Close();
        KillTimer(nullptr, timer_);
    }

    // A value of the settings, for the next start.
    static void SetNumber(const wchar_t* name, uint32_t value) {
        RegistryKeyOwner key;
        EXPECT_TRUE(OpenKey(HKEY_CURRENT_USER, kProgramKey, key) && WriteDword(key, name, value));
    }

    // `articles` become numbers 1, 2, 3, ...; those without a text get one.
    void MakeGroup(const std::wstring& name, const std::vector<Article>& articles) {
        std::string log, records;
        HeaderBytes header;
        for (const Article& article : articles) {
            const uint32_t number = ++header.recordCount;
            const std::string text =
                Narrow(article.text.empty() ? ArticleText(number, SomeBody(number)) : article.text);
            RecordBytes record{article.flags, number, static_cast<uint32_t>(log.size()),
                               static_cast<uint32_t>(text.size())};
            record.subject = Narrow(L"第" + std::to_wstring(number) + L"号 ポケットの中の読書");
            record.date = "1203";
            record.from = Narrow(L"山田 花子");
            records += Bytes(record);
            log += text;
            header.unread += !(article.flags & 1);
            header.high += (article.flags & 6) == 4;
            header.low += (article.flags & 6) == 2;
        }
        folder.Write(name + L".idx", Bytes(header) + records);
        folder.Write(name + L".log", log);
        groupList_ += Narrow(name) + "\r\n";
        folder.Write(L"group.dat", groupList_);
    }

    static void UnregisterClasses() {
        for (const wchar_t* name : {L"PelnorMainFrmWnd", L"PELNORSubjectViewWnd", L"PELNORArticleViewWnd"})
            UnregisterClassW(name, GetModuleHandleW(nullptr));
    }
    void Open() {
        UnregisterClasses();
        frame = std::make_unique<AppFrame>();
        ASSERT_TRUE(OpenFrame(*frame, GetModuleHandleW(nullptr), SW_SHOW)) << GetLastError();
        Pump();
    }
    void Close() {
        if (frame && IsWindow(frame->mainWindow)) SendMessageW(frame->mainWindow, WM_CLOSE, 0, 0);
        Pump();
        frame.reset();
    }

    // Handles messages until none is left.
    void Pump() {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            if (message.message == WM_QUIT) continue;
            if (frame && TranslateAcceleratorW(frame->mainWindow, frame->accelerators, &message)) continue;
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
    }
    // To the window that has the focus, as the keyboard does.
    void Key(int key) {
        PostMessageW(GetFocus(), WM_KEYDOWN, static_cast<WPARAM>(key), 1);
        Pump();
    }
    void Command(UINT id, UINT origin = 0) {
        SendMessageW(frame->mainWindow, WM_COMMAND, MAKEWPARAM(id, origin), 0);
        Pump();
    }
    void Tap(UINT message, int row) {
        const int y = Subjects().rowArea.top + row * Subjects().rowHeight + 2;
        PostMessageW(Subjects().window, message, MK_LBUTTON, MAKELPARAM(50, y));
        Pump();
    }
    void OpenGroup(int row) {
        LVITEMW item = {};
        item.stateMask = item.state = LVIS_SELECTED | LVIS_FOCUSED;
        SendMessageW(frame->groupView->list, LVM_SETITEMSTATE, static_cast<WPARAM>(row),
                     reinterpret_cast<LPARAM>(&item));
        Key(VK_RETURN);
    }

    SubjectView& Subjects() const { return *frame->subjectView; }
    ArticleView& Reader() const { return *frame->articleView; }

    std::wstring Cell(int row, int column) const {
        wchar_t text[200] = {};
        LVITEMW item = {};
        item.iSubItem = column;
        item.pszText = text;
        item.cchTextMax = 200;
        SendMessageW(frame->groupView->list, LVM_GETITEMTEXTW, static_cast<WPARAM>(row),
                     reinterpret_cast<LPARAM>(&item));
        return text;
    }

    // What the files say.

    static uint32_t WordIn(const std::string& bytes, std::size_t offset) {
        uint32_t word = 0;
        for (std::size_t i = 4; i > 0 && bytes.size() >= offset + 4; --i)
            word = word << 8 | static_cast<unsigned char>(bytes[offset + i - 1]);
        return word;
    }
    uint32_t WordAt(const std::wstring& group, std::size_t offset) const {
        return WordIn(folder.Read(group + L".idx"), offset);
    }
    std::vector<uint32_t> FlagsOf(const std::wstring& group) const {
        const std::string index = folder.Read(group + L".idx");
        std::vector<uint32_t> flags;
        for (std::size_t at = 100; at + 92 <= index.size(); at += 92)
            flags.push_back(WordIn(index, at));
        return flags;
    }
    uint32_t Unread(const std::wstring& group) const {
        uint32_t unread = 0;
        for (const uint32_t flags : FlagsOf(group))
            unread += !(flags & 1);
        return unread;
    }

    RegistryGuard registry;
    TempFolder folder;
    std::unique_ptr<AppFrame> frame;
    static inline std::vector<Box> boxes;
    std::string groupList_;
    static inline int answer = IDOK;                // what the boxes are answered with
    static inline std::function<void(HWND)> onBox;  // what happens to one before

  private:
    static BOOL CALLBACK AnswerDialog(HWND window, LPARAM) {
        wchar_t text[300] = {};
        GetClassNameW(window, text, 300);
        if (wcscmp(text, L"#32770") != 0 || !IsWindowVisible(window)) return TRUE;
        Box box;
        GetWindowTextW(window, text, 300);
        box.caption = text;
        GetDlgItemTextW(window, 0xFFFF, text, 300);
        box.text = text;
        boxes.push_back(box);
        if (onBox) onBox(window);
        SendMessageW(window, WM_COMMAND, static_cast<WPARAM>(GetDlgItem(window, answer) ? answer : IDOK), 0);
        return FALSE;
    }
    static void CALLBACK AnswerBox(HWND, UINT, UINT_PTR, DWORD) {
        EnumThreadWindows(GetCurrentThreadId(), AnswerDialog, 0);
    }

    UINT_PTR timer_ = 0;
};
