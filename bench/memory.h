// What this process holds.
#pragma once

#include <cstdint>

// Busy bytes of all heaps of the process.
uint64_t HeapBytes();

// Bytes of the process in memory: now, and the most there ever were.
struct WorkingSet {
    uint64_t now = 0;
    uint64_t peak = 0;
};
WorkingSet ReadWorkingSet();
