#include <ormel/ProfileEndpoint.h>

#include "DumpText.h"

namespace ormel {

const std::set<Parameter>& ProfileEndpoint::kValidParams =
        parametersOf(ParameterOwner::PROFILE_ENDPOINT);

ProfileEndpoint::ProfileEndpoint(int profileId, Endpoint endpoint, int selectedIeqPreset)
    : ProfileEndpoint(-1, profileId, endpoint, selectedIeqPreset) {
    mDirty = true;
}

ProfileEndpoint::ProfileEndpoint(long id, int profileId, Endpoint endpoint, int selectedIeqPreset)
    : ParameterValues(id, false),
      mProfileId(profileId),
      mEndpoint(endpoint),
      mSelectedIeqPreset(selectedIeqPreset) {}

const std::set<Parameter>& ProfileEndpoint::getValidParams() const {
    return parametersOf(ParameterOwner::PROFILE_ENDPOINT);
}

void ProfileEndpoint::setSelectedIeqPreset(int presetId) {
    mSelectedIeqPreset = presetId;
    mDirty = true;
}

bool ProfileEndpoint::equals(const ProfileEndpoint& other) const {
    return mProfileId == other.mProfileId && mEndpoint == other.mEndpoint &&
           mSelectedIeqPreset == other.mSelectedIeqPreset && mValues == other.mValues;
}

std::string ProfileEndpoint::toString() {
    fillAbsentParams();
    return dumpLine("id", mId) + dumpLine("profileId", int64_t{mProfileId}) +
           dumpLine("endpoint", endpointName(mEndpoint)) +
           dumpLine("selectedIeqPreset", int64_t{mSelectedIeqPreset}) + valuesToString();
}

}  // namespace ormel
