#include <ormel/Profile.h>

#include <utility>

#include "DumpText.h"

namespace ormel {

const std::set<Parameter>& Profile::kValidParams = parametersOf(ParameterOwner::PROFILE);

Profile::Profile(int profileId, std::string name, bool mobility)
    : Profile(-1, profileId, std::move(name), mobility) {
    mDirty = true;
}

Profile::Profile(long long id, int profileId, std::string name, bool mobility)
    : ParameterValues(id, false),
      mProfileId(profileId),
      mName(std::move(name)),
      mMobility(mobility),
      mSelectedGeqPreset(profileId) {}

const std::set<Parameter>& Profile::getValidParams() const {
    return parametersOf(ParameterOwner::PROFILE);
}

void Profile::setName(std::string name) {
    mName = std::move(name);
    mDirty = true;
}

void Profile::setSelectedGeqPreset(int presetId) {
    mSelectedGeqPreset = presetId;
    mDirty = true;
}

bool Profile::equals(const Profile& other) const {
    return mProfileId == other.mProfileId && mValues == other.mValues;
}

std::string Profile::toString() {
    fillAbsentParams();
    return dumpLine("id", mId) + dumpLine("profileId", int64_t{mProfileId}) +
           dumpLine("name", mName) + dumpLine("mobility", mMobility) +
           dumpLine("selectedGeqPreset", int64_t{mSelectedGeqPreset}) + valuesToString();
}

}  // namespace ormel
