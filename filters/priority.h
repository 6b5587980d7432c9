// What keywords make of a subject; the numbers stand in index records and in the `PriorityViewLevel` setting.
// Knows no platform.
#pragma once

#include <cstdint>

enum Priority : uint32_t { kPriorityNormal = 0, kPriorityLow = 1, kPriorityHigh = 2 };
