// A graphic-equalizer preset of a tuning document.
#pragma once

#include <ormel/ParameterValues.h>

namespace ormel {

/** Frequencies and gains of the graphic equalizer of one profile. */
class GeqPreset : public ParameterValues {
  public:
    static const std::set<Parameter>& kValidParams;

    explicit GeqPreset(int profileId);

    /** Restores a stored preset, which starts clean. */
    GeqPreset(long long id, int profileId);

    int64_t getId() const override { return mId; }
    const std::set<Parameter>& getValidParams() const override;

    int getProfileId() const { return mProfileId; }

    /** Whether profile id and all values are equal; id and dirty flag do not count. */
    bool equals(const GeqPreset& other) const;

    /** The fields, one "name=value" line each, then the values that were set. */
    std::string toString() const;

  private:
    int mProfileId;
};

}  // namespace ormel
