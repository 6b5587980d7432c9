// The thread's last-error value for code that knows no platform, and the numbers that the program itself
// sets.
#pragma once

constexpr unsigned kErrorFileNotFound = 2;
constexpr unsigned kErrorNoMemory = 8;
constexpr unsigned kErrorInvalidData = 13;
constexpr unsigned kErrorEndOfFile = 38;
constexpr unsigned kErrorFileExists = 80;
constexpr unsigned kErrorInvalidArgument = 87;
constexpr unsigned kErrorAlreadyExists = 183;
constexpr unsigned kErrorMoreData = 234;

void SetError(unsigned error);
unsigned GetError();

// Sets `error` and returns false: `return Fail(kErrorNoMemory);`
inline bool Fail(unsigned error) {
    SetError(error);
    return false;
}

// Keeps the last error over a clean-up that may change it: the value at construction is set again at the end
// of the scope.
class ErrorKeeper {
  public:
    ErrorKeeper() : error_(GetError()) {}
    ~ErrorKeeper() { SetError(error_); }
    ErrorKeeper(const ErrorKeeper&) = delete;
    ErrorKeeper& operator=(const ErrorKeeper&) = delete;

  private:
    unsigned error_;
};
