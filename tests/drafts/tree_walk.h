// A tree control read and walked by its texts.
#pragma once

#include <string>
#include <vector>

#include "tests/support/ui_thread.h"

inline HTREEITEM NextOf(HWND tree, HTREEITEM item, WPARAM relation) {
    return reinterpret_cast<HTREEITEM>(
        SendMessageW(tree, TVM_GETNEXTITEM, relation, reinterpret_cast<LPARAM>(item)));
}

inline std::wstring TextOf(HWND tree, HTREEITEM item) {
    wchar_t text[300] = {};
    TVITEMW data = {};
    data.mask = TVIF_TEXT | TVIF_HANDLE;
    data.hItem = item;
    data.pszText = text;
    data.cchTextMax = 300;
    SendMessageW(tree, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&data));
    return text;
}

inline std::vector<std::wstring> Children(HWND tree, HTREEITEM parent) {
    std::vector<std::wstring> texts;
    for (HTREEITEM item = NextOf(tree, parent, TVGN_CHILD); item; item = NextOf(tree, item, TVGN_NEXT))
        texts.push_back(TextOf(tree, item));
    return texts;
}

inline HTREEITEM Child(HWND tree, HTREEITEM parent, const std::wstring& text) {
    HTREEITEM item = NextOf(tree, parent, TVGN_CHILD);
    while (item && lstrcmpiW(TextOf(tree, item).c_str(), text.c_str()) != 0)
        item = NextOf(tree, item, TVGN_NEXT);
    return item;
}

inline void Choose(HWND tree, HTREEITEM item) {
    SendMessageW(tree, TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(item));
}

// With the arrow keys, as the control notifies its dialog only of what the user does.
inline void Open(HWND tree, HTREEITEM item) {
    Choose(tree, item);
    SendMessageW(tree, WM_KEYDOWN, VK_RIGHT, 1);
}
inline void Fold(HWND tree, HTREEITEM item) {
    Choose(tree, item);
    SendMessageW(tree, WM_KEYDOWN, VK_LEFT, 1);
}

// The folder of a path below the root, every level opened on the way to it but not the folder itself.
inline HTREEITEM Walk(HWND tree, const std::wstring& path) {
    HTREEITEM item = NextOf(tree, nullptr, TVGN_ROOT);
    for (size_t start = 1; item && start < path.size();) {
        const size_t end = path.find(L'\\', start);
        if (Children(tree, item) == std::vector<std::wstring>{L"DUMMY"}) Open(tree, item);
        item = Child(tree, item, path.substr(start, end - start));
        start = end == path.npos ? end : end + 1;
    }
    EXPECT_TRUE(item) << testing::PrintToString(path);
    return item;
}
