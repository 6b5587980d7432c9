// Dial-up. The device exports these functions without the letter W. The desktop has them in a library that is
// loaded at the first call, so that the program also starts where it is missing. All return 0 or a system
// error.
#pragma once

#include "platform/platform.h"
// After the types that ras.h needs.
#ifdef PELNOR_DEVICE
#include "platform/device/ras_records.h"
#else
#include <ras.h>
using RasEntryName = RASENTRYNAMEW;
using RasConnection = RASCONNW;
using RasDialParameters = RASDIALPARAMSW;
#endif

// Fills `entries`; the first record holds the size of one. `size` is in bytes, in and out.
DWORD ListRasEntries(RasEntryName* entries, DWORD* size, DWORD* count);
DWORD ListRasConnections(RasConnection* connections, DWORD* size, DWORD* count);

// The stored user and password of the entry that `parameters` names.
DWORD ReadRasDialParameters(RasDialParameters* parameters);

// Starts dialling. Progress arrives at `notified` as RasEventMessage with the state in wParam and an error in
// lParam.
DWORD StartRasDial(RasDialParameters* parameters, HWND notified, HRASCONN* connection);
DWORD EndRasCall(HRASCONN connection);

// 0xCCCD, or the number that the system has registered instead.
UINT RasEventMessage();
