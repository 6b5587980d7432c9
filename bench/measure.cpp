#include "bench/measure.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>

#include "text/last_error.h"

namespace {

constexpr int kRounds = 5;
constexpr double kEnough = 20;  // milliseconds; the clock counts tenths of a microsecond

double Now() {
    const auto since = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double, std::milli>(since).count();
}

double Median(std::array<double, kRounds> values) {
    std::sort(values.begin(), values.end());
    return values[kRounds / 2];
}

void Print(const char* format, double value) {
    std::printf(format, value);
    std::printf("\t");
}

void PrintGoal(double ratio, double goal) {
    if (goal > 0) {
        std::printf("%.2f %s\n", goal, ratio <= goal ? "met" : "MISSED");
    } else {
        std::printf("-\n");
    }
}

}  // namespace

void Require(bool succeeded, const char* what) {
    if (succeeded) return;
    std::printf("%s failed, error %u\n", what, GetError());
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

void Rows::AddTimes(uint32_t size, const char* unit, Medians times) {
    Add(size, unit, {"%.3f ms", times.ours, times.theirs}, times);
}

void Rows::AddBytes(uint32_t size, const char* unit, uint64_t ours, uint64_t theirs) {
    const Medians bytes = {static_cast<double>(ours), static_cast<double>(theirs)};
    Add(size, unit, {"%.0f bytes", bytes.ours, bytes.theirs}, bytes);
}

void Rows::AddSpeeds(uint32_t bytes, Medians times) {
    const double perSecond = bytes / 1000.0;  // bytes a millisecond into megabytes a second
    Add(bytes, "bytes", {"%.0f MB/s", perSecond / times.ours, perSecond / times.theirs}, times);
}

void Rows::Add(uint32_t size, const char* unit, const Shown& shown, Medians values) {
    const double cost = values.ours / size;
    const double ratio = values.ours / values.theirs;
    std::printf("%s\t%lu %s\t", subject_.c_str(), static_cast<unsigned long>(size), unit);
    Print(shown.format, shown.ours);
    std::printf("%s\t", against_.c_str());
    Print(shown.format, shown.theirs);
    Print("%.2f", ratio);
    if (costBefore_ > 0) {
        Print("%.2f", cost / costBefore_);
    } else {
        std::printf("-\t");
    }
    PrintGoal(ratio, goal_);
    std::fflush(stdout);
    costBefore_ = cost;
}
