// The front's operations. The floor of each is making its calls.
#pragma once

#include <ormel/IEffectOrm.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "Measure.h"

namespace ormel::bench {

/** Does nothing. */
class NullEffect : public IEffectOrm {
  public:
    int32_t setEffectParam(int32_t, int32_t, const int32_t*, int32_t) override { return 0; }
    int32_t getEffectParam(int32_t, int32_t, int32_t*, int32_t*) override { return -1; }
    int32_t commitEffectParams(int32_t) override { return 0; }
};

/**
 * Keeps its parameters' values by device and code, under a lock, like an effect that gets them on
 * one thread and processes audio on another.
 */
class KeepingEffect : public IEffectOrm {
  public:
    int32_t setEffectParam(int32_t device, int32_t code, const int32_t* values,
                           int32_t count) override {
        const std::lock_guard<std::mutex> lock(mLock);
        ++calls;
        mValues[{device, code}].assign(values, values + count);
        return 0;
    }

    int32_t getEffectParam(int32_t, int32_t, int32_t* values, int32_t* count) override {
        *values = 1;
        *count = 61;
        return 0;
    }

    int32_t commitEffectParams(int32_t) override {
        ++calls;
        return 0;
    }

    using Values = std::map<std::pair<int32_t, int32_t>, std::vector<int32_t>>;
    const Values& values() const { return mValues; }

    uint32_t calls = 0;

  private:
    std::mutex mLock;
    Values mValues;
};

/** An operation of the front. */
struct FrontCall {
    std::string name;
    std::function<void(IEffectOrm*)> run;
    /** Number of entries in the lists that it reads. */
    int32_t entries;
    /** Codes of the parameters that it asks the shared store about. */
    std::vector<int32_t> questions;
    /** The calls that it makes, in the layout of a packed list; commits have a negative count. */
    std::vector<int32_t> calls;
};

/** Operations on the present state of the store, with the profile movie. */
std::vector<FrontCall> makeFrontCalls();

/** Makes only an operation's calls: its floor. */
void repeatCalls(const FrontCall& call, IEffectOrm* effect);

/** Compares an operation with its calls alone, on separate KeepingEffects. */
Comparison compareOnKeepingEffect(const FrontCall& call);

/** Compares an operation with a bare loop over its calls, both on a NullEffect. */
Comparison compareOnNullEffect(const FrontCall& call);

/** Runs per measured time in the comparison on a NullEffect: a single run is too short. */
constexpr int kNullEffectRuns = 100;

}  // namespace ormel::bench
