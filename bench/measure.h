// How the benchmarks measure: what Pelnor does and what it is held against run by turns in one process, five
// times each, and the medians are compared. Times are in milliseconds. Knows no platform.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

// Ends the benchmark with a message and the last error when something that it measures has failed.
void Require(bool succeeded, const char* what);

// One measurement.
using Sample = std::function<double()>;

// The time of one run of `work`.
double Once(const std::function<void()>& work);

// The same for work that may be repeated: short work runs until the clock shows enough to trust.
double Repeated(const std::function<void()>& work);

struct Medians {
    double ours = 0;
    double theirs = 0;
};
Medians SideBySide(const Sample& ours, const Sample& theirs);

constexpr double kNoGoal = 0;

// The rows of one subject, from the smallest size to the largest. Each is a line of fields with tabs between
// them, as run.sh makes its table of: subject, size, ours, what it is held against, theirs, ratio, growth,
// goal. The ratio is our time, bytes or count divided by theirs. Growth is our cost of a unit against that in
// the row before: 1.00 where time grows as the size does. A goal is the highest ratio that is wanted.
class Rows {
  public:
    Rows(std::string subject, std::string against, double goal = kNoGoal)
        : subject_(std::move(subject)), against_(std::move(against)), goal_(goal) {}
    void AddTimes(uint32_t size, const char* unit, Medians times);
    void AddBytes(uint32_t size, const char* unit, uint64_t ours, uint64_t theirs);

    // The speed at which `bytes` were worked through in these times.
    void AddSpeeds(uint32_t bytes, Medians times);

  private:
    struct Shown {
        const char* format;
        double ours, theirs;
    };
    void Add(uint32_t size, const char* unit, const Shown& shown, Medians values);

    std::string subject_;
    std::string against_;
    double goal_;
    double costBefore_ = 0;
};
