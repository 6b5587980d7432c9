#include "text/name_list.h"

#include <cstdlib>

#include "platform/platform.h"
#include "text/last_error.h"

namespace {

constexpr uint32_t kFirstCapacity = 64;

bool Grow(NameList& list) {
    const uint32_t capacity = list.capacity ? list.capacity * 2 : kFirstCapacity;
    void* grown = std::realloc(list.entries, capacity * sizeof(NameEntry));
    if (!grown) return false;
    list.entries = static_cast<NameEntry*>(grown);
    list.capacity = capacity;
    return true;
}

int Compare(const void* left, const void* right) {
    return lstrcmpiW(static_cast<const NameEntry*>(left)->name, static_cast<const NameEntry*>(right)->name);
}

}  // namespace

NameList::~NameList() {
    for (uint32_t i = 0; i < count; ++i)
        delete[] entries[i].name;
    std::free(entries);
}

bool AddName(NameList& list, WideText name, int tag) {
    if (!name || (list.count == list.capacity && !Grow(list))) return Fail(kErrorNoMemory);
    list.entries[list.count++] = {name.release(), tag};
    return true;
}

void SortNames(NameList& list) {
    std::qsort(list.entries, list.count, sizeof(NameEntry), Compare);
}
