#include "views/columns.h"

#include "settings/registry.h"
#include "text/messages.h"

void InsertColumns(HWND control, const ColumnTable& table, const RegistryKeyOwner& key) {
    for (int i = 0; i < table.count; ++i) {
        const Column& column = table.columns[i];
        uint32_t stored = 0;
        const bool found = key && ReadDword(key, column.valueName, stored);
        const wchar_t* heading = LoadResString(column.stringId);
        table.insert(control, column.index, const_cast<wchar_t*>(heading ? heading : L""),
                     found ? static_cast<int>(stored) : column.defaultWidth);
    }
}

bool StoreColumnWidths(HWND control, const ColumnTable& table, const RegistryKeyOwner& key) {
    for (int i = 0; i < table.count; ++i) {
        const Column& column = table.columns[i];
        const auto width = static_cast<uint32_t>(table.width(control, column.index));
        if (!WriteDword(key, column.valueName, width)) return false;
    }
    return true;
}
