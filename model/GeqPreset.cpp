#include <ormel/GeqPreset.h>

#include "DumpText.h"

namespace ormel {

const std::set<Parameter>& GeqPreset::kValidParams = parametersOf(ParameterOwner::GEQ_PRESET);

GeqPreset::GeqPreset(int profileId) : ParameterValues(-1, true), mProfileId(profileId) {}

GeqPreset::GeqPreset(long long id, int profileId)
    : ParameterValues(id, false), mProfileId(profileId) {}

const std::set<Parameter>& GeqPreset::getValidParams() const {
    return parametersOf(ParameterOwner::GEQ_PRESET);
}

bool GeqPreset::equals(const GeqPreset& other) const {
    return mProfileId == other.mProfileId && mValues == other.mValues;
}

std::string GeqPreset::toString() const {
    return dumpLine("id", mId) + dumpLine("profileId", int64_t{mProfileId}) + valuesToString();
}

}  // namespace ormel
