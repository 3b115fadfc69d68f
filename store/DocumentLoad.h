// The making of parameter lists from what a tuning document describes.
#pragma once

#include <ormel/DeviceData.h>
#include <ormel/SpatializerParamArray.h>
#include <ormel/Translator.h>

#include <map>
#include <string>
#include <unordered_map>
#include <vector>

namespace ormel {

/**
 * One load of a document into an array, whose lock the caller holds.
 *
 * The objects of the document are completed on the way, so one load uses them up.
 */
class DocumentLoad {
  public:
    DocumentLoad(SpatializerParamArray& array, const DeviceData& document);

    void run();

  private:
    void readInternalSpeakerTuning();
    void loadProfile(Profile& profile);
    void translateGeqPresets(int profileId, SetParamCommand& command);
    void translateEndpoint(ProfileEndpoint& endpoint, SetParamCommand& command);
    void loadDeviceTuning(const DeviceTuning& deviceTuning);
    void reportMissingDefaults();

    void translateForDevice(AndroidDevice device, SetParamCommand& command);
    void translateForAllDevices(ParameterValues& values, SetParamCommand& command);
    Tuning* findTuning(const std::string& name) const;

    SpatializerParamArray& mArray;
    const DeviceData& mDocument;

    // The document's objects by what refers to them; the first one of a key stands in document
    // order.
    std::unordered_map<std::string, Tuning*> mTunings;
    std::unordered_map<int, IeqPreset*> mIeqPresets;
    std::unordered_map<int, std::vector<GeqPreset*>> mGeqPresets;
    std::unordered_map<int, std::vector<ProfileEndpoint*>> mProfileEndpoints;

    std::vector<int> mMixMatrix;
    std::vector<int> mVirtualBassMode;

    ParameterTranslator mPresetTranslator;
    ParameterTranslator mEndpointTranslator;
};

}  // namespace ormel
