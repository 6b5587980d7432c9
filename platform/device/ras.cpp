// The device's own names: the W of the header's macros is not part of them.
#include "platform/ras.h"

#undef RasEnumEntries
#undef RasEnumConnections
#undef RasGetEntryDialParams
#undef RasDial
#undef RasHangUp

extern "C" {
DWORD RasEnumEntries(LPWSTR, LPWSTR, RASENTRYNAMEW*, DWORD*, DWORD*);
DWORD RasEnumConnections(RASCONNW*, DWORD*, DWORD*);
DWORD RasGetEntryDialParams(LPWSTR, RASDIALPARAMSW*, BOOL*);
DWORD RasDial(void*, LPWSTR, RASDIALPARAMSW*, DWORD, void*, HRASCONN*);
DWORD RasHangUp(HRASCONN);
}

DWORD ListRasEntries(RASENTRYNAMEW* entries, DWORD* size, DWORD* count) {
    return RasEnumEntries(nullptr, nullptr, entries, size, count);
}

DWORD ListRasConnections(RASCONNW* connections, DWORD* size, DWORD* count) {
    return RasEnumConnections(connections, size, count);
}

DWORD ReadRasDialParameters(RASDIALPARAMSW* parameters) {
    BOOL hasPassword = FALSE;
    return RasGetEntryDialParams(nullptr, parameters, &hasPassword);
}

DWORD StartRasDial(RASDIALPARAMSW* parameters, HWND notified, HRASCONN* connection) {
    constexpr DWORD kWindowMessages = 0xFFFFFFFF;
    return RasDial(nullptr, nullptr, parameters, kWindowMessages, notified, connection);
}

DWORD EndRasCall(HRASCONN connection) {
    return RasHangUp(connection);
}

UINT RasEventMessage() {
    return WM_RASDIALEVENT;
}
