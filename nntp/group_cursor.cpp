#include "nntp/group_cursor.h"

void ResetCursor(GroupCursor& cursor) {
    cursor.currentRow = 0;
    cursor.rowCount = static_cast<uint32_t>(SendMessageW(cursor.list, LVM_GETITEMCOUNT, 0, 0));
}

const wchar_t* CurrentGroup(GroupCursor& cursor) {
    LVITEMW item = {};
    item.mask = LVIF_TEXT;
    item.pszText = cursor.name;
    item.cchTextMax = kTextCapacity;
    cursor.name[0] = L'\0';
    if (cursor.currentRow >= cursor.rowCount) return nullptr;
    const LRESULT length =
        SendMessageW(cursor.list, LVM_GETITEMTEXTW, cursor.currentRow, reinterpret_cast<LPARAM>(&item));
    return length > 0 ? cursor.name : nullptr;
}
