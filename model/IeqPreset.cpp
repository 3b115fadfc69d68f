#include <ormel/IeqPreset.h>

#include <utility>

#include "DumpText.h"

namespace ormel {

const std::set<Parameter>& IeqPreset::kValidParams = parametersOf(ParameterOwner::IEQ_PRESET);

IeqPreset::IeqPreset(int presetId, std::string name) : IeqPreset(-1, presetId, std::move(name)) {}

IeqPreset::IeqPreset(long long id, int presetId, std::string name)
    : ParameterValues(id, true), mPresetId(presetId), mName(std::move(name)) {
    set(IEQ_ID, {presetId});
}

const std::set<Parameter>& IeqPreset::getValidParams() const {
    return parametersOf(ParameterOwner::IEQ_PRESET);
}

void IeqPreset::setName(std::string name) {
    mName = std::move(name);
    mDirty = true;
}

std::string IeqPreset::toString() const {
    return dumpLine("id", mId) + dumpLine("presetId", int64_t{mPresetId}) +
           dumpLine("name", mName) + valuesToString();
}

}  // namespace ormel
