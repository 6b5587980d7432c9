// The columns of a list view or a header control, from one table.
#pragma once

#include "platform/owners.h"

struct Column {
    UINT stringId;             // the heading
    const wchar_t* valueName;  // of the stored width, a REG_DWORD
    int index;                 // where it is inserted, and found again
    int defaultWidth;          // in pixels
};

struct ColumnTable {
    const Column* columns;
    int count;
    void (*insert)(HWND control, int index, wchar_t* heading, int width);  // left-aligned
    int (*width)(HWND control, int index);
};

// Inserts the columns, in the table's order, with the widths that the key holds, or the default ones.
void InsertColumns(HWND control, const ColumnTable& table, const RegistryKeyOwner& key);

// Stores the columns' widths. False, with the registry's error, at the first that cannot be written.
[[nodiscard]] bool StoreColumnWidths(HWND control, const ColumnTable& table, const RegistryKeyOwner& key);
