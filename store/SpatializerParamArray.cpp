#define LOG_TAG "OrmSpatializerParamArray"

#include <ormel/SpatializerParamArray.h>

#include <log/log.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

ANDROID_SINGLETON_STATIC_INSTANCE(ormel::SpatializerParamArray)

namespace ormel {

using android::Mutex;

SpatializerParamArray::SpatializerParamArray(Empty /* none */)
    : mProfileParams(nullptr),
      mProfileParamsSizes(0),
      mMixMatrixCapacity(static_cast<int32_t>(2 + kDefaultMixMatrix.size())) {
    registerBuiltInLists();
    for (const Port port : kSupportedPorts) {
        mSelectedTuningDevices.emplace(port, std::string("default_") + kPortNames[port]);
    }
}

SpatializerParamArray::SpatializerParamArray() : SpatializerParamArray(Empty()) {
    loadSpatializerXMLFile(kDefaultTuningFile);
}

SpatializerParamArray::~SpatializerParamArray() = default;

void SpatializerParamArray::registerBuiltInLists() {
    const auto add = [this](OrmSpatializerProfileId profile, const auto& list) {
        mProfileParams.add(profile, list.data());
        mProfileParamsSizes.add(profile, static_cast<unsigned>(list.size() * sizeof(int32_t)));
    };
    add(ORM_SPATIALIZER_PROFILE_DYNAMIC, mDynamicProfileParams);
    add(ORM_SPATIALIZER_PROFILE_MOVIE, mMovieProfileParams);
    add(ORM_SPATIALIZER_PROFILE_MUSIC, mMusicProfileParams);
    add(ORM_SPATIALIZER_PROFILE_CUSTOM, mCustomProfileParams);
    add(ORM_SPATIALIZER_PROFILE_COMMON, mCommonParams);
}

int SpatializerParamArray::getProfileParams(OrmSpatializerProfileId profile, void* dest) {
    ALOGD("%s(profile = %d)", __func__, profile);
    const Mutex::Autolock lock(mLock);
    if (dest == nullptr) {
        return -EINVAL;
    }
    if (const int32_t* const list = mProfileParams.valueFor(profile); list != nullptr) {
        std::memcpy(dest, list, mProfileParamsSizes.valueFor(profile));
    }
    return 0;
}

unsigned SpatializerParamArray::getProfileParamsSize(OrmSpatializerProfileId profile) {
    const Mutex::Autolock lock(mLock);
    return mProfileParamsSizes.valueFor(profile);
}

bool SpatializerParamArray::isXMLProfileValid(int profile) {
    const Mutex::Autolock lock(mLock);
    return mXMLProfileParams.count(profile) > 0;
}

std::vector<int32_t>& SpatializerParamArray::getXMLProfileParams(int profile) {
    const Mutex::Autolock lock(mLock);
    ALOGD("%s(profile = %d)", __func__, profile);
    // No load replaces a profile's list, so there is no need to note that a reference was returned.
    return mXMLProfileParams[profile];
}

bool SpatializerParamArray::isXMLTuningValid(const std::string& device) {
    const Mutex::Autolock lock(mLock);
    return mXMLTuningParams.count(device) > 0;
}

std::vector<int32_t>& SpatializerParamArray::getXMLTuningParams(const std::string& device) {
    const Mutex::Autolock lock(mLock);
    ALOGD("%s(device = %s)", __func__, device.c_str());
    StoredList& list = mXMLTuningParams[device];
    list.isHandedOut = true;
    return list.words;
}

std::vector<std::string> SpatializerParamArray::devicesOf(int port) const {
    std::vector<std::string> devices;
    const char* const name = portName(port);
    for (const auto& [device, portOfDevice] : mAvailableTuningDevices) {
        if (name != nullptr && portOfDevice == name) {
            devices.push_back(device);
        }
    }
    return devices;
}

int SpatializerParamArray::getAvailableTuningDevicesLen(int port) {
    const Mutex::Autolock lock(mLock);
    size_t length = 0;
    for (const std::string& device : devicesOf(port)) {
        length += device.size() + 1;
    }
    return static_cast<int>(length);
}

std::string SpatializerParamArray::getAvailableTuningDevices(int port) {
    const Mutex::Autolock lock(mLock);
    std::string names;
    const char* separator = "";
    for (const std::string& device : devicesOf(port)) {
        names.append(separator).append(device);
        separator = " ";
    }
    return names;
}

std::string SpatializerParamArray::getSelectedTuningDevice(int port) {
    const Mutex::Autolock lock(mLock);
    return mSelectedTuningDevices[port];
}

int SpatializerParamArray::setSelectedTuningDevice(int port, const std::string& device) {
    const Mutex::Autolock lock(mLock);
    const char* const name = portName(port);
    if (name == nullptr) {
        return -EINVAL;
    }
    ALOGD("%s(port=%s, device=%s)", __func__, name, device.c_str());
    if (!isValidTuningDevice(port, device)) {
        ALOGE("%s(): tuningDevice %s is not available for port %s.", __func__, device.c_str(),
              name);
        return -EINVAL;
    }
    mSelectedTuningDevices[port] = device;
    return 0;
}

bool SpatializerParamArray::isValidTuningDevice(int port, const std::string& device) const {
    const char* const name = portName(port);
    const auto found = mAvailableTuningDevices.find(device);
    return name != nullptr && found != mAvailableTuningDevices.end() && found->second == name;
}

std::vector<int32_t>& SpatializerParamArray::getProfileGeqGains(OrmSpatializerProfileId profile) {
    const Mutex::Autolock lock(mLock);
    return mProfileGeqGains[profile];
}

size_t SpatializerParamArray::copyProfileGeqGains(OrmSpatializerProfileId profile, int32_t* dest,
                                                  size_t room) {
    const Mutex::Autolock lock(mLock);
    const std::vector<int32_t>& gains = mProfileGeqGains[profile];
    const size_t count = std::min(gains.size(), room);
    std::copy_n(gains.begin(), count, dest);
    return count;
}

void SpatializerParamArray::setProfileGeqGains(OrmSpatializerProfileId profile,
                                               const std::vector<int32_t>& gains) {
    const Mutex::Autolock lock(mLock);
    mProfileGeqGains[profile] = gains;
}

const std::vector<int32_t>& SpatializerParamArray::getXMLTuningMixMatrix(
        const std::string& device) {
    static const auto& kNoMatrix = *new std::vector<int32_t>;
    const Mutex::Autolock lock(mLock);
    const auto found = mMixMatrices.find(device);
    if (found == mMixMatrices.end()) {
        ALOGW("%s(): no mix matrix found with tuning device %s", __func__, device.c_str());
        return kNoMatrix;
    }
    found->second.isHandedOut = true;
    return found->second.words;
}

SpatializerParamArray::LoadOutcome SpatializerParamArray::getLoadOutcome() {
    const Mutex::Autolock lock(mLock);
    return mLoadOutcome;
}

std::string SpatializerParamArray::getLoadError() {
    const Mutex::Autolock lock(mLock);
    return mLoadError;
}

DocumentBudget SpatializerParamArray::getLoadBudget() {
    const Mutex::Autolock lock(mLock);
    return mLoadBudget;
}

OrmSpatializerProfileId SpatializerParamArray::getCurrentProfile() {
    const Mutex::Autolock lock(mLock);
    return mCurrentProfile;
}

void SpatializerParamArray::setCurrentProfile(OrmSpatializerProfileId profile) {
    const Mutex::Autolock lock(mLock);
    mCurrentProfile = profile;
}

int32_t SpatializerParamArray::getTuningCount() {
    const Mutex::Autolock lock(mLock);
    return mTuningCount;
}

int32_t SpatializerParamArray::getTuningProfileCount() {
    const Mutex::Autolock lock(mLock);
    return mTuningProfileCount;
}

int32_t SpatializerParamArray::getOutputChannelCount() {
    const Mutex::Autolock lock(mLock);
    return mOutputChannelCount;
}

}  // namespace ormel
