// Private heaps: many small blocks that all go with one call.
#pragma once

#include "platform/memory.h"
#include "platform/owners.h"

// None when memory runs out, with error 8. `maximum` 0: grows as long as there is memory.
inline HeapOwner MakeHeap(SIZE_T initial, SIZE_T maximum) {
    if (MemoryAllowed()) {
        HeapOwner heap(Watched(HeapCreate(0, initial, maximum)));
        if (heap) return heap;
    }
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return HeapOwner();
}

// Null when the heap is full or memory runs out; no error is set.
inline void* TakeFrom(const HeapOwner& heap, SIZE_T size) {
    return MemoryAllowed() ? HeapAlloc(heap.Get(), 0, size) : nullptr;
}
