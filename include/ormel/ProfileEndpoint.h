// The part of a profile for one endpoint.
#pragma once

#include <ormel/ParameterValues.h>

namespace ormel {

/**
 * A profile's parameters for one endpoint, and the intelligent-equalizer preset that it selects.
 */
class ProfileEndpoint : public ParameterValues {
  public:
    static const std::set<Parameter>& kValidParams;

    ProfileEndpoint(int profileId, Endpoint endpoint, int selectedIeqPreset);

    /** Restores a stored profile endpoint; starts clean. */
    ProfileEndpoint(long id, int profileId, Endpoint endpoint, int selectedIeqPreset);

    int64_t getId() const override { return mId; }
    const std::set<Parameter>& getValidParams() const override;

    int getProfileId() const { return mProfileId; }
    Endpoint getEndpoint() const { return mEndpoint; }
    int getSelectedIeqPreset() const { return mSelectedIeqPreset; }

    /** Selects an intelligent-equalizer preset and marks the object dirty. */
    void setSelectedIeqPreset(int presetId);

    /** Whether profile id, endpoint, selected preset and all values are equal. */
    bool equals(const ProfileEndpoint& other) const;

    /**
     * One "name=value" line per field, then every valid parameter. Parameters never set get an
     * empty list, which stays. An endpoint out of range has no name.
     */
    std::string toString();

  private:
    int mProfileId;
    Endpoint mEndpoint;
    int mSelectedIeqPreset;
};

}  // namespace ormel
