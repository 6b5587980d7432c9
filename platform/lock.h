// Keeps two threads apart.
#pragma once

#include "platform/platform.h"

class Lock {
  public:
    Lock() { InitializeCriticalSection(&section_); }
    ~Lock() { DeleteCriticalSection(&section_); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

    void Enter() { EnterCriticalSection(&section_); }
    void Leave() { LeaveCriticalSection(&section_); }

  private:
    CRITICAL_SECTION section_;
};

// Holds a lock to the end of the scope. A thread may hold one more than once.
class Locked {
  public:
    explicit Locked(Lock& lock) : lock_(lock) { lock_.Enter(); }
    ~Locked() { lock_.Leave(); }
    Locked(const Locked&) = delete;
    Locked& operator=(const Locked&) = delete;

  private:
    Lock& lock_;
};
