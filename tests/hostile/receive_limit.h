// The limit of silence that the program asks its sockets for, made as short as a test can wait for.
#pragma once

#include <atomic>

constexpr int kShortLimit = 600;  // milliseconds

// What the sockets get instead, in milliseconds: so long that a busy machine's server is not taken for
// silent, but where a test waits for silence.
constexpr unsigned long kLongLimit = 20000;
extern std::atomic<unsigned long> receiveLimit;

// Until the end of the scope.
class LimitSilence {
  public:
    explicit LimitSilence(unsigned long milliseconds) { receiveLimit = milliseconds; }
    ~LimitSilence() { receiveLimit = kLongLimit; }
    LimitSilence(const LimitSilence&) = delete;
    LimitSilence& operator=(const LimitSilence&) = delete;
};

// What the program asked for last, in milliseconds.
extern std::atomic<unsigned long> askedLimit;
