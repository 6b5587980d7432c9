// The device's own names: the W of the header's macros is not part of them.
#include "platform/ras.h"

#undef RasEnumEntries
#undef RasEnumConnections
#undef RasGetEntryDialParams
#undef RasDial
#undef RasHangUp

extern "C" {
DWORD RasEnumEntries(LPWSTR, LPWSTR, RasEntryName*, DWORD*, DWORD*);
DWORD RasEnumConnections(RasConnection*, DWORD*, DWORD*);
DWORD RasGetEntryDialParams(LPWSTR, RasDialParameters*, BOOL*);
DWORD RasDial(void*, LPWSTR, RasDialParameters*, DWORD, void*, HRASCONN*);
DWORD RasHangUp(HRASCONN);
}

DWORD ListRasEntries(RasEntryName* entries, DWORD* size, DWORD* count) {
    return RasEnumEntries(nullptr, nullptr, entries, size, count);
}

DWORD ListRasConnections(RasConnection* connections, DWORD* size, DWORD* count) {
    return RasEnumConnections(connections, size, count);
}

DWORD ReadRasDialParameters(RasDialParameters* parameters) {
    BOOL hasPassword = FALSE;
    return RasGetEntryDialParams(nullptr, parameters, &hasPassword);
}

DWORD StartRasDial(RasDialParameters* parameters, HWND notified, HRASCONN* connection) {
    constexpr DWORD kWindowMessages = 0xFFFFFFFF;
    return RasDial(nullptr, nullptr, parameters, kWindowMessages, notified, connection);
}

DWORD EndRasCall(HRASCONN connection) {
    return RasHangUp(connection);
}

UINT RasEventMessage() {
    return WM_RASDIALEVENT;
}
