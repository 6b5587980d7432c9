// Operates the running program's windows for the end-to-end tests. Reads one order a line from standard
// input, its fields separated by tabs, and answers each with a line of JSON: rows of texts, or the system
// error of an order that is refused. All text is UTF-8, handles and numbers are decimal. No order waits
// longer than kPatience for the other side.
//
//   windows                     visible top-level windows of the program, the topmost first: handle, class,
//                               enabled, caption, the display's number of it
//   items WINDOW                its children: handle, id, class, enabled, visible, text
//   dump                        the visible windows with all that is in them, for people to read; it and the
//                               next are answered from within the program
//   rows LIST                   a report list's rows, one field a column, left to right
//   area WINDOW                 its edges on the screen: left, top, right, bottom
//   post WINDOW MSG W L         PostMessage, by its number or its registered name
//   send WINDOW MSG W L         SendMessage; answers the result
//   text WINDOW TEXT            WM_SETTEXT
//   forget                      deletes the program's settings
//   setting NAME sz|dword VALUE writes one; as binary, VALUE is hexadecimal
//   clipboard                   its text
#include <windows.h>

#include <commctrl.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <iostream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

constexpr UINT kPatience = 5000;  // milliseconds
constexpr wchar_t kFrameClass[] = L"PelnorMainFrmWnd";
constexpr wchar_t kDialogClass[] = L"#32770";
constexpr wchar_t kKey[] = L"Software\\marrowby\\Pelnor";

using Fields = std::vector<std::string>;

std::wstring Wide(const std::string& text) {
    std::wstring wide(text.size() + 1, L'\0');
    const int length =
        MultiByteToWideChar(CP_UTF8, 0, text.c_str(), -1, wide.data(), static_cast<int>(wide.size()));
    wide.resize(length > 0 ? static_cast<size_t>(length) - 1 : 0);
    return wide;
}

std::string Utf8(const wchar_t* text) {
    std::string narrow(std::wcslen(text) * 3 + 1, '\0');
    const int length = WideCharToMultiByte(CP_UTF8, 0, text, -1, narrow.data(),
                                           static_cast<int>(narrow.size()), nullptr, nullptr);
    narrow.resize(length > 0 ? static_cast<size_t>(length) - 1 : 0);
    return narrow;
}

HWND Window(const std::string& field) {
    return reinterpret_cast<HWND>(static_cast<UINT_PTR>(std::strtoull(field.c_str(), nullptr, 10)));
}

long long Number(const std::string& field) {
    return std::strtoll(field.c_str(), nullptr, 10);
}

// By its number or its registered name.
UINT Message(const std::string& field) {
    const auto number = static_cast<UINT>(Number(field));
    return number ? number : RegisterWindowMessageA(field.c_str());
}

std::string Handle(HWND window) {
    return std::to_string(reinterpret_cast<UINT_PTR>(window));
}

std::string answer;  // the rows so far

void Answer(const Fields& fields) {
    answer += answer.empty() ? "[" : ",[";
    for (size_t i = 0; i < fields.size(); ++i) {
        answer += i == 0 ? "\"" : ",\"";
        for (const char byte : fields[i]) {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\u%04x", static_cast<unsigned>(byte));
            const bool plain = byte < 0 || (byte >= ' ' && byte != '"' && byte != '\\');
            answer += plain ? std::string(1, byte) : escaped;
        }
        answer += '"';
    }
    answer += ']';
}

Fields Parse(const std::string& line) {
    Fields fields;
    std::istringstream stream(line);
    for (std::string field; std::getline(stream, field, '\t');)
        fields.push_back(field);
    return fields;
}

// False when the window did not answer in time.
bool Ask(HWND window, UINT message, WPARAM wParam, LPARAM lParam, DWORD_PTR* result) {
    return SendMessageTimeoutW(window, message, wParam, lParam, SMTO_NORMAL, kPatience, result) != 0;
}

LONG_PTR Ask(HWND window, UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
    DWORD_PTR result = 0;
    return Ask(window, message, wParam, lParam, &result) ? static_cast<LONG_PTR>(result) : -1;
}

std::string ClassOf(HWND window) {
    wchar_t name[64] = L"";
    GetClassNameW(window, name, 64);
    return Utf8(name);
}

std::string TextOf(HWND window) {
    wchar_t text[2048] = L"";
    DWORD_PTR length = 0;
    if (!Ask(window, WM_GETTEXT, 2048, reinterpret_cast<LPARAM>(text), &length)) return "";
    return Utf8(text);
}

// How an article begins, and how long it is.
std::string StartOf(HWND window) {
    wchar_t text[110] = L"";
    const LONG_PTR start = Ask(window, WM_GETTEXT, 110, reinterpret_cast<LPARAM>(text));
    const LONG_PTR all = Ask(window, WM_GETTEXTLENGTH);
    return Utf8(text) + (start < all ? "..." + std::to_string(all) : "");
}

std::string Flag(BOOL value) {
    return value ? "1" : "0";
}

bool IsTop(HWND window) {
    const std::string name = ClassOf(window);
    return IsWindowVisible(window) && (name == Utf8(kFrameClass) || name == Utf8(kDialogClass));
}

BOOL CALLBACK ListTop(HWND window, LPARAM) {
    if (!IsTop(window)) return TRUE;
    // Kept by the system, so this answers even while the window's own thread does not.
    wchar_t caption[1024] = L"";
    GetWindowTextW(window, caption, 1024);
    const auto shown = reinterpret_cast<UINT_PTR>(GetPropW(window, L"__wine_x11_whole_window"));
    Answer({Handle(window), ClassOf(window), Flag(IsWindowEnabled(window)), Utf8(caption),
            std::to_string(shown)});
    return TRUE;
}

BOOL CALLBACK ListChild(HWND window, LPARAM) {
    Answer({Handle(window), std::to_string(GetDlgCtrlID(window)), ClassOf(window),
            Flag(IsWindowEnabled(window)), Flag(IsWindowVisible(window)), TextOf(window)});
    return TRUE;
}

std::string Cell(HWND list, int row, int column) {
    wchar_t text[2048] = L"";
    LVITEMW item = {};
    item.iSubItem = column;
    item.cchTextMax = 2048;
    item.pszText = text;
    Ask(list, LVM_GETITEMTEXTW, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
    return Utf8(text);
}

void Rows(HWND list) {
    const auto header = reinterpret_cast<HWND>(Ask(list, LVM_GETHEADER));
    const LONG_PTR rows = Ask(list, LVM_GETITEMCOUNT), columns = Ask(header, HDM_GETITEMCOUNT);
    for (int row = 0; row < rows; ++row) {
        Fields cells;
        for (int column = 0; column < columns; ++column)
            cells.push_back(Cell(list, row, column));
        Answer(cells);
    }
}

// The dump. Handles stay out of it: it is to be the same every time.

void Say(int depth, const std::string& line) {
    Answer({std::string(static_cast<size_t>(depth) * 2, ' ') + line});
}

template <class Number>
std::string Decimal(const char* name, Number value) {
    return std::string(" ") + name + " " + std::to_string(value);
}

std::string Hex(const char* name, LONG_PTR value) {
    char digits[24];
    std::snprintf(digits, sizeof digits, " %s %X", name, static_cast<unsigned>(value));
    return digits;
}

std::string Quoted(const std::string& text) {
    return " \"" + text + "\"";
}

template <class Record>
std::string AskText(HWND window, UINT message, LONG_PTR index, Record& record) {
    wchar_t text[1024] = L"";
    record.pszText = text;
    record.cchTextMax = 1024;
    Ask(window, message, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(&record));
    return Quoted(Utf8(text));
}

void DumpHeader(HWND header, int depth) {
    const LONG_PTR count = Ask(header, HDM_GETITEMCOUNT);
    for (LONG_PTR i = 0; i < count; ++i) {
        HDITEMW item = {};
        item.mask = HDI_TEXT | HDI_WIDTH | HDI_FORMAT;
        const std::string text = AskText(header, HDM_GETITEMW, i, item);
        Say(depth, "column" + text + Decimal("width", item.cxy) + Hex("format", item.fmt));
    }
}

void DumpRows(HWND list, int depth) {
    const auto header = reinterpret_cast<HWND>(Ask(list, LVM_GETHEADER));
    const LONG_PTR rows = Ask(list, LVM_GETITEMCOUNT), columns = Ask(header, HDM_GETITEMCOUNT);
    for (LONG_PTR row = 0; row < rows; ++row) {
        LVITEMW item = {};
        item.mask = LVIF_TEXT | LVIF_IMAGE | LVIF_STATE;
        item.stateMask = static_cast<UINT>(-1);
        item.iItem = static_cast<int>(row);
        std::string cells = AskText(list, LVM_GETITEMW, 0, item);
        for (int column = 1; column < columns; ++column)
            cells += Quoted(Cell(list, static_cast<int>(row), column));
        Say(depth, "row" + cells + Decimal("image", item.iImage) +
                       (item.state & LVIS_SELECTED ? " selected" : "") +
                       (item.state & LVIS_FOCUSED ? " focused" : ""));
    }
}

void DumpTree(HWND tree, LONG_PTR item, int depth) {
    for (; item; item = Ask(tree, TVM_GETNEXTITEM, TVGN_NEXT, item)) {
        TVITEMW record = {};
        record.mask = TVIF_TEXT | TVIF_IMAGE | TVIF_SELECTEDIMAGE | TVIF_STATE | TVIF_CHILDREN;
        record.hItem = reinterpret_cast<HTREEITEM>(item);
        record.stateMask = static_cast<UINT>(-1);
        const std::string text = AskText(tree, TVM_GETITEMW, 0, record);
        Say(depth, "item" + text + Decimal("image", record.iImage) + Decimal("open", record.iSelectedImage) +
                       (record.cChildren ? " parent" : "") +
                       (record.state & TVIS_EXPANDED ? " expanded" : "") +
                       (record.state & TVIS_SELECTED ? " selected" : ""));
        DumpTree(tree, Ask(tree, TVM_GETNEXTITEM, TVGN_CHILD, item), depth + 1);
    }
}

void DumpTabs(HWND tabs, int depth) {
    const LONG_PTR count = Ask(tabs, TCM_GETITEMCOUNT), shown = Ask(tabs, TCM_GETCURSEL);
    for (LONG_PTR i = 0; i < count; ++i) {
        TCITEMW item = {};
        item.mask = TCIF_TEXT;
        Say(depth, "tab" + AskText(tabs, TCM_GETITEMW, i, item) + (i == shown ? " selected" : ""));
    }
}

void DumpChoices(HWND combo, int depth) {
    const LONG_PTR count = Ask(combo, CB_GETCOUNT), chosen = Ask(combo, CB_GETCURSEL);
    for (LONG_PTR i = 0; i < count; ++i) {
        wchar_t text[1024] = L"";
        Ask(combo, CB_GETLBTEXT, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(text));
        Say(depth, "choice" + Quoted(Utf8(text)) + (i == chosen ? " selected" : ""));
    }
}

void DumpMenu(HWND popup, int depth) {
    constexpr UINT kGetMenu = 0x1E1;  // MN_GETHMENU
    const auto menu = reinterpret_cast<HMENU>(Ask(popup, kGetMenu));
    const int count = GetMenuItemCount(menu);  // below 0 once it has closed
    for (int i = 0; i < count; ++i) {
        wchar_t text[256] = L"";
        MENUITEMINFOW item = {};
        item.cbSize = sizeof item;
        item.fMask = MIIM_STRING | MIIM_STATE | MIIM_ID | MIIM_FTYPE;
        item.dwTypeData = text;
        item.cch = 256;
        GetMenuItemInfoW(menu, static_cast<UINT>(i), TRUE, &item);
        Say(depth, item.fType & MFT_SEPARATOR ? "separator"
                                              : "item" + Quoted(Utf8(text)) + Decimal("command", item.wID) +
                                                    (item.fState & MFS_CHECKED ? " checked" : "") +
                                                    (item.fState & MFS_GRAYED ? " grey" : "") +
                                                    (item.fState & MFS_HILITE ? " selected" : ""));
    }
}

std::string IconOf(HWND label) {
    const auto icon = reinterpret_cast<HICON>(Ask(label, STM_GETICON));
    const std::pair<LPCWSTR, const char*> named[] = {{IDI_ERROR, "stop"},
                                                     {IDI_QUESTION, "question"},
                                                     {IDI_EXCLAMATION, "exclamation"},
                                                     {IDI_INFORMATION, "information"}};
    for (const auto& [id, name] : named) {
        if (icon && LoadIconW(nullptr, id) == icon) return std::string(" icon ") + name;
    }
    return icon ? " icon of its own" : "";
}

std::string FontOf(HWND window) {
    LOGFONTW font = {};
    const auto handle = reinterpret_cast<HFONT>(Ask(window, WM_GETFONT));
    if (!GetObjectW(handle, sizeof font, &font)) return "";
    return " font " + Utf8(font.lfFaceName) + Decimal("of", font.lfHeight);
}

std::string ScrollOf(HWND bar) {
    SCROLLINFO info = {};
    info.cbSize = sizeof info;
    info.fMask = SIF_ALL;
    GetScrollInfo(bar, SB_CTL, &info);
    return Decimal("from", info.nMin) + Decimal("to", info.nMax) + Decimal("page", info.nPage) +
           Decimal("at", info.nPos);
}

std::string EditOf(HWND edit) {
    const LONG_PTR selection = Ask(edit, EM_GETSEL);
    return Decimal("limit", Ask(edit, EM_GETLIMITTEXT)) + (Ask(edit, EM_GETPASSWORDCHAR) ? " secret" : "") +
           Decimal("selection", LOWORD(selection)) + Decimal("to", HIWORD(selection));
}

std::string StateOf(HWND window, const std::string& kind) {
    if (kind == "Button") return Ask(window, BM_GETCHECK) ? " checked" : "";
    if (kind == "Edit") return EditOf(window);
    if (kind == "Static") return IconOf(window);
    if (kind == "ScrollBar") return ScrollOf(window);
    if (kind == "msctls_progress32")
        return Decimal("from", Ask(window, PBM_GETRANGE, TRUE)) + Decimal("to", Ask(window, PBM_GETRANGE)) +
               Decimal("at", Ask(window, PBM_GETPOS));
    if (kind == "SysListView32") return Hex("extended", Ask(window, LVM_GETEXTENDEDLISTVIEWSTYLE));
    if (kind == "SysHeader32") return FontOf(window);
    if (kind == "#32770") return FontOf(window);
    if (kind == Utf8(kFrameClass))
        return std::string(Ask(window, WM_GETICON, ICON_SMALL) ? " small icon" : "") +
               (Ask(window, WM_GETICON, ICON_BIG) ? " large icon" : "");
    return "";
}

// A dialog that the frame can cover, a pane that an input method makes words for.
std::string FaultOf(HWND window, const std::string& kind, int depth) {
    if (depth == 0 && kind == "#32770" && !GetWindow(window, GW_OWNER)) return " alone";
    const bool pane = depth == 1 && ClassOf(GetParent(window)) == Utf8(kFrameClass);
    return pane && ImmGetContext(window) ? " input method" : "";
}

void DumpContents(HWND window, const std::string& kind, int depth) {
    if (kind == "SysHeader32") DumpHeader(window, depth);
    if (kind == "SysListView32") DumpRows(window, depth);
    if (kind == "SysTreeView32") DumpTree(window, Ask(window, TVM_GETNEXTITEM, TVGN_ROOT), depth);
    if (kind == "SysTabControl32") DumpTabs(window, depth);
    if (kind == "ComboBox") DumpChoices(window, depth);
    if (kind == "#32768") DumpMenu(window, depth);
}

// Class, id, text, place in its parent, style without what the words behind it say.
void DumpWindow(HWND window, int depth) {
    const LONG style = GetWindowLongW(window, GWL_STYLE);
    const std::string kind = ClassOf(window);
    GUITHREADINFO thread = {};
    thread.cbSize = sizeof thread;
    GetGUIThreadInfo(GetWindowThreadProcessId(window, nullptr), &thread);
    RECT area = {};
    GetWindowRect(window, &area);
    MapWindowPoints(nullptr, depth ? GetParent(window) : nullptr, reinterpret_cast<POINT*>(&area), 2);
    const std::string text = kind == "PELNORArticleViewWnd" ? StartOf(window) : TextOf(window);
    std::string line =
        kind + (depth ? " " + std::to_string(static_cast<short>(GetDlgCtrlID(window))) : "") +
        (kind == "Static" && (style & SS_TYPEMASK) == SS_ICON ? "" : Quoted(text)) +
        Decimal("at", area.left) + "," + std::to_string(area.top) + Decimal("size", area.right - area.left) +
        "x" + std::to_string(area.bottom - area.top) + Hex("style", style & ~(WS_VISIBLE | WS_DISABLED)) +
        StateOf(window, kind) + (style & WS_DISABLED ? " disabled" : "") + FaultOf(window, kind, depth) +
        (thread.hwndFocus == window ? " focus" : "") + (GetForegroundWindow() == window ? " front" : "");
    if (!(style & WS_VISIBLE)) return Say(depth, line + " hidden");
    Say(depth, line);
    DumpContents(window, kind, depth + 1);
    for (HWND child = GetWindow(window, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT))
        DumpWindow(child, depth + 1);
}

BOOL CALLBACK DumpTop(HWND window, LPARAM) {
    DWORD owner = 0;
    GetWindowThreadProcessId(window, &owner);
    const bool popup = IsWindowVisible(window) && ClassOf(window) == "#32768";
    if (owner == GetCurrentProcessId() && (IsTop(window) || popup)) DumpWindow(window, 0);
    return TRUE;
}

// What lists, menus and fonts hold is known in the program's process alone. So this library goes there with a
// hook, looks when its message comes, and leaves what it saw in memory that both processes share.
struct Shared {
    static constexpr DWORD kSize = 1 << 20;
    HANDLE mapping =
        CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, kSize, L"PelnorDrive");
    char* text = static_cast<char*>(MapViewOfFile(mapping, FILE_MAP_WRITE, 0, 0, kSize));

    Shared() = default;
    ~Shared() {
        UnmapViewOfFile(text);
        CloseHandle(mapping);
    }
    Shared(const Shared&) = delete;
    Shared& operator=(const Shared&) = delete;
};

UINT LookMessage() {
    return RegisterWindowMessageW(L"PelnorDrive");
}

LRESULT CALLBACK Look(int code, WPARAM wParam, LPARAM lParam) {
    const auto& sent = *reinterpret_cast<const CWPSTRUCT*>(lParam);
    if (code == HC_ACTION && sent.message == LookMessage()) {
        answer.clear();
        if (sent.wParam) {
            Rows(reinterpret_cast<HWND>(sent.wParam));
        } else {
            EnumWindows(DumpTop, 0);
        }
        answer.resize(std::min(answer.size(), size_t{Shared::kSize - 1}));
        std::strcpy(Shared().text, answer.c_str());
    }
    return CallNextHookEx(nullptr, code, wParam, lParam);
}

// Looks at the rows of `list`, or at all windows of the process of `window`. What is gone shows nothing.
bool LookFrom(HWND window, HWND list) {
    const DWORD thread = GetWindowThreadProcessId(window, nullptr);
    if (!thread) return true;
    const Shared shared;
    const HHOOK hook = SetWindowsHookExW(WH_CALLWNDPROC, Look, GetModuleHandleW(L"drive.dll"), thread);
    *shared.text = '\0';
    DWORD_PTR result = 0;
    const bool looked = hook && Ask(window, LookMessage(), reinterpret_cast<WPARAM>(list), 0, &result);
    UnhookWindowsHookEx(hook);
    answer += (answer.empty() || !*shared.text ? "" : ",") + std::string(shared.text);
    return looked || !IsWindow(window);
}

BOOL CALLBACK DumpProcess(HWND window, LPARAM parameter) {
    auto& seen = *reinterpret_cast<std::set<DWORD>*>(parameter);
    DWORD owner = 0;
    GetWindowThreadProcessId(window, &owner);
    return !IsTop(window) || !seen.insert(owner).second || LookFrom(window, nullptr);
}

bool Dump() {
    std::set<DWORD> seen;
    return EnumWindows(DumpProcess, reinterpret_cast<LPARAM>(&seen)) != 0;
}

bool Area(HWND window) {
    RECT area = {};
    if (!GetWindowRect(window, &area)) return false;
    Answer({std::to_string(area.left), std::to_string(area.top), std::to_string(area.right),
            std::to_string(area.bottom)});
    return true;
}

bool Setting(const Fields& order) {
    HKEY key = nullptr;
    if (RegCreateKeyExW(HKEY_CURRENT_USER, kKey, 0, nullptr, 0, KEY_WRITE, nullptr, &key, nullptr))
        return false;
    const std::wstring name = Wide(order[1]), text = Wide(order[3]);
    const DWORD number = static_cast<DWORD>(std::strtoul(order[3].c_str(), nullptr, 10));
    std::string bytes(reinterpret_cast<const char*>(text.c_str()), (text.size() + 1) * sizeof(wchar_t));
    if (order[2] == "dword") bytes.assign(reinterpret_cast<const char*>(&number), sizeof number);
    if (order[2] == "binary") bytes.clear();
    for (size_t i = 0; order[2] == "binary" && i < order[3].size(); i += 2)
        bytes += static_cast<char>(std::strtoul(order[3].substr(i, 2).c_str(), nullptr, 16));
    const DWORD type = order[2] == "sz" ? REG_SZ : order[2] == "dword" ? REG_DWORD : REG_BINARY;
    const LONG error = RegSetValueExW(key, name.c_str(), 0, type, reinterpret_cast<const BYTE*>(bytes.data()),
                                      static_cast<DWORD>(bytes.size()));
    RegCloseKey(key);
    return error == ERROR_SUCCESS;
}

bool Clipboard() {
    if (!OpenClipboard(nullptr)) return false;
    const HANDLE text = GetClipboardData(CF_UNICODETEXT);
    Answer({text ? Utf8(static_cast<const wchar_t*>(GlobalLock(text))) : ""});
    return CloseClipboard() != 0;
}

bool Send(const Fields& order) {
    DWORD_PTR result = 0;
    if (!Ask(Window(order[1]), Message(order[2]), static_cast<WPARAM>(Number(order[3])),
             static_cast<LPARAM>(Number(order[4])), &result)) {
        return false;
    }
    Answer({std::to_string(static_cast<LONG_PTR>(result))});
    return true;
}

bool Obey(Fields order) {
    const std::string name = order[0];
    order.resize(5);
    DWORD_PTR result = 0;
    SetLastError(ERROR_INVALID_PARAMETER);
    if (name == "windows") return EnumWindows(ListTop, 0) != 0;
    if (name == "items") {
        EnumChildWindows(Window(order[1]), ListChild, 0);
        return true;
    }
    if (name == "dump") return Dump();
    if (name == "rows") return LookFrom(Window(order[1]), Window(order[1]));
    if (name == "area") return Area(Window(order[1]));
    if (name == "send") return Send(order);
    if (name == "post") {
        return PostMessageW(Window(order[1]), Message(order[2]), static_cast<WPARAM>(Number(order[3])),
                            static_cast<LPARAM>(Number(order[4]))) != 0;
    }
    if (name == "text") {
        const std::wstring text = Wide(order[2]);
        return Ask(Window(order[1]), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()), &result);
    }
    if (name == "clipboard") return Clipboard();
    if (name == "forget") {
        const LONG error = RegDeleteTreeW(HKEY_CURRENT_USER, kKey);
        return error == ERROR_SUCCESS || error == ERROR_FILE_NOT_FOUND;
    }
    return name == "setting" && Setting(order);
}

}  // namespace

extern "C" __declspec(dllexport) void Drive() {
    for (std::string line; std::getline(std::cin, line);) {
        answer.clear();
        if (Obey(Parse(line))) {
            std::printf("[%s]\n", answer.c_str());
        } else {
            std::printf("%lu\n", GetLastError());
        }
        std::fflush(stdout);
    }
}
