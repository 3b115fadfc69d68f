#include "Measure.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace ormel::bench {

namespace {

double median(std::vector<double> values) {
    if (values.empty()) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

}  // namespace

void fail(const std::string& what) {
    (void)std::fprintf(stderr, "ormel_bench: %s\n", what.c_str());
    std::_Exit(2);
}

void check(bool condition, const char* what) {
    if (!condition) {
        fail(std::string("the work was not done: ") + what);
    }
}

double secondsOf(const std::function<void()>& run) {
    const auto start = std::chrono::steady_clock::now();
    run();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void Comparison::run(benchmark::State& state) {
    for ([[maybe_unused]] const auto iteration : state) {
        mFloorTimes.push_back(mFloor());
        mWorkTimes.push_back(mWork());
        state.SetIterationTime(mWorkTimes.back());
    }
}

double Comparison::work() const {
    return median(mWorkTimes);
}

double Comparison::floor() const {
    return median(mFloorTimes);
}

void registerAll([[maybe_unused]] std::vector<Comparison>& comparisons) {
    // The analyzer reports objects that the benchmark library keeps as leaks.
#ifndef __clang_analyzer__
    for (Comparison& comparison : comparisons) {
        const auto run = [&comparison](benchmark::State& state) { comparison.run(state); };
        benchmark::RegisterBenchmark(comparison.name().c_str(), run)->UseManualTime();
    }
#endif
}

}  // namespace ormel::bench
