#include "tests/choose/live_jobs.h"

#include <cstdlib>
#include <cstring>
#include <new>

#include "subscribe/group_list.h"

std::atomic<int> liveJobs{0};
std::atomic<bool> noJobs{false};

// In the place of the program's own, all of them.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    if (size == sizeof(GroupListJob) && noJobs) return nullptr;
    if (size == sizeof(GroupListJob)) ++liveJobs;
    return std::malloc(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return std::malloc(size);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t size) noexcept {
    if (size == sizeof(GroupListJob)) std::memset(memory, 0xDD, size);
    std::free(memory);
    if (size == sizeof(GroupListJob)) --liveJobs;
}
void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}
