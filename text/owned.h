// Text on the general heap. Whoever holds one of these owns it.
#pragma once

#include <cstddef>
#include <memory>
#include <new>

#include "text/last_error.h"

using NarrowText = std::unique_ptr<char[]>;   // 8-bit, NUL-terminated, in the stored text's code page
using WideText = std::unique_ptr<wchar_t[]>;  // UTF-16, NUL-terminated

// Room for `count` elements, not initialised; null, with error 8, when memory runs out.
template <class T>
std::unique_ptr<T[]> NewArray(std::size_t count) {
    std::unique_ptr<T[]> array(new (std::nothrow) T[count]);
    if (!array) SetError(kErrorNoMemory);
    return array;
}

// Overwrites memory that is about to be released. The compiler must not drop the writes.
inline void Wipe(void* memory, std::size_t size) {
    for (auto next = static_cast<volatile char*>(memory); size > 0; --size)
        *next++ = 0;
}

// Overwrites a text up to its NUL and releases it, so that nobody finds it in memory afterwards.
template <class Unit>
struct WipingDelete {
    WipingDelete() = default;
    WipingDelete(std::default_delete<Unit[]>) {}  // so that a plain text can be moved into a secret one

    void operator()(Unit* text) const {
        for (volatile Unit* unit = text; *unit != 0; ++unit)
            *unit = 0;
        delete[] text;
    }
};

// A password, or a text that holds one. Made from a NarrowText or WideText by moving it.
using Secret = std::unique_ptr<char[], WipingDelete<char>>;
using WideSecret = std::unique_ptr<wchar_t[], WipingDelete<wchar_t>>;

// A buffer for a secret from a window or the registry.
template <std::size_t kUnits>
struct SecretBuffer {
    wchar_t text[kUnits] = {};

    SecretBuffer() = default;
    SecretBuffer(const SecretBuffer&) = delete;
    SecretBuffer& operator=(const SecretBuffer&) = delete;
    ~SecretBuffer() { Wipe(text, sizeof(text)); }
};
