// Operates the running program's windows for the end-to-end tests. Reads one order a line from standard
// input, its fields separated by tabs, and answers each with a line of JSON: rows of texts, or the system
// error of an order that is refused. All text is UTF-8, handles and numbers are decimal. No order waits
// longer than kPatience for the other side.
//
//   windows                     visible top-level windows of the program, the topmost first: handle, class,
//   enabled,
//                               caption
//   items WINDOW                its children: handle, id, class, enabled, visible, text
//   rows LIST                   a report list's rows, one field a column, left to right
//   place LIST ROW              the middle of a row's text, in the list: x, y
//   post WINDOW MSG W L         PostMessage
//   send WINDOW MSG W L         SendMessage; answers the result
//   text WINDOW TEXT            WM_SETTEXT
//   forget                      deletes the program's settings
//   setting NAME sz|dword VALUE writes one
#include <windows.h>

#include <commctrl.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
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

std::string Handle(HWND window) {
    return std::to_string(reinterpret_cast<UINT_PTR>(window));
}

std::string answer;  // the rows so far

void Answer(const Fields& fields) {
    answer += answer.empty() ? "[" : ",[";
    for (size_t i = 0; i < fields.size(); ++i) {
        answer += i == 0 ? "\"" : ",\"";
        for (const char byte : fields[i]) {
            if (byte == '"' || byte == '\\') answer += '\\';
            answer += byte < ' ' && byte >= 0
                          ? "\\u00" + std::string(1, "01"[byte / 16]) + "0123456789abcdef"[byte % 16]
                          : std::string(1, byte);
        }
        answer += '"';
    }
    answer += ']';
}

Fields Parse(const char* line) {
    Fields fields(1);
    for (; *line && *line != '\n'; ++line) {
        if (*line == '\t') {
            fields.emplace_back();
        } else {
            fields.back() += *line;
        }
    }
    return fields;
}

// False when the window did not answer in time.
bool Ask(HWND window, UINT message, WPARAM wParam, LPARAM lParam, DWORD_PTR* result) {
    return SendMessageTimeoutW(window, message, wParam, lParam, SMTO_NORMAL, kPatience, result) != 0;
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

std::string Flag(BOOL value) {
    return value ? "1" : "0";
}

BOOL CALLBACK ListTop(HWND window, LPARAM) {
    const std::string name = ClassOf(window);
    if (!IsWindowVisible(window) || (name != Utf8(kFrameClass) && name != Utf8(kDialogClass))) return TRUE;
    // Kept by the system, so this answers even while the window's own thread does not.
    wchar_t caption[1024] = L"";
    GetWindowTextW(window, caption, 1024);
    Answer({Handle(window), name, Flag(IsWindowEnabled(window)), Utf8(caption)});
    return TRUE;
}

BOOL CALLBACK ListChild(HWND window, LPARAM) {
    Answer({Handle(window), std::to_string(GetDlgCtrlID(window)), ClassOf(window),
            Flag(IsWindowEnabled(window)), Flag(IsWindowVisible(window)), TextOf(window)});
    return TRUE;
}

// Memory within the program, for messages whose pointers only its own process understands.
struct ForeignMemory {
    HANDLE process = nullptr;
    char* address = nullptr;
    static constexpr size_t kSize = 8192;

    explicit ForeignMemory(HWND window) {
        DWORD id = 0;
        GetWindowThreadProcessId(window, &id);
        process = OpenProcess(PROCESS_VM_OPERATION | PROCESS_VM_READ | PROCESS_VM_WRITE, FALSE, id);
        if (process)
            address = static_cast<char*>(VirtualAllocEx(process, nullptr, kSize, MEM_COMMIT, PAGE_READWRITE));
    }
    ~ForeignMemory() {
        if (address) VirtualFreeEx(process, address, 0, MEM_RELEASE);
        if (process) CloseHandle(process);
    }
    ForeignMemory(const ForeignMemory&) = delete;
    ForeignMemory& operator=(const ForeignMemory&) = delete;
};

bool Cell(const ForeignMemory& memory, HWND list, int row, int column, std::string* out) {
    wchar_t text[2048] = L"";
    LVITEMW item = {};
    item.iSubItem = column;
    item.cchTextMax = 2048;
    item.pszText = reinterpret_cast<wchar_t*>(memory.address + sizeof item);
    DWORD_PTR length = 0;
    const bool read = WriteProcessMemory(memory.process, memory.address, &item, sizeof item, nullptr) &&
                      Ask(list, LVM_GETITEMTEXTW, static_cast<WPARAM>(row),
                          reinterpret_cast<LPARAM>(memory.address), &length) &&
                      ReadProcessMemory(memory.process, memory.address + sizeof item, text,
                                        (length < 2047 ? length : 2047) * sizeof(wchar_t), nullptr);
    *out = Utf8(text);
    return read;
}

bool Rows(HWND list) {
    DWORD_PTR rows = 0, header = 0, columns = 0;
    const ForeignMemory memory(list);
    if (!memory.address || !Ask(list, LVM_GETITEMCOUNT, 0, 0, &rows) ||
        !Ask(list, LVM_GETHEADER, 0, 0, &header) ||
        !Ask(reinterpret_cast<HWND>(header), HDM_GETITEMCOUNT, 0, 0, &columns)) {
        return false;
    }
    for (int row = 0; row < static_cast<int>(rows); ++row) {
        Fields cells(columns);
        for (int column = 0; column < static_cast<int>(columns); ++column) {
            if (!Cell(memory, list, row, column, &cells[static_cast<size_t>(column)])) return false;
        }
        Answer(cells);
    }
    return true;
}

bool Place(HWND list, int row) {
    RECT place = {LVIR_LABEL, 0, 0, 0};
    DWORD_PTR found = 0;
    const ForeignMemory memory(list);
    if (!memory.address ||
        !WriteProcessMemory(memory.process, memory.address, &place, sizeof place, nullptr) ||
        !Ask(list, LVM_GETITEMRECT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(memory.address),
             &found) ||
        !found || !ReadProcessMemory(memory.process, memory.address, &place, sizeof place, nullptr)) {
        return false;
    }
    Answer({std::to_string((place.left + place.right) / 2), std::to_string((place.top + place.bottom) / 2)});
    return true;
}

bool Setting(const Fields& order) {
    HKEY key = nullptr;
    if (RegCreateKeyExW(HKEY_CURRENT_USER, kKey, 0, nullptr, 0, KEY_WRITE, nullptr, &key, nullptr))
        return false;
    const std::wstring name = Wide(order[1]), text = Wide(order[3]);
    const DWORD number = static_cast<DWORD>(std::strtoul(order[3].c_str(), nullptr, 10));
    const LONG error =
        order[2] == "dword"
            ? RegSetValueExW(key, name.c_str(), 0, REG_DWORD, reinterpret_cast<const BYTE*>(&number),
                             sizeof number)
            : RegSetValueExW(key, name.c_str(), 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                             static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
    RegCloseKey(key);
    return error == ERROR_SUCCESS;
}

bool Send(const Fields& order) {
    DWORD_PTR result = 0;
    if (!Ask(Window(order[1]), static_cast<UINT>(Number(order[2])), static_cast<WPARAM>(Number(order[3])),
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
    if (name == "rows") return Rows(Window(order[1]));
    if (name == "place") return Place(Window(order[1]), static_cast<int>(Number(order[2])));
    if (name == "send") return Send(order);
    if (name == "post") {
        return PostMessageW(Window(order[1]), static_cast<UINT>(Number(order[2])),
                            static_cast<WPARAM>(Number(order[3])),
                            static_cast<LPARAM>(Number(order[4]))) != 0;
    }
    if (name == "text") {
        const std::wstring text = Wide(order[2]);
        return Ask(Window(order[1]), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()), &result);
    }
    if (name == "forget") {
        const LONG error = RegDeleteTreeW(HKEY_CURRENT_USER, kKey);
        return error == ERROR_SUCCESS || error == ERROR_FILE_NOT_FOUND;
    }
    return name == "setting" && Setting(order);
}

}  // namespace

int main() {
    char line[8192];
    while (std::fgets(line, sizeof line, stdin)) {
        answer.clear();
        if (Obey(Parse(line))) {
            std::printf("[%s]\n", answer.c_str());
        } else {
            std::printf("%lu\n", GetLastError());
        }
        std::fflush(stdout);
    }
    return 0;
}
