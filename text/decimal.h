// Decimal digits without the platform's formatting. Knows no platform.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

constexpr std::size_t kMostDigits = 10;

// Writes the digits of `value`, which `text` has room for, without a NUL. Answers how many they are.
inline std::size_t WriteDecimal(char* text, uint32_t value) {
    std::size_t count = 0;
    do
        text[count++] = static_cast<char>('0' + value % 10);
    while ((value /= 10) != 0);
    std::reverse(text, text + count);
    return count;
}
