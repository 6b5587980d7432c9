#include "bench/memory.h"

#include "bench/measure.h"
#include "platform/platform.h"

#include <psapi.h>

namespace {

uint64_t BusyBytes(HANDLE heap) {
    uint64_t bytes = 0;
    PROCESS_HEAP_ENTRY entry = {};
    HeapLock(heap);
    while (HeapWalk(heap, &entry)) {
        if (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) bytes += entry.cbData;
    }
    HeapUnlock(heap);
    return bytes;
}

}  // namespace

uint64_t HeapBytes() {
    HANDLE heaps[64];
    const DWORD count = GetProcessHeaps(64, heaps);
    Require(count > 0 && count <= 64, "listing the heaps");
    uint64_t bytes = 0;
    for (DWORD i = 0; i < count; ++i)
        bytes += BusyBytes(heaps[i]);
    return bytes;
}

WorkingSet ReadWorkingSet() {
    PROCESS_MEMORY_COUNTERS counters = {};
    Require(GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof(counters)),
            "reading the memory used");
    return {counters.WorkingSetSize, counters.PeakWorkingSetSize};
}
