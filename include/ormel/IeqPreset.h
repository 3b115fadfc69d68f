// An intelligent-equalizer preset of a tuning document.
#pragma once

#include <ormel/ParameterValues.h>

namespace ormel {

/** Frequencies and targets of one intelligent-equalizer preset, and its id as parameter IEQ_ID. */
class IeqPreset : public ParameterValues {
  public:
    static const std::set<Parameter>& kValidParams;

    IeqPreset(int presetId, std::string name);

    /**
     * Restores a stored preset. Starts dirty too: the constructor stores the preset id as a value.
     */
    IeqPreset(long long id, int presetId, std::string name);

    int64_t getId() const override { return mId; }
    const std::set<Parameter>& getValidParams() const override;

    int getPresetId() const { return mPresetId; }
    std::string getName() const { return mName; }

    /** Renames the preset and marks it dirty. */
    void setName(std::string name);

    /** One "name=value" line per field, then the values that were set. */
    std::string toString() const;

  private:
    int mPresetId;
    std::string mName;
};

}  // namespace ormel
