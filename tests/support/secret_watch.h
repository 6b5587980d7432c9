// Looks for a password in the memory that the program gives back.
#pragma once

#include <malloc.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <mutex>
#include <string>
#include <string_view>

#include "platform/platform.h"
#include "tests/support/memory_watch.h"

// Counts the blocks that the program takes and frees while this stands, and those that held the secret at
// that moment, as 8-bit or as UTF-16 text. One at a time.
class SecretWatch {
  public:
    explicit SecretWatch(const char* ascii) : narrow_(ascii) {
        for (const char c : narrow_)
            wide_.append({c, '\0'});
        current = this;
        memoryWatch = &kHooks;
    }
    ~SecretWatch() {
        memoryWatch = nullptr;
        current = nullptr;
    }
    SecretWatch(const SecretWatch&) = delete;
    SecretWatch& operator=(const SecretWatch&) = delete;

    int freed = 0;
    int found = 0;

  private:
    static bool Allow(std::size_t) { return true; }

    // Emptied, but for a block that was made larger: the test and the system may have left the secret there.
    static void NoteTaken(void* memory, bool fresh) {
        if (IsHeap(memory)) return;
        if (fresh) std::memset(memory, 0, _msize(memory));
        const std::lock_guard<std::mutex> lock(current->mutex_);
        *std::find(current->held_.begin(), current->held_.end() - 1, nullptr) = memory;
    }

    // Only what the program took: the test's own texts may hold the secret.
    static void NoteReleased(void* memory) {
        const std::lock_guard<std::mutex> lock(current->mutex_);
        const auto held = std::find(current->held_.begin(), current->held_.end(), memory);
        if (held == current->held_.end()) return;
        *held = nullptr;
        const std::string_view bytes(static_cast<char*>(memory), _msize(memory));
        ++current->freed;
        if (bytes.find(current->narrow_) != bytes.npos || bytes.find(current->wide_) != bytes.npos)
            ++current->found;
    }

    static bool IsHeap(void* memory) {
        std::array<HANDLE, 64> heaps = {};
        GetProcessHeaps(heaps.size(), heaps.data());
        return std::find(heaps.begin(), heaps.end(), memory) != heaps.end();
    }

    static constexpr MemoryWatch kHooks = {Allow, NoteTaken, NoteReleased};
    static inline SecretWatch* current = nullptr;

    std::mutex mutex_;
    std::array<void*, 1024> held_ = {};
    std::string narrow_, wide_;
};
