// The content of one tuning document.
#pragma once

#include <ormel/DeviceTuning.h>
#include <ormel/GeqPreset.h>
#include <ormel/IeqPreset.h>
#include <ormel/Profile.h>
#include <ormel/ProfileEndpoint.h>
#include <ormel/Tuning.h>

#include <set>
#include <string>

namespace ormel {

/**
 * A tuning document's header values and the objects that it describes.
 *
 * Lists the objects without owning them: TuningFileParser does, and they must outlive every use of
 * the sets. The sets are ordered by address; the parser places its objects so that this is document
 * order. No operation fails, logs or locks.
 */
class DeviceData {
  public:
    DeviceData() = default;
    DeviceData(const DeviceData&) = default;
    DeviceData(DeviceData&&) = default;
    DeviceData& operator=(const DeviceData&) = default;
    DeviceData& operator=(DeviceData&&) = default;

    virtual ~DeviceData() = default;

    virtual std::string getFormatVersion() const { return mFormatVersion; }
    virtual std::string getToolVersion() const { return mToolVersion; }
    virtual std::string getDeviceName() const { return mDeviceName; }
    virtual int getDeviceIndex() const { return mDeviceIndex; }
    virtual int getTuningVersion() const { return mTuningVersion; }
    virtual const std::set<IeqPreset*>& getIeqPresets() const { return mIeqPresets; }
    virtual const std::set<GeqPreset*>& getGeqPresets() const { return mGeqPresets; }
    virtual const std::set<Profile*>& getProfiles() const { return mProfiles; }
    virtual const std::set<ProfileEndpoint*>& getProfileEndpoints() const {
        return mProfileEndpoints;
    }
    virtual const std::set<Tuning*>& getTunings() const { return mTunings; }
    virtual const std::set<DeviceTuning*>& getDeviceTunings() const { return mDeviceTunings; }

    virtual void setFormatVersion(std::string version);
    virtual void setToolVersion(std::string version);
    virtual void setDeviceName(std::string name);
    virtual void setDeviceIndex(int index) { mDeviceIndex = index; }
    virtual void setTuningVersion(int version) { mTuningVersion = version; }
    // These copy the set. Passing the getter's own result changes nothing.
    virtual void setIeqPresets(const std::set<IeqPreset*>& presets) { mIeqPresets = presets; }
    virtual void setGeqPresets(const std::set<GeqPreset*>& presets) { mGeqPresets = presets; }
    virtual void setProfiles(const std::set<Profile*>& profiles) { mProfiles = profiles; }
    virtual void setProfileEndPoints(const std::set<ProfileEndpoint*>& endpoints) {
        mProfileEndpoints = endpoints;
    }
    virtual void setTunings(const std::set<Tuning*>& tunings) { mTunings = tunings; }
    virtual void setDeviceTunings(const std::set<DeviceTuning*>& tunings) {
        mDeviceTunings = tunings;
    }

    virtual std::string getSignature() const { return mSignature; }
    virtual void setSignature(std::string signature);

    virtual int getAltivoGameSystemGain() const { return mAltivoGameSystemGain; }
    virtual void setAltivoGameSystemGain(int gain) { mAltivoGameSystemGain = gain; }

    /**
     * Selects intelligent-equalizer preset 0 for every profile endpoint whose IEQ_ENABLE is 0. An
     * endpoint without IEQ_ENABLE only gains an empty list for it.
     */
    virtual void validateData();

  private:
    std::string mFormatVersion;
    std::string mToolVersion;
    std::string mSignature;
    std::string mDeviceName;
    int mDeviceIndex = 0;
    int mTuningVersion = 0;
    int mAltivoGameSystemGain = 0;
    std::set<IeqPreset*> mIeqPresets;
    std::set<GeqPreset*> mGeqPresets;
    std::set<Profile*> mProfiles;
    std::set<ProfileEndpoint*> mProfileEndpoints;
    std::set<Tuning*> mTunings;
    std::set<DeviceTuning*> mDeviceTunings;
};

}  // namespace ormel
