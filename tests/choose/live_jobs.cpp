#include "tests/choose/live_jobs.h"

#include <cstring>
#include <new>

#include "platform/memory.h"
#include "subscribe/group_list.h"

std::atomic<int> liveJobs{0};
std::atomic<bool> noJobs{false};

// In the place of the program's own, all of them.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    if (size == sizeof(GroupListJob) && noJobs) return nullptr;
    if (size == sizeof(GroupListJob)) ++liveJobs;
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
void operator delete(void* memory, std::size_t size) noexcept {
    if (size == sizeof(GroupListJob)) std::memset(memory, 0xDD, size);
    ReleaseMemory(memory);
    if (size == sizeof(GroupListJob)) --liveJobs;
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
