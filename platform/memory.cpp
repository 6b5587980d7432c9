// No runtime library lies beside the program: these stand on the system's malloc, and answer null when memory
// runs out, which every caller tests.
#include "platform/memory.h"

#include <new>

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return TakeMemory(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return TakeMemory(size);
}
void operator delete(void* memory) noexcept {
    ReleaseMemory(memory);
}
void operator delete[](void* memory) noexcept {
    ReleaseMemory(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    ReleaseMemory(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    ReleaseMemory(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
    ReleaseMemory(memory);
}
void operator delete[](void* memory, const std::nothrow_t&) noexcept {
    ReleaseMemory(memory);
}
