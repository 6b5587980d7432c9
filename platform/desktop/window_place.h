// Where a window was left, kept from run to run: 20 bytes in the registry value WindowPlace, which are the
// four edges of its normal size as WINDOWPLACEMENT counts them and a DWORD, 1 for maximised.
#pragma once

#include <windows.h>

// The rectangle moved, and made smaller where it must be, to fit into `area`.
RECT MovedInto(const RECT& place, const RECT& area);

// `key` is a path below HKEY_CURRENT_USER. A place that cannot be kept is no reason to trouble the user: the
// next start takes the one before.
void SavePlace(HWND window, const WCHAR* key);

// Moves the window to the place kept, brought into reach where monitors have gone since. Where no good place
// is kept it gets the client size `first`, or what the work area has room for. Does not show it. Returns
// whether it was left maximised, which only a shown window can be.
[[nodiscard]] bool RestorePlace(HWND window, const WCHAR* key, SIZE first);
