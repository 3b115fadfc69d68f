// Shared by all measurements: checks that the work was done, and timing of work and floor in turns.
#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <string>
#include <vector>

namespace ormel::bench {

/** Prints @p what and ends the program. */
[[noreturn]] void fail(const std::string& what);

/** Ends the program unless @p condition holds: a time is valid only if the work was done. */
void check(bool condition, const char* what);

double secondsOf(const std::function<void()>& run);

/**
 * Some work and its floor, each a function that does it once and returns the seconds. The two run
 * in turns, so that changes in the machine's speed affect both.
 */
class Comparison {
  public:
    Comparison(std::string name, std::function<double()> work, std::function<double()> floor)
        : mName(std::move(name)), mWork(std::move(work)), mFloor(std::move(floor)) {}

    void run(benchmark::State& state);

    const std::string& name() const { return mName; }
    /** False if it was filtered out; the figures below are then NaN. */
    bool wasRun() const { return !mWorkTimes.empty(); }
    /** Medians, in seconds. */
    double work() const;
    double floor() const;
    double ratio() const { return work() / floor(); }

  private:
    std::string mName;
    std::function<double()> mWork;
    std::function<double()> mFloor;
    std::vector<double> mWorkTimes;
    std::vector<double> mFloorTimes;
};

/** Registers comparisons with the benchmark library. They must not move until it has run them. */
void registerAll(std::vector<Comparison>& comparisons);

}  // namespace ormel::bench
