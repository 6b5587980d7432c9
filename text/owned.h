// Text on the general heap. Whoever holds one of these owns it.
#pragma once

#include <cstddef>
#include <memory>
#include <new>

using NarrowText = std::unique_ptr<char[]>;   // 8-bit, NUL-terminated, in the stored text's code page
using WideText = std::unique_ptr<wchar_t[]>;  // UTF-16, NUL-terminated

// Room for `count` elements, not initialised; null when memory runs out (no error is set).
template <class T>
std::unique_ptr<T[]> NewArray(std::size_t count) {
    return std::unique_ptr<T[]>(new (std::nothrow) T[count]);
}
