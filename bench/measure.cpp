#include "bench/measure.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>

#include "platform/platform.h"

namespace {

constexpr int kRounds = 5;
constexpr double kEnough = 20;  // milliseconds; the clock counts tenths of a microsecond

double Now() {
    LARGE_INTEGER ticks;
    LARGE_INTEGER frequency;
    QueryPerformanceCounter(&ticks);
    QueryPerformanceFrequency(&frequency);
    return 1000.0 * static_cast<double>(ticks.QuadPart) / static_cast<double>(frequency.QuadPart);
}

double Median(std::array<double, kRounds> values) {
    std::sort(values.begin(), values.end());
    return values[kRounds / 2];
}

uint64_t BusyBytes(HANDLE heap) {
    uint64_t bytes = 0;
    PROCESS_HEAP_ENTRY entry = {};
    HeapLock(heap);
    while (HeapWalk(heap, &entry)) {
        if (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) bytes += entry.cbData;
    }
    HeapUnlock(heap);
    return bytes;
}

}  // namespace

void Require(bool succeeded, const char* what) {
    if (succeeded) return;
    std::printf("%s failed, error %lu\n", what, GetLastError());
    std::exit(1);
}

double Once(const std::function<void()>& work) {
    const double start = Now();
    work();
    return Now() - start;
}

double Repeated(const std::function<void()>& work) {
    const double start = Now();
    double passed = 0;
    int runs = 0;
    for (; passed < kEnough; ++runs) {
        work();
        passed = Now() - start;
    }
    return passed / runs;
}

Medians SideBySide(const Sample& ours, const Sample& theirs) {
    std::array<double, kRounds> ourTimes;
    std::array<double, kRounds> theirTimes;
    for (std::size_t round = 0; round < kRounds; ++round) {
        ourTimes[round] = ours();
        theirTimes[round] = theirs();
    }
    return {Median(ourTimes), Median(theirTimes)};
}

uint64_t HeapBytes() {
    HANDLE heaps[64];
    const DWORD count = GetProcessHeaps(64, heaps);
    Require(count > 0 && count <= 64, "listing the heaps");
    uint64_t bytes = 0;
    for (DWORD i = 0; i < count; ++i)
        bytes += BusyBytes(heaps[i]);
    return bytes;
}

void Rows::AddTimes(uint32_t size, const char* unit, Medians times) {
    Add(size, unit, "%.3f ms", times);
}

void Rows::AddBytes(uint32_t size, const char* unit, uint64_t ours, uint64_t theirs) {
    Add(size, unit, "%.0f bytes", {static_cast<double>(ours), static_cast<double>(theirs)});
}

void Rows::Add(uint32_t size, const char* unit, const char* measure, Medians values) {
    const double cost = values.ours / size;
    const auto print = [](const char* format, double value) {
        std::printf(format, value);
        std::printf("\t");
    };
    std::printf("%s\t%lu %s\t", subject_.c_str(), static_cast<unsigned long>(size), unit);
    print(measure, values.ours);
    std::printf("%s\t", against_.c_str());
    print(measure, values.theirs);
    print("%.2f", values.ours / values.theirs);
    if (costBefore_ > 0) {
        std::printf("%.2f\n", cost / costBefore_);
    } else {
        std::printf("-\n");
    }
    std::fflush(stdout);
    costBefore_ = cost;
}
