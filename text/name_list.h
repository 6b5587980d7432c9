// Names collected and sorted before they are shown: a control that sorts by itself searches its rows from the
// top for each one.
#pragma once

#include <cstdint>

#include "text/owned.h"

struct NameEntry {
    wchar_t* name = nullptr;  // owned by the list
    int tag = 0;              // the caller's
};

struct NameList {
    NameEntry* entries = nullptr;
    uint32_t count = 0;
    uint32_t capacity = 0;

    NameList() = default;
    NameList(const NameList&) = delete;
    NameList& operator=(const NameList&) = delete;
    ~NameList();
};

// Takes the name over. False, with error 8, for a null name and when memory runs out; the list stays as it
// was.
[[nodiscard]] bool AddName(NameList& list, WideText name, int tag);

// Ignores case, as the system compares texts.
void SortNames(NameList& list);
