#include "tests/support/memory_watch.h"

#include <winsock2.h>

#include <windows.h>

#include "tests/support/imports.h"

const MemoryWatch* memoryWatch = nullptr;

// The linker makes these of the C library's functions, and calls of those reach what stands below.
extern "C" {
void* __real_malloc(std::size_t size);
void* __real_realloc(void* block, std::size_t size);
void __real_free(void* block);
}

void* operator new(std::size_t size) {
    return __real_malloc(size);
}

namespace {

// What a watch takes itself, and the runtime library in its behalf, is not the program's: a call within a
// call goes by. The mark is the thread's; to set it takes no memory.
DWORD mark = TLS_OUT_OF_INDEXES;

template <class Look>
void LetLook(Look look) {
    if (!memoryWatch) return;
    if (mark == TLS_OUT_OF_INDEXES) mark = TlsAlloc();
    const DWORD error = GetLastError();
    if (!TlsGetValue(mark)) {
        TlsSetValue(mark, &mark);
        look();
        TlsSetValue(mark, nullptr);
    }
    SetLastError(error);
}

bool Allowed(std::size_t size) {
    bool allowed = true;
    LetLook([&] { allowed = memoryWatch->allows(size); });
    return allowed;
}

void* Taken(void* memory, bool fresh = true) {
    if (memory) LetLook([&] { memoryWatch->taken(memory, fresh); });
    return memory;
}

void* Released(void* memory) {
    if (memory) LetLook([&] { memoryWatch->released(memory); });
    return memory;
}

HANDLE WINAPI MakeHeap(DWORD options, SIZE_T initial, SIZE_T most) {
    static const auto make = RealFunction<decltype(&MakeHeap)>("HeapCreate");
    return Allowed(initial) ? Taken(make(options, initial, most)) : nullptr;
}

void* WINAPI TakeFromHeap(HANDLE heap, DWORD options, SIZE_T size) {
    static const auto take = RealFunction<decltype(&TakeFromHeap)>("HeapAlloc");
    return Allowed(size) ? take(heap, options, size) : nullptr;
}

BOOL WINAPI DestroyHeap(HANDLE heap) {
    static const auto destroy = RealFunction<decltype(&DestroyHeap)>("HeapDestroy");
    return destroy(Released(heap));
}

}  // namespace

extern "C" {
void* __wrap_malloc(std::size_t size) {
    return Allowed(size) ? Taken(__real_malloc(size)) : nullptr;
}
void* __wrap_realloc(void* block, std::size_t size) {
    if (!Allowed(size)) return nullptr;
    void* grown = __real_realloc(Released(block), size);
    Taken(grown ? grown : block, !block);
    return grown;
}
void __wrap_free(void* block) {
    __real_free(Released(block));
}
}

IN_PLACE_OF(HeapCreate, MakeHeap)
IN_PLACE_OF(HeapAlloc, TakeFromHeap)
IN_PLACE_OF(HeapDestroy, DestroyHeap)
