// The making of parameter lists from what a tuning document describes.
#pragma once

#include <ormel/DeviceData.h>
#include <ormel/DocumentBudget.h>
#include <ormel/SpatializerParamArray.h>
#include <ormel/Translator.h>

#include <map>
#include <string>
#include <vector>

namespace ormel {

/**
 * One load of a document into an array, whose lock the caller holds.
 *
 * Lists are built aside, and reach the array all at once or not at all. The objects of the document
 * are completed on the way. Since lists, objects and the XML tree are in memory together, profiles,
 * endpoints and tunings lose their values with the last list that needs them, while these are still
 * in the cache. So one load uses the document up.
 */
class DocumentLoad {
  public:
    /** @param budget what the document may cost, its reading having been paid for */
    DocumentLoad(SpatializerParamArray& array, const DeviceData& document, DocumentBudget& budget);

    /**
     * Builds the lists.
     *
     * @return false when the budget is spent: a short document can ask for much by referring to one
     *         long row many times
     */
    bool build();

    /** Adds what was built to the array. */
    void commit();

  private:
    /** What a profile came to the last time that its id was met. */
    struct ProfilePass {
        int32_t entries = 0;
        /** Devices translated for while no preset was selected, so that they lack its entries. */
        size_t devicesWithoutPreset = 0;
        /** The last endpoint that selected a preset, null when none did. */
        const ProfileEndpoint* lastSelecting = nullptr;
    };

    void readInternalSpeakerTuning();
    void loadProfile(Profile& profile);
    void translateProfile(Profile& profile);
    ProfilePass translateParts(int profileId);
    /** Does for another profile of an id what translating it would, but for the list. */
    void repeatPass(ProfilePass& pass);
    void translateGeqPresets(int profileId);
    void translateEndpoint(ProfileEndpoint& endpoint);
    bool selectPreset(const ProfileEndpoint& endpoint);
    void loadDeviceTuning(const DeviceTuning& deviceTuning);
    void keepHandedOut(SpatializerParamArray::ListsByDevice& replaced);
    void reportMissingDefaults() const;

    void translateForDevice(AndroidDevice device);
    void translateForAllDevices(ParameterValues& values);
    Tuning* findTuning(const std::string& name) const;
    void translateAll(ParameterTranslator& translator);
    void setValues(ParameterValues& object, Parameter param, const std::vector<int>& values);
    void chargeNamedEntry(const std::string& name);
    void beginList();
    /** A copy of the list, so that what is stored has no room to spare. */
    std::vector<int32_t> endList();

    SpatializerParamArray& mArray;
    const DeviceData& mDocument;
    DocumentBudget& mBudget;

    // The document's objects by what refers to them. Of several with one key, the first in document
    // order stands. No hash tables: a document can be written to fill a single bucket.
    std::map<std::string, Tuning*> mTunings;
    std::map<int, IeqPreset*> mIeqPresets;
    std::map<int, std::vector<GeqPreset*>> mGeqPresets;
    std::map<int, std::vector<ProfileEndpoint*>> mProfileEndpoints;

    /** How many devices a tuning is still to be translated for, by its name. */
    std::map<std::string, int> mDevicesToCome;

    std::vector<int> mMixMatrix;
    std::vector<int> mVirtualBassMode;

    /** Takes every list's entries in turn, so that its room grows for the longest list only. */
    SetParamCommand mCommand = SetParamCommand(DEVICE_OUT_DEFAULT);
    ParameterTranslator mPresetTranslator;
    ParameterTranslator mEndpointTranslator;

    int32_t mOutputChannelCount;
    int32_t mProfileCount = 0;
    std::map<int32_t, std::vector<int32_t>> mProfileLists;
    std::map<int32_t, std::vector<int32_t>> mGeqGains;
    int32_t mDeviceTuningCount = 0;
    // By name of the tuning device.
    SpatializerParamArray::ListsByDevice mTuningLists;
    SpatializerParamArray::ListsByDevice mMixMatrices;
    std::map<std::string, std::string> mPorts;
    /** By profile id, for the profiles that come again. */
    std::map<int, ProfilePass> mPasses;
};

}  // namespace ormel
