// The limit of silence that the program asks its sockets for, made short enough to wait for.
#pragma once

#include <atomic>

constexpr int kShortLimit = 250;  // milliseconds

// What the program asked for last, in milliseconds.
extern std::atomic<unsigned long> askedLimit;
