// Lets a test refuse the program's allocations and see what is not given back. For suites that link
// pelnor_memory_watch, which puts itself before malloc and the private heaps; the program is compiled as it
// always is. The test's own containers take their memory beside it.
#pragma once

#include <cstddef>

// Each member is called on the thread that takes or gives back.
struct MemoryWatch {
    bool (*allows)(std::size_t size);  // asked before memory is taken: false makes that fail
    // A block or a private heap that now is the program's; not `fresh` where a block was made larger.
    void (*taken)(void* memory, bool fresh);
    void (*released)(void* memory);  // any block or heap that goes, whoever took it
};
extern const MemoryWatch* memoryWatch;  // null: nobody looks
