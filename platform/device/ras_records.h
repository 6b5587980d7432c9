// The dial-up records as the device lays them out: names are shorter than on the desktop, and nothing follows
// them. ras.h gives both homes one name for each.
#pragma once

#include <windows.h>

#include <ras.h>

constexpr int kRasEntryNameSize = 21;  // UTF-16 units, as all sizes below, the terminator included
constexpr int kRasPhoneNumberSize = 129;
constexpr int kRasCallbackNumberSize = 49;
constexpr int kRasUserSize = 257;
constexpr int kRasPasswordSize = 257;
constexpr int kRasDomainSize = 16;

struct RasEntryName {
    DWORD dwSize;
    WCHAR szEntryName[kRasEntryNameSize];
};
static_assert(sizeof(RasEntryName) == 48);

struct RasConnection {
    DWORD dwSize;
    HRASCONN hrasconn;
    WCHAR szEntryName[kRasEntryNameSize];
};
static_assert(sizeof(RasConnection) == 52);

struct RasDialParameters {
    DWORD dwSize;
    WCHAR szEntryName[kRasEntryNameSize];
    WCHAR szPhoneNumber[kRasPhoneNumberSize];
    WCHAR szCallbackNumber[kRasCallbackNumberSize];
    WCHAR szUserName[kRasUserSize];
    WCHAR szPassword[kRasPasswordSize];
    WCHAR szDomain[kRasDomainSize];
};
static_assert(sizeof(RasDialParameters) == 1464);
