#include "AppliedLists.h"

#include <ormel/StoreFront.h>

#include <algorithm>
#include <cerrno>

#include "text/Progress.h"

namespace ormel::tools {

int32_t RecordingEffect::setEffectParam(int32_t device, int32_t code, const int32_t* values,
                                        int32_t count) {
    auto& kept = mValues[{device, code}];
    kept.assign(values, values + std::max(count, 0));
    mCalls.push_back({EffectCall::Kind::SET, device, code, kept});
    return 0;
}

int32_t RecordingEffect::getEffectParam(int32_t device, int32_t code, int32_t* values,
                                        int32_t* count) {
    const auto found = mValues.find({device, code});
    if (found == mValues.end()) {
        mCalls.push_back({EffectCall::Kind::READ, device, code, {}, -ENOENT});
        return -ENOENT;
    }
    const std::vector<int32_t>& kept = found->second;
    std::copy_n(kept.begin(), std::min(kept.size(), static_cast<size_t>(*count)), values);
    *count = static_cast<int32_t>(kept.size());
    mCalls.push_back({EffectCall::Kind::READ, device, code, kept});
    return 0;
}

int32_t RecordingEffect::commitEffectParams(int32_t device) {
    mCalls.push_back({EffectCall::Kind::COMMIT, device});
    return 0;
}

std::vector<AppliedList> appliedLists(const LoadedDocument& document) {
    const ProgressStep step("applying " + document.file());
    StoreFront front(document.store());
    std::vector<AppliedList> applied;
    for (EffectList& list : document.lists()) {
        RecordingEffect effect;
        if (list.kind == EffectList::Kind::PROFILE) {
            front.setProfile(list.profile, &effect, false);
        } else {
            front.loadTuningDevice(list.name, &effect);
        }
        applied.push_back({std::move(list), effect.getValues()});
    }
    return applied;
}

}  // namespace ormel::tools
