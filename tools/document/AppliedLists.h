// What an effect is told, and what it keeps of a document.
#pragma once

#include <ormel/IEffectOrm.h>

#include <cstdint>
#include <map>
#include <utility>
#include <vector>

#include "LoadedDocument.h"

namespace ormel::tools {

struct EffectCall {
    enum class Kind { SET, READ, COMMIT };

    Kind kind;
    int32_t device;
    int32_t code = 0;
    /** What was set, or what a read answered. */
    std::vector<int32_t> values = {};
    int32_t status = 0;
};

/**
 * An effect that keeps every call in order. A read answers what was last set for exactly that
 * device and code, committed or not, and fails with -ENOENT if nothing was.
 */
class RecordingEffect : public IEffectOrm {
  public:
    int32_t setEffectParam(int32_t device, int32_t code, const int32_t* values,
                           int32_t count) override;
    int32_t getEffectParam(int32_t device, int32_t code, int32_t* values, int32_t* count) override;
    int32_t commitEffectParams(int32_t device) override;

    /** The values of each parameter, by device and code. */
    using Values = std::map<std::pair<int32_t, int32_t>, std::vector<int32_t>>;

    /** What was set, of each parameter what was set last. */
    const Values& getValues() const { return mValues; }

    /** The calls since the last time. */
    std::vector<EffectCall> takeCalls() { return std::exchange(mCalls, {}); }

  private:
    std::vector<EffectCall> mCalls;
    Values mValues;
};

/** A list of a document, and what an effect keeps of it once the front has applied it. */
struct AppliedList {
    EffectList list;
    RecordingEffect::Values values;
};

/** Every list of a document, in the document's order, applied from the document's own store. */
std::vector<AppliedList> appliedLists(const LoadedDocument& document);

}  // namespace ormel::tools
