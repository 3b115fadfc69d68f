// A spatializer profile of a tuning document.
#pragma once

#include <ormel/ParameterValues.h>

namespace ormel {

/** A profile and the parameters common to all of its endpoints. */
class Profile : public ParameterValues {
  public:
    static const std::set<Parameter>& kValidParams;

    /** Selects graphic-equalizer preset @p profileId. */
    Profile(int profileId, std::string name, bool mobility);

    /** Restores a stored profile; starts clean. */
    Profile(long long id, int profileId, std::string name, bool mobility);

    int64_t getId() const override { return mId; }
    const std::set<Parameter>& getValidParams() const override;

    int getProfileId() const { return mProfileId; }
    std::string getName() const { return mName; }

    /** Renames the profile and marks it dirty. */
    void setName(std::string name);

    bool isMobility() const { return mMobility; }

    /** Unlike the other setters, does not mark the profile dirty. */
    void setMobility(bool mobility) { mMobility = mobility; }

    int getSelectedGeqPreset() const { return mSelectedGeqPreset; }

    /** Selects a graphic-equalizer preset and marks the profile dirty. */
    void setSelectedGeqPreset(int presetId);

    /** Whether profile id and all values are equal; ignores everything else. */
    bool equals(const Profile& other) const;

    /**
     * One "name=value" line per field, then every valid parameter. Parameters never set get an
     * empty list, which stays.
     */
    std::string toString();

  private:
    int mProfileId;
    std::string mName;
    bool mMobility;
    int mSelectedGeqPreset;
};

}  // namespace ormel
