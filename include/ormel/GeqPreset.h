// A graphic-equalizer preset of a tuning document.
#pragma once

#include <ormel/ParameterValues.h>

namespace ormel {

/** Frequencies and gains of the graphic equalizer of one profile. */
class GeqPreset : public ParameterValues {
  public:
    static const std::set<Parameter>& kValidParams;

    explicit GeqPreset(int profileId);

    /** Restores a stored preset; starts clean. */
    GeqPreset(long long id, int profileId);

    int64_t getId() const override { return mId; }
    const std::set<Parameter>& getValidParams() const override;

    int getProfileId() const { return mProfileId; }

    /** Whether profile id and all values are equal; ignores id and dirty flag. */
    bool equals(const GeqPreset& other) const;

    /** One "name=value" line per field, then the values that were set. */
    std::string toString() const;

  private:
    int mProfileId;
};

}  // namespace ormel
