#define LOG_TAG "OrmSpatializerParamArray"

#include "DocumentLoad.h"

#include <log/log.h>
#include <ormel/TuningFileParser.h>

#include <utility>

namespace ormel {

namespace {

/** The devices that a headphone endpoint is for. */
constexpr std::array kHeadphoneDevices = {DEVICE_OUT_WIRED_HEADPHONE, DEVICE_OUT_BLUETOOTH_A2DP,
                                          DEVICE_OUT_USB_DEVICE};
/** How an endpoint of either kind is oriented. */
constexpr int kSpeakerOrientation = 1;
constexpr int kHeadphoneOrientation = 2;
/** Virtual bass mode of a speaker tuning that gives none. */
constexpr int kDefaultVirtualBassMode = 3;

int firstOr0(const std::vector<int>& values) {
    return values.empty() ? 0 : values.front();
}

/** The list that a command has built, its parameter count filled in. */
std::vector<int32_t> takeList(SetParamCommand& command) {
    command.mParams[1] = command.mParamCount;
    return std::move(command.mParams);
}

}  // namespace

void SpatializerParamArray::loadSpatializerXMLFile(const std::string& path) {
    ALOGD("%s(%s)", __func__, path.c_str());
    const android::Mutex::Autolock lock(mLock);
    TuningFileParser parser;
    if (parser.setTuningFile(path, false) != 0 || parser.getDeviceData() == nullptr) {
        ALOGE("Spatializer Tuning XML parses error!");
        return;
    }
    DocumentLoad(*this, *parser.getDeviceData()).run();
}

DocumentLoad::DocumentLoad(SpatializerParamArray& array, const DeviceData& document)
    : mArray(array), mDocument(document) {
    for (Tuning* const tuning : document.getTunings()) {
        mTunings.emplace(tuning->getName(), tuning);
    }
    for (IeqPreset* const preset : document.getIeqPresets()) {
        mIeqPresets.emplace(preset->getPresetId(), preset);
    }
    for (GeqPreset* const preset : document.getGeqPresets()) {
        mGeqPresets[preset->getProfileId()].push_back(preset);
    }
    for (ProfileEndpoint* const endpoint : document.getProfileEndpoints()) {
        mProfileEndpoints[endpoint->getProfileId()].push_back(endpoint);
    }
}

void DocumentLoad::run() {
    readInternalSpeakerTuning();
    for (Profile* const profile : mDocument.getProfiles()) {
        loadProfile(*profile);
    }
    for (const DeviceTuning* const deviceTuning : mDocument.getDeviceTunings()) {
        loadDeviceTuning(*deviceTuning);
    }
    reportMissingDefaults();
}

Tuning* DocumentLoad::findTuning(const std::string& name) const {
    const auto found = mTunings.find(name);
    return found == mTunings.end() ? nullptr : found->second;
}

void DocumentLoad::readInternalSpeakerTuning() {
    const std::string& selected = mArray.mSelectedTuningDevices[PORT_INTERNAL_SPEAKER];
    for (const DeviceTuning* const deviceTuning : mDocument.getDeviceTunings()) {
        if (deviceTuning->getDevice() != selected) {
            continue;
        }
        if (Tuning* const tuning = findTuning(deviceTuning->getTuning()); tuning != nullptr) {
            auto& values = tuning->getValues();
            mMixMatrix = values[OUTPUT_MIX_MATRIX];
            mVirtualBassMode = values[VIRTUAL_BASS_MODE];
            mArray.mOutputChannelCount = firstOr0(values[OUTPUT_CHANNELS]);
        }
        break;
    }
    if (mMixMatrix.empty()) {
        ALOGD("use the default mix matrix");
        mMixMatrix.assign(SpatializerParamArray::kDefaultMixMatrix.begin(),
                          SpatializerParamArray::kDefaultMixMatrix.end());
    }
    if (mVirtualBassMode.empty()) {
        ALOGD("use the default vb mode");
        mVirtualBassMode = {kDefaultVirtualBassMode};
    }
}

void DocumentLoad::loadProfile(Profile& profile) {
    const int id = profile.getProfileId();
    // The list goes to every device, which its header says in the place of the profile's id.
    SetParamCommand command(DEVICE_OUT_DEFAULT);
    translateForAllDevices(profile, command);
    translateGeqPresets(id, command);
    for (ProfileEndpoint* const endpoint : mProfileEndpoints[id]) {
        translateEndpoint(*endpoint, command);
    }
    ALOGD("Profile %d, numParameters = %d", id, command.mParamCount);
    mArray.mXMLProfileParams.try_emplace(id, takeList(command));
    ++mArray.mTuningProfileCount;
}

void DocumentLoad::translateGeqPresets(int profileId, SetParamCommand& command) {
    for (GeqPreset* const preset : mGeqPresets[profileId]) {
        translateForAllDevices(*preset, command);
        mArray.mProfileGeqGains.try_emplace(profileId, preset->getValues()[GEQ_GAIN]);
    }
}

void DocumentLoad::translateEndpoint(ProfileEndpoint& endpoint, SetParamCommand& command) {
    endpoint.set(VIRTUAL_BASS_MODE, mVirtualBassMode);
    mEndpointTranslator.setSource(&endpoint, endpoint.getEndpoint(), false);
    // An endpoint whose preset the document lacks goes with the preset of the one before it.
    const auto preset = mIeqPresets.find(endpoint.getSelectedIeqPreset());
    if (preset != mIeqPresets.end()) {
        mPresetTranslator.setSource(preset->second, endpoint.getEndpoint(), false);
    }
    switch (endpoint.getEndpoint()) {
        case ENDPOINT_SPEAKER:
            endpoint.set(ORIENTATION, {kSpeakerOrientation});
            endpoint.set(OUTPUT_MIX_MATRIX, mMixMatrix);
            translateForDevice(DEVICE_OUT_SPEAKER, command);
            break;
        case ENDPOINT_HEADPHONE:
            endpoint.set(ORIENTATION, {kHeadphoneOrientation});
            for (const AndroidDevice device : kHeadphoneDevices) {
                translateForDevice(device, command);
            }
            break;
        case ENDPOINT_OTHER:
            break;
    }
}

void DocumentLoad::translateForDevice(AndroidDevice device, SetParamCommand& command) {
    command.setDeviceId(device);
    mPresetTranslator.translateAll(command);
    mEndpointTranslator.translateAll(command);
}

void DocumentLoad::translateForAllDevices(ParameterValues& values, SetParamCommand& command) {
    mEndpointTranslator.setSource(&values, ENDPOINT_OTHER, false);
    command.setDeviceId(DEVICE_OUT_DEFAULT);
    mEndpointTranslator.translateAll(command);
}

void DocumentLoad::loadDeviceTuning(const DeviceTuning& deviceTuning) {
    const std::string device = deviceTuning.getDevice();
    const std::string port = deviceTuning.getPort();
    const std::string tuningName = deviceTuning.getTuning();
    Tuning* const tuning = findTuning(tuningName);
    if (tuning == nullptr) {
        ALOGW("Tuning id(%s): no tuning %s", device.c_str(), tuningName.c_str());
        return;
    }
    const Endpoint endpoint = portNameToEndpoint()[port];
    SetParamCommand command(DEVICE_OUT_DEFAULT);
    command.setDeviceId(portNameToAndroidDevice()[port]);
    mEndpointTranslator.setSource(tuning, endpoint, false);
    mEndpointTranslator.translateAll(command);
    ALOGD("Tuning id(%s), tuningName(%s) numParameters = %d", device.c_str(), tuningName.c_str(),
          command.mParamCount);

    auto& values = tuning->getValues();
    const std::vector<int>& mixMatrix = values[OUTPUT_MIX_MATRIX];
    mArray.mXMLTuningParams[device] = takeList(command);
    ++mArray.mTuningCount;
    mArray.mAvailableTuningDevices[device] = port;
    mArray.mMixMatrices[device] = mixMatrix;
    ALOGD("Tuning id(%s): endpoint %i, orientation %i, mix matrices length %zu", device.c_str(),
          endpoint, firstOr0(values[ORIENTATION]), mixMatrix.size());
}

void DocumentLoad::reportMissingDefaults() {
    for (const Port port : kSupportedPorts) {
        const std::string& device = mArray.mSelectedTuningDevices[port];
        if (!mArray.isValidTuningDevice(port, device)) {
            ALOGE("%s() default tuningDevice %s is not available for port %s.",
                  "loadSpatializerXMLFile", device.c_str(), kPortNames[port]);
        }
    }
}

}  // namespace ormel
