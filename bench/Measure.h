// What all measurements share: checks that the work was done, and times taken in turns.
#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <string>
#include <vector>

namespace ormel::bench {

/** Ends the program with @p what. */
[[noreturn]] void fail(const std::string& what);

/** Ends the program unless @p condition holds: a time of work that was not done is none. */
void check(bool condition, const char* what);

double secondsOf(const std::function<void()>& run);

/**
 * Some work and its floor, each a function that does it once and returns the seconds. The two take
 * turns, so that a machine that is not equally fast all the time is so to both.
 */
class Comparison {
  public:
    Comparison(std::string name, std::function<double()> work, std::function<double()> floor)
        : mName(std::move(name)), mWork(std::move(work)), mFloor(std::move(floor)) {}

    void run(benchmark::State& state);

    const std::string& name() const { return mName; }
    /** False for what was filtered out; the figures below are not numbers then. */
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

/** Has the benchmark library run comparisons, which must stay where they are until then. */
void registerAll(std::vector<Comparison>& comparisons);

}  // namespace ormel::bench
