#define LOG_TAG "OrmSpatializerParamArray"

#include "DocumentLoad.h"

#include <log/log.h>
#include <ormel/TuningFileParser.h>

namespace ormel {

namespace {

/** Virtual bass mode of the endpoints if the internal speaker's tuning has none. */
constexpr int kDefaultVirtualBassMode = 3;
/** Entries of an intelligent-equalizer preset for a device: its id and its bands. */
constexpr int32_t kPresetEntries = 2;

/** Number of devices that a profile's endpoint is translated for. */
size_t deviceCountOf(Endpoint endpoint) {
    switch (endpoint) {
        case ENDPOINT_SPEAKER:
            return 1;
        case ENDPOINT_HEADPHONE:
            return kHeadphoneDevices.size();
        case ENDPOINT_OTHER:
            break;
    }
    return 0;
}

/** The value of a port's name; 0 if there is none. Unlike the map's subscript, adds no entry. */
template <typename Map>
int32_t valueOr0(const Map& map, const std::string& name) {
    const auto found = map.find(name);
    return found == map.end() ? 0 : static_cast<int32_t>(found->second);
}

/** Adds @p newer to @p entries. @p newer then holds the entries that were replaced. */
template <typename Map>
void replaceBy(Map& entries, Map& newer) {
    newer.merge(entries);
    entries.swap(newer);
}

}  // namespace

void SpatializerParamArray::loadSpatializerXMLFile(const std::string& path) {
    load(path, false, path);
}

SpatializerParamArray::LoadOutcome SpatializerParamArray::loadSpatializerXMLText(
        const std::string& text) {
    return load(text, true, "(text)");
}

SpatializerParamArray::LoadOutcome SpatializerParamArray::load(const std::string& source,
                                                               bool fromMemory,
                                                               const std::string& name) {
    // The registries and libxml2's state belong to the process, whichever array it loads into.
    static android::Mutex& loadLock = *new android::Mutex;
    ALOGD("%s(%s)", "loadSpatializerXMLFile", name.c_str());
    const android::Mutex::Autolock lock(mLock);
    const android::Mutex::Autolock oneLoadAtATime(loadLock);
    mLoadPath = name;
    TuningFileParser parser;
    const bool isRead =
            parser.setTuningFile(source, fromMemory) == 0 && parser.getDeviceData() != nullptr;
    mLoadBudget = parser.getBudget();
    if (!isRead) {
        refuseDocument(parser.getError());
        return mLoadOutcome;
    }
    DocumentLoad load(*this, *parser.getDeviceData(), mLoadBudget);
    if (!load.build()) {
        refuseDocument(mLoadBudget.describe());
        return mLoadOutcome;
    }
    load.commit();
    mLoadOutcome = LoadOutcome::LOADED;
    mLoadError.clear();
    return mLoadOutcome;
}

void SpatializerParamArray::refuseDocument(const std::string& reason) {
    ALOGE("Spatializer Tuning XML parses error!");
    mLoadOutcome = mLoadBudget.isSpent() ? LoadOutcome::OVER_BOUND : LoadOutcome::NOT_READ;
    mLoadError = reason;
}

DocumentLoad::DocumentLoad(SpatializerParamArray& array, const DeviceData& document,
                           DocumentBudget& budget)
    : mArray(array),
      mDocument(document),
      mBudget(budget),
      mOutputChannelCount(array.mOutputChannelCount) {
    for (Tuning* const tuning : document.getTunings()) {
        const std::string name = tuning->getName();
        chargeNamedEntry(name);
        mTunings.emplace(name, tuning);
    }
    for (const DeviceTuning* const deviceTuning : document.getDeviceTunings()) {
        const std::string name = deviceTuning->getTuning();
        chargeNamedEntry(name);
        ++mDevicesLeft[name];
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
    mBudget.chargeEntries(document.getIeqPresets().size() + document.getGeqPresets().size() +
                          document.getProfileEndpoints().size());
}

void DocumentLoad::chargeNamedEntry(const std::string& name) {
    mBudget.chargeEntries(1);
    mBudget.chargeText(name.size());
    mBudget.chargeKeptText(name.size());
}

bool DocumentLoad::build() {
    readInternalSpeakerTuning();
    for (Profile* const profile : mDocument.getProfiles()) {
        if (mBudget.isSpent()) {
            return false;
        }
        loadProfile(*profile);
    }
    for (const DeviceTuning* const deviceTuning : mDocument.getDeviceTunings()) {
        if (mBudget.isSpent()) {
            return false;
        }
        loadDeviceTuning(*deviceTuning);
    }
    return !mBudget.isSpent();
}

void DocumentLoad::commit() {
    mArray.mOutputChannelCount = mOutputChannelCount;
    mArray.mTuningProfileCount += mProfileCount;
    mArray.mXMLProfileParams.merge(mProfileLists);
    mArray.mProfileGeqGains.merge(mGeqGains);
    mArray.mTuningCount += mDeviceTuningCount;
    addUnknownPorts();
    replaceBy(mArray.mXMLTuningParams, mTuningLists);
    replaceBy(mArray.mMixMatrices, mMixMatrices);
    replaceBy(mArray.mAvailableTuningDevices, mPorts);
    keepHandedOut(mTuningLists);
    keepHandedOut(mMixMatrices);
    reportMissingDefaults();
}

/** Adds ports that are unknown, of tuning devices with a tuning, to the port maps with value 0. */
void DocumentLoad::addUnknownPorts() const {
    for (const DeviceTuning* const deviceTuning : mDocument.getDeviceTunings()) {
        if (mTunings.count(deviceTuning->getTuning()) > 0) {
            const std::string port = deviceTuning->getPort();
            portNameToEndpoint()[port];
            portNameToAndroidDevice()[port];
        }
    }
}

/** Moves lists that callers may reference into the array, without changing their addresses. */
void DocumentLoad::keepHandedOut(SpatializerParamArray::ListsByDevice& replaced) {
    for (auto next = replaced.begin(); next != replaced.end();) {
        const auto entry = next++;
        if (entry->second.isHandedOut) {
            mArray.mReplacedLists.push_back(replaced.extract(entry));
        }
    }
}

void DocumentLoad::translateAll(ParameterTranslator& translator) {
    const size_t before = mCommand.mParams.size();
    translator.translateAll(mCommand);
    mBudget.chargeNumbers(mCommand.mParams.size() - before);
}

void DocumentLoad::beginList() {
    // Word 0 of a document list is the mask of all devices, not the profile's id.
    mCommand.mParams = {DEVICE_OUT_DEFAULT, 0};
    mCommand.mParamCount = 0;
}

std::vector<int32_t> DocumentLoad::endList() {
    mCommand.mParams[SetParamCommand::LIST_COUNT] = mCommand.mParamCount;
    return mCommand.mParams;
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
            mOutputChannelCount = firstOr0(values[OUTPUT_CHANNELS]);
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
    // The first list of an id is kept. A later profile has the same presets and endpoints, and no
    // value changes the number of entries, so that number is known without translating again.
    if (const auto earlier = mPasses.find(id); earlier != mPasses.end()) {
        repeatPass(earlier->second);
        profile.getValues().clear();
    } else {
        translateProfile(profile);
    }
    ALOGD("Profile %d, numParameters = %d", id, mPasses[id].entries);
    mBudget.chargeMessage(0);
    ++mProfileCount;
}

void DocumentLoad::translateProfile(Profile& profile) {
    const int id = profile.getProfileId();
    beginList();
    translateForAllDevices(profile);
    profile.getValues().clear();
    mPasses[id] = translateParts(id);
    mBudget.chargeEntries(2);
    mProfileLists[id] = endList();
}

DocumentLoad::ProfilePass DocumentLoad::translateParts(int profileId) {
    ProfilePass pass;
    translateGeqPresets(profileId);
    for (ProfileEndpoint* const endpoint : mProfileEndpoints[profileId]) {
        if (mBudget.isSpent()) {
            break;
        }
        if (selectPreset(*endpoint)) {
            pass.lastSelecting = endpoint;
        }
        if (!mPresetTranslator.hasSource()) {
            pass.devicesWithoutPreset += deviceCountOf(endpoint->getEndpoint());
        }
        translateEndpoint(*endpoint);
        // Not needed again: a later profile with this id makes no list.
        endpoint->getValues().clear();
    }
    pass.entries = mCommand.mParamCount;
    return pass;
}

void DocumentLoad::repeatPass(ProfilePass& pass) {
    if (mPresetTranslator.hasSource()) {
        pass.entries += kPresetEntries * static_cast<int32_t>(pass.devicesWithoutPreset);
        pass.devicesWithoutPreset = 0;
    }
    if (pass.lastSelecting != nullptr) {
        selectPreset(*pass.lastSelecting);
    }
}

void DocumentLoad::translateGeqPresets(int profileId) {
    for (GeqPreset* const preset : mGeqPresets[profileId]) {
        translateForAllDevices(*preset);
        const std::vector<int>& gains = preset->getValues()[GEQ_GAIN];
        mBudget.chargeEntries(1);
        mBudget.chargeNumbers(gains.size());
        mGeqGains.try_emplace(profileId, gains);
    }
}

bool DocumentLoad::selectPreset(const ProfileEndpoint& endpoint) {
    const auto preset = mIeqPresets.find(endpoint.getSelectedIeqPreset());
    if (preset == mIeqPresets.end()) {
        // The endpoint gets the preset of the endpoint before it.
        return false;
    }
    mPresetTranslator.setSource(preset->second, endpoint.getEndpoint(), false);
    return true;
}

void DocumentLoad::translateEndpoint(ProfileEndpoint& endpoint) {
    setValues(endpoint, VIRTUAL_BASS_MODE, mVirtualBassMode);
    mEndpointTranslator.setSource(&endpoint, endpoint.getEndpoint(), false);
    switch (endpoint.getEndpoint()) {
        case ENDPOINT_SPEAKER:
            setValues(endpoint, ORIENTATION, {kSpeakerOrientation});
            setValues(endpoint, OUTPUT_MIX_MATRIX, mMixMatrix);
            translateForDevice(DEVICE_OUT_SPEAKER);
            break;
        case ENDPOINT_HEADPHONE:
            setValues(endpoint, ORIENTATION, {kHeadphoneOrientation});
            for (const AndroidDevice device : kHeadphoneDevices) {
                translateForDevice(device);
            }
            break;
        case ENDPOINT_OTHER:
            break;
    }
}

void DocumentLoad::setValues(ParameterValues& object, Parameter param,
                             const std::vector<int>& values) {
    mBudget.chargeEntries(1);
    mBudget.chargeNumbers(values.size());
    object.set(param, values);
}

void DocumentLoad::translateForDevice(AndroidDevice device) {
    mCommand.setDeviceId(device);
    translateAll(mPresetTranslator);
    translateAll(mEndpointTranslator);
}

void DocumentLoad::translateForAllDevices(ParameterValues& values) {
    mEndpointTranslator.setSource(&values, ENDPOINT_OTHER, false);
    mCommand.setDeviceId(DEVICE_OUT_DEFAULT);
    translateAll(mEndpointTranslator);
}

void DocumentLoad::loadDeviceTuning(const DeviceTuning& deviceTuning) {
    const std::string device = deviceTuning.getDevice();
    const std::string port = deviceTuning.getPort();
    const std::string tuningName = deviceTuning.getTuning();
    mBudget.chargeText(device.size() + port.size() + tuningName.size());
    Tuning* const tuning = findTuning(tuningName);
    if (tuning == nullptr) {
        ALOGW("Tuning id(%s): no tuning %s", device.c_str(), tuningName.c_str());
        mBudget.chargeMessage(device.size() + tuningName.size());
        return;
    }
    const auto endpoint = static_cast<Endpoint>(valueOr0(portNameToEndpoint(), port));
    beginList();
    mCommand.setDeviceId(valueOr0(portNameToAndroidDevice(), port));
    mEndpointTranslator.setSource(tuning, endpoint, false);
    translateAll(mEndpointTranslator);
    ALOGD("Tuning id(%s), tuningName(%s) numParameters = %d", device.c_str(), tuningName.c_str(),
          mCommand.mParamCount);
    mBudget.chargeMessage(device.size() + tuningName.size());

    auto& values = tuning->getValues();
    const std::vector<int>& mixMatrix = values[OUTPUT_MIX_MATRIX];
    ALOGD("Tuning id(%s): endpoint %i, orientation %i, mix matrices length %zu", device.c_str(),
          endpoint, firstOr0(values[ORIENTATION]), mixMatrix.size());
    mBudget.chargeMessage(device.size());
    // Five entries: list, matrix and port by device name, and the port in two more maps.
    mBudget.chargeNumbers(mixMatrix.size());
    mBudget.chargeEntries(5);
    mBudget.chargeKeptText(3 * (device.size() + port.size()));
    mTuningLists[device].words = endList();
    mMixMatrices[device].words = mixMatrix;
    mPorts[device] = port;
    ++mDeviceTuningCount;
    if (--mDevicesLeft[tuningName] == 0) {
        values.clear();
    }
}

void DocumentLoad::reportMissingDefaults() const {
    for (const Port port : kSupportedPorts) {
        const std::string& device = mArray.mSelectedTuningDevices.at(port);
        if (!mArray.isValidTuningDevice(port, device)) {
            ALOGE("%s() default tuningDevice %s is not available for port %s.",
                  "loadSpatializerXMLFile", device.c_str(), kPortNames[port]);
        }
    }
}

}  // namespace ormel
