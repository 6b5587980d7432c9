// Decimal digits without the platform's formatting. Knows no platform.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

constexpr std::size_t kMostDigits = 10;

// Takes the digits at the cursor, up to `end` or any other byte. Without digits it is 0; no check for
// overflow.
template <class Unit>
uint32_t TakeDecimal(const Unit*& cursor, const Unit* end = nullptr) {
    uint32_t value = 0;
    for (; cursor != end && *cursor >= '0' && *cursor <= '9'; ++cursor)
        value = value * 10 + static_cast<uint32_t>(*cursor - '0');
    return value;
}

// Writes the digits of `value`, for which `text` has room, without a NUL. Returns how many there are.
inline std::size_t WriteDecimal(char* text, uint32_t value) {
    std::size_t count = 0;
    do
        text[count++] = static_cast<char>('0' + value % 10);
    while ((value /= 10) != 0);
    std::reverse(text, text + count);
    return count;
}
