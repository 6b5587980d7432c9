// All memory that the program takes for itself comes through here or through a private heap
// (platform/heap.h), so that the tests can let it run out at any place and see what is not given back.
// `operator new` stands on these too. Knows no platform.
#pragma once

#include <cstddef>
#include <cstdlib>

// For the tests. Each member is called on the thread that takes or gives back.
struct MemoryWatch {
    bool (*allows)();                // asked before memory is taken: false makes that fail
    void (*taken)(void* memory);     // a block or a private heap that now is the program's
    void (*released)(void* memory);  // any block or heap that goes, whoever took it
};
inline const MemoryWatch* memoryWatch = nullptr;  // null in the program

inline void* Watched(void* memory) {
    if (memory && memoryWatch) memoryWatch->taken(memory);
    return memory;
}

inline bool MemoryAllowed() {
    return !memoryWatch || memoryWatch->allows();
}

// Null when memory runs out; no error is set. A block is released with ReleaseMemory.
inline void* TakeMemory(std::size_t size) {
    return MemoryAllowed() ? Watched(std::malloc(size ? size : 1)) : nullptr;
}

inline void ReleaseMemory(void* memory) {
    if (memory && memoryWatch) memoryWatch->released(memory);
    std::free(memory);
}

// Makes a block larger, which may move it; with null takes a new one. On failure, null, the old block stands.
inline void* GrowMemory(void* memory, std::size_t size) {
    if (!MemoryAllowed()) return nullptr;
    if (memory && memoryWatch) memoryWatch->released(memory);
    void* grown = std::realloc(memory, size);
    return grown ? Watched(grown) : (Watched(memory), nullptr);
}
