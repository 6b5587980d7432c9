#include "platform/ras.h"

namespace {

struct RasFunctions {
    decltype(&RasEnumEntriesW) enumEntries = nullptr;
    decltype(&RasEnumConnectionsW) enumConnections = nullptr;
    decltype(&RasGetEntryDialParamsW) getEntryDialParams = nullptr;
    decltype(&RasDialW) dial = nullptr;
    decltype(&RasHangUpW) hangUp = nullptr;
    bool loaded = false;
};

template <class Function>
bool Find(HMODULE library, const char* name, Function& function) {
    function = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, name)));
    return function != nullptr;
}

RasFunctions Load() {
    RasFunctions ras;
    // Never one that stands beside the program. Kept: a call may last to the end.
    const HMODULE library = LoadLibraryExW(L"rasapi32.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    ras.loaded = library && Find(library, "RasEnumEntriesW", ras.enumEntries) &&
                 Find(library, "RasEnumConnectionsW", ras.enumConnections) &&
                 Find(library, "RasGetEntryDialParamsW", ras.getEntryDialParams) &&
                 Find(library, "RasDialW", ras.dial) && Find(library, "RasHangUpW", ras.hangUp);
    return ras;
}

// Used on the user-interface thread only.
const RasFunctions& Functions() {
    static const RasFunctions ras = Load();
    return ras;
}

}  // namespace

DWORD ListRasEntries(RASENTRYNAMEW* entries, DWORD* size, DWORD* count) {
    if (!Functions().loaded) return ERROR_MOD_NOT_FOUND;
    return Functions().enumEntries(nullptr, nullptr, entries, size, count);
}

DWORD ListRasConnections(RASCONNW* connections, DWORD* size, DWORD* count) {
    if (!Functions().loaded) return ERROR_MOD_NOT_FOUND;
    return Functions().enumConnections(connections, size, count);
}

DWORD ReadRasDialParameters(RASDIALPARAMSW* parameters) {
    BOOL hasPassword = FALSE;
    if (!Functions().loaded) return ERROR_MOD_NOT_FOUND;
    return Functions().getEntryDialParams(nullptr, parameters, &hasPassword);
}

DWORD StartRasDial(RASDIALPARAMSW* parameters, HWND notified, HRASCONN* connection) {
    constexpr DWORD kWindowMessages = 0xFFFFFFFF;
    if (!Functions().loaded) return ERROR_MOD_NOT_FOUND;
    return Functions().dial(nullptr, nullptr, parameters, kWindowMessages, notified, connection);
}

DWORD EndRasCall(HRASCONN connection) {
    if (!Functions().loaded) return ERROR_MOD_NOT_FOUND;
    return Functions().hangUp(connection);
}

UINT RasEventMessage() {
    static const UINT registered = RegisterWindowMessageA(RASDIALEVENT);
    return registered ? registered : WM_RASDIALEVENT;
}
