// The limit of silence that the program asks its sockets for, made short enough to wait for.
#pragma once

#include <atomic>

constexpr int kShortLimit = 600;  // milliseconds; a busy machine holds an answer up for less

// What the sockets get instead, in milliseconds.
extern std::atomic<unsigned long> receiveLimit;

// What the program asked for last, in milliseconds.
extern std::atomic<unsigned long> askedLimit;
