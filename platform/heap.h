// Private heaps: many small blocks that all go with one call.
#pragma once

#include "platform/owners.h"

// None when memory runs out, with error 8. `maximum` 0: grows as long as there is memory.
inline HeapOwner MakeHeap(SIZE_T initial, SIZE_T maximum) {
    HeapOwner heap(HeapCreate(0, initial, maximum));
    if (!heap) SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return heap;
}

// Null when the heap is full or memory runs out; no error is set.
inline void* TakeFrom(const HeapOwner& heap, SIZE_T size) {
    return HeapAlloc(heap.Get(), 0, size);
}
