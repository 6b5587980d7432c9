// A phone book and a line of the tests' own, in the place of the system's library. The folder that the
// environment names PELNOR_RAS holds what they answer, in the file "book": the error of listing the entries,
// that of dialling, and how many connections are up; then a name a line, in the system's code page. What was
// asked for is added to the file "calls". As strict as the system's about sizes.
#include <winsock2.h>

#include <windows.h>

#include <ras.h>
#include <raserror.h>

#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

namespace {

const auto kConnection = reinterpret_cast<HRASCONN>(0x77);

std::string PathOf(const char* file) {
    return std::string(std::getenv("PELNOR_RAS")) + "\\" + file;
}

struct Book {
    DWORD listError = 0, dialError = 0;
    size_t connections = 0;
    std::vector<std::string> names;

    Book() {
        std::ifstream file(PathOf("book"));
        file >> listError >> dialError >> connections >> std::ws;
        for (std::string name; std::getline(file, name);)
            names.push_back(name);
    }
};

void Note(const std::string& call) {
    std::ofstream(PathOf("calls"), std::ios::app | std::ios::binary) << call << "\n";
}

// Fails when the caller's buffer has no room for all records; it learns their size.
template <class Record>
DWORD Fit(const Record* first, size_t records, DWORD* size, DWORD* count) {
    if (first->dwSize != sizeof(Record)) return ERROR_INVALID_SIZE;
    const auto needed = static_cast<DWORD>(records * sizeof(Record));
    const bool fits = *size >= needed;
    *size = needed;
    *count = static_cast<DWORD>(records);
    return fits ? 0 : ERROR_BUFFER_TOO_SMALL;
}

}  // namespace

#define EXPORT extern "C" __declspec(dllexport)

EXPORT DWORD WINAPI RasEnumEntriesW(LPCWSTR, LPCWSTR, LPRASENTRYNAMEW entries, LPDWORD size, LPDWORD count) {
    const Book book;
    const DWORD error = Fit(entries, book.names.size(), size, count);
    for (size_t i = 0; error == 0 && i < book.names.size(); ++i)
        MultiByteToWideChar(CP_ACP, 0, book.names[i].c_str(), -1, entries[i].szEntryName, RAS_MaxEntryName);
    return book.listError ? book.listError : error;
}

EXPORT DWORD WINAPI RasEnumConnectionsW(LPRASCONNW connections, LPDWORD size, LPDWORD count) {
    return Fit(connections, Book().connections, size, count);
}

EXPORT DWORD WINAPI RasGetEntryDialParamsW(LPCWSTR, LPRASDIALPARAMSW parameters, LPBOOL) {
    if (parameters->dwSize == sizeof(*parameters)) lstrcpyW(parameters->szUserName, L"caller");
    return 0;
}

EXPORT DWORD WINAPI RasDialW(LPRASDIALEXTENSIONS extensions, LPCWSTR book, LPRASDIALPARAMSW parameters,
                             DWORD notifierType, LPVOID notifier, LPHRASCONN connection) {
    constexpr DWORD kWindow = 0xFFFFFFFF;
    if (parameters->dwSize != sizeof(*parameters)) return ERROR_INVALID_SIZE;
    if (extensions || book || notifierType != kWindow) return ERROR_INVALID_PARAMETER;
    char caption[64] = "", call[512] = "";
    GetWindowTextA(static_cast<HWND>(notifier), caption, 64);
    wsprintfA(call, "dial \"%ls\" \"%ls\" for %ls, report to %s", parameters->szEntryName,
              parameters->szPhoneNumber, parameters->szUserName, caption);
    Note(call);
    *connection = kConnection;
    return Book().dialError;
}

EXPORT DWORD WINAPI RasHangUpW(HRASCONN connection) {
    Note(connection == kConnection ? "hang up" : "hang up what was not dialled");
    return connection == kConnection ? 0 : ERROR_INVALID_HANDLE;
}
