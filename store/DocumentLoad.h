// Builds parameter lists from the objects of a tuning document.
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
 * Lists are built separately, and reach the array all at once or not at all. A load uses the
 * document up: it completes the document's objects, and to save memory clears the values of
 * profiles, endpoints and tunings after the last list that needs them, while they are still in the
 * CPU's cache.
 */
class DocumentLoad {
  public:
    /** @param budget account of the document, already charged for reading it */
    DocumentLoad(SpatializerParamArray& array, const DeviceData& document, DocumentBudget& budget);

    /**
     * Builds the lists.
     *
     * @return false if the budget is spent: a short document can cost much by referring to one long
     *         row many times
     */
    bool build();

    /** Adds what was built to the array. */
    void commit();

  private:
    /** The result of the last profile with an id. */
    struct ProfilePass {
        int32_t entries = 0;
        /** Number of devices translated while no preset was selected, which lack its entries. */
        size_t devicesWithoutPreset = 0;
        /** The last endpoint that selected a preset; null if none did. */
        const ProfileEndpoint* lastSelecting = nullptr;
    };

    void readInternalSpeakerTuning();
    void loadProfile(Profile& profile);
    void translateProfile(Profile& profile);
    ProfilePass translateParts(int profileId);
    /** Does what translating another profile with the same id would do, but makes no list. */
    void repeatPass(ProfilePass& pass);
    void translateGeqPresets(int profileId);
    void translateEndpoint(ProfileEndpoint& endpoint);
    bool selectPreset(const ProfileEndpoint& endpoint);
    void loadDeviceTuning(const DeviceTuning& deviceTuning);
    void keepHandedOut(SpatializerParamArray::ListsByDevice& replaced);
    void addUnknownPorts() const;
    void reportMissingDefaults() const;

    void translateForDevice(AndroidDevice device);
    void translateForAllDevices(ParameterValues& values);
    Tuning* findTuning(const std::string& name) const;
    void translateAll(ParameterTranslator& translator);
    void setValues(ParameterValues& object, Parameter param, const std::vector<int>& values);
    void chargeNamedEntry(const std::string& name);
    void beginList();
    /** Returns a copy of the list, so that the stored list has no spare capacity. */
    std::vector<int32_t> endList();

    SpatializerParamArray& mArray;
    const DeviceData& mDocument;
    DocumentBudget& mBudget;

    // The document's objects by the key that refers to them; for a repeated key, the first in
    // document order. No hash tables: a document could be written to fill a single bucket.
    std::map<std::string, Tuning*> mTunings;
    std::map<int, IeqPreset*> mIeqPresets;
    std::map<int, std::vector<GeqPreset*>> mGeqPresets;
    std::map<int, std::vector<ProfileEndpoint*>> mProfileEndpoints;

    /** Number of devices still to be translated for, by tuning name. */
    std::map<std::string, int> mDevicesLeft;

    std::vector<int> mMixMatrix;
    std::vector<int> mVirtualBassMode;

    /** Builds all lists in turn, so its buffer grows only to the size of the longest. */
    SetParamCommand mCommand = SetParamCommand(DEVICE_OUT_DEFAULT);
    ParameterTranslator mPresetTranslator;
    ParameterTranslator mEndpointTranslator;

    int32_t mOutputChannelCount;
    int32_t mProfileCount = 0;
    std::map<int32_t, std::vector<int32_t>> mProfileLists;
    std::map<int32_t, std::vector<int32_t>> mGeqGains;
    int32_t mDeviceTuningCount = 0;
    // By tuning device name.
    SpatializerParamArray::ListsByDevice mTuningLists;
    SpatializerParamArray::ListsByDevice mMixMatrices;
    std::map<std::string, std::string> mPorts;
    /** By profile id, for repeated ids. */
    std::map<int, ProfilePass> mPasses;
};

}  // namespace ormel
