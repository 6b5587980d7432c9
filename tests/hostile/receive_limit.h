// The silence that ends a receive, made as short as a test can wait for.
#pragma once

#include <atomic>

constexpr int kShortLimit = 600;  // milliseconds

// What 120 seconds of silence last instead, in milliseconds: so long that a busy machine's server is not
// taken for silent, but where a test waits for silence. While commands are on the way it is half of that.
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
