// What the device has in another way than the Windows headers say, which know only the desktop's. platform.h
// gives both homes one name for each record.
#pragma once

#include <windows.h>

#include <prsht.h>

#include <cstddef>

struct FoundFile {
    DWORD dwFileAttributes;
    FILETIME ftCreationTime;
    FILETIME ftLastAccessTime;
    FILETIME ftLastWriteTime;
    DWORD nFileSizeHigh;
    DWORD nFileSizeLow;
    DWORD dwOID;  // the object store's id of the file
    WCHAR cFileName[MAX_PATH];
};
static_assert(sizeof(FoundFile) == 560);
static_assert(offsetof(FoundFile, cFileName) == 40);

// The first version of the sheet's records: what newer ones append is unknown there, and pages stand
// in an array.
using SheetPage = PROPSHEETPAGEW_V1;
struct SheetHeader {
    DWORD dwSize;
    DWORD dwFlags;
    HWND hwndParent;
    HINSTANCE hInstance;
    LPCWSTR pszIcon;
    LPCWSTR pszCaption;
    UINT nPages;
    UINT nStartPage;
    const SheetPage* ppsp;
    PFNPROPSHEETCALLBACK pfnCallback;
};
static_assert(sizeof(SheetPage) == 40);
static_assert(sizeof(SheetHeader) == 40);

// The headers have the compiler do these, which has no instruction for it here; the device exports them.
#undef InterlockedIncrement
#undef InterlockedDecrement
extern "C" LONG InterlockedIncrement(LONG volatile* value);
extern "C" LONG InterlockedDecrement(LONG volatile* value);
