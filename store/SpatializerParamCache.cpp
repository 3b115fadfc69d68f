#define LOG_TAG "OrmSpatializerParamCache"

#include <ormel/KivParameter.h>
#include <ormel/SpatializerParamCache.h>
#include <ormel/SpatializerParamParser.h>

#include <kivparamstorage/EffectParamParser.h>
#include <kivparamstorage/KivParamStore.h>
#include <log/log.h>

#include <algorithm>
#include <cerrno>
#include <optional>

namespace ormel {

namespace {

constexpr int32_t kCodeVbon = kivCode(VBON);
constexpr int32_t kCodeGebs = kivCode(GEBS);
constexpr int32_t kCodeDom = kivCode(DOM);

/** The graphic equalizer's values: the number of bands, their frequencies, their gains. */
constexpr size_t kGeqGainsAt = 1 + kGeqBands;
constexpr size_t kGeqValues = kGeqGainsAt + kGeqBands;
using GeqValues = std::array<int32_t, kGeqValues>;

SpatializerParamArray& array() {
    return SpatializerParamArray::getInstance();
}

bool isSurroundOutput() {
    return array().getOutputChannelCount() > 2;
}

/** What decides which entries of a profile reach the effect, and how. */
struct ProfileRules {
    bool hasTunings;
    bool replacesMixMatrix;
    bool isOrmelContent;
};

/** Copies as many of @p gains as there are bands behind the frequencies. */
void putGains(const std::vector<int32_t>& gains, GeqValues& values) {
    std::copy_n(gains.begin(), std::min(gains.size(), kGeqBands), values.begin() + kGeqGainsAt);
}

/**
 * Reads @p values.size() values at most from the effect, the others staying 0. The number of values
 * that were read, or none when the read failed or its answer cannot be.
 */
template <typename Values>
std::optional<int32_t> readEffect(IEffectOrm* effect, int32_t device, int32_t code,
                                  Values& values) {
    const auto room = static_cast<int32_t>(values.size());
    int32_t count = room;
    const int32_t status = effect->getEffectParam(device, code, values.data(), &count);
    if (status != 0 || count < 0 || count > room) {
        return std::nullopt;
    }
    return count;
}

/** Room for the speaker's output mode as the effect has it now. */
std::vector<int32_t> outputModeBuffer() {
    return std::vector<int32_t>(static_cast<size_t>(array().getMixMatrixCapacity()) + 1);
}

template <typename Parser>
void pushEntry(const Parser& entry, IEffectOrm* effect) {
    effect->setEffectParam(entry.mDeviceId, entry.mParamCode, entry.mValues, entry.mValueCount);
}

template <typename Parser>
bool isSpeakerOutputMode(const Parser& entry) {
    return entry.mDeviceId == DEVICE_OUT_SPEAKER && entry.mParamCode == kCodeDom;
}

EffectParamParser readerOf(std::vector<int32_t>& list) {
    return {list.data(), static_cast<int>(list.size() * sizeof(int32_t))};
}

/** Pushes the graphic equalizer's bands with the current profile's gains. */
void pushGeqEntry(const EffectParamParser& entry, IEffectOrm* effect) {
    if (entry.mValueCount != static_cast<int32_t>(kGeqValues)) {
        return;
    }
    GeqValues values{};
    std::copy_n(entry.mValues, kGeqGainsAt, values.begin());
    array().copyProfileGeqGains(array().getCurrentProfile(), &values[kGeqGainsAt], kGeqBands);
    effect->setEffectParam(entry.mDeviceId, entry.mParamCode, values.data(), entry.mValueCount);
}

/** Pushes the speaker's output mode with the mix matrix of the selected tuning device. */
void pushOutputMode(const EffectParamParser& entry, IEffectOrm* effect) {
    const std::string device = array().getSelectedTuningDevice(PORT_INTERNAL_SPEAKER);
    const std::vector<int32_t>& matrix = array().getXMLTuningMixMatrix(device);
    if (matrix.empty()) {
        pushEntry(entry, effect);
        return;
    }
    // The effect is told the entry's own number of values, whatever the matrix's length.
    const auto entryCount = static_cast<size_t>(std::max(entry.mValueCount, 0));
    std::vector<int32_t> values(std::max(matrix.size() + 1, entryCount));
    values.front() = entryCount == 0 ? 0 : entry.mValues[0];
    std::copy(matrix.begin(), matrix.end(), values.begin() + 1);
    effect->setEffectParam(entry.mDeviceId, entry.mParamCode, values.data(), entry.mValueCount);
}

void pushProfileEntry(const EffectParamParser& entry, IEffectOrm* effect,
                      const ProfileRules& rules) {
    if (entry.mParamCode == kCodeVbon) {
        if (rules.hasTunings) {
            pushEntry(entry, effect);
        }
        return;
    }
    if (entry.mParamCode == kCodeGebs) {
        pushGeqEntry(entry, effect);
        return;
    }
    if (rules.replacesMixMatrix && isSpeakerOutputMode(entry)) {
        pushOutputMode(entry, effect);
        return;
    }
    if (!rules.isOrmelContent ||
        android::Singleton<KivParamStore>::getInstance().isDeviceProcParamInProfile(
                entry.mParamCode)) {
        pushEntry(entry, effect);
    }
}

/** Switches the effect's own output mode on, if it is readable and off. */
void enableOutputMode(IEffectOrm* effect) {
    std::vector<int32_t> values = outputModeBuffer();
    const auto count = readEffect(effect, DEVICE_OUT_SPEAKER, kCodeDom, values);
    if (count.has_value() && values.front() == 0) {
        values.front() = 1;
        effect->setEffectParam(DEVICE_OUT_SPEAKER, kCodeDom, values.data(), *count);
    }
}

/** Gives the effect's own output mode another mix matrix. */
void updateMixMatrix(const std::string& device, IEffectOrm* effect) {
    std::vector<int32_t> values = outputModeBuffer();
    if (!readEffect(effect, DEVICE_OUT_SPEAKER, kCodeDom, values).has_value()) {
        return;
    }
    const std::vector<int32_t>& matrix = array().getXMLTuningMixMatrix(device);
    if (matrix.empty()) {
        return;
    }
    ALOGD("%s(): Update the mix matrix with tuning %s", "setSelectedTuningDevice", device.c_str());
    values.resize(std::max(values.size(), matrix.size() + 1));
    std::copy(matrix.begin(), matrix.end(), values.begin() + 1);
    effect->setEffectParam(DEVICE_OUT_SPEAKER, kCodeDom, values.data(),
                           static_cast<int32_t>(matrix.size() + 1));
}

}  // namespace

int32_t SpatializerParamCache::setProfile(OrmSpatializerProfileId profile, IEffectOrm* effect,
                                          bool isOrmelContent) {
    ALOGD("%s(profile=%d, isOrmelContent=%d)", __func__, profile, isOrmelContent);
    array().setCurrentProfile(profile);
    int32_t result = 0;
    if (array().isXMLProfileValid(profile)) {
        EffectParamParser parser = readerOf(array().getXMLProfileParams(profile));
        if (!parser.validate()) {
            ALOGE("%s() Invalid data for setting parameter values.", __func__);
            return -EINVAL;
        }
        const bool hasTunings = isTuningAvailable();
        const ProfileRules rules = {hasTunings, hasTunings && isSurroundOutput(), isOrmelContent};
        parser.begin();
        while (parser.next()) {
            pushProfileEntry(parser, effect, rules);
        }
        result = effect->commitEffectParams(DEVICE_OUT_DEFAULT);
    }
    if (isOrmelContent) {
        setOrmelContentProfile(ORM_SPATIALIZER_PROFILE_COMMON, effect);
        setOrmelContentProfile(profile, effect);
    }
    return result;
}

void SpatializerParamCache::setOrmelContentProfile(OrmSpatializerProfileId profile,
                                                   IEffectOrm* effect) {
    std::vector<int32_t> list(array().getProfileParamsSize(profile) / sizeof(int32_t));
    const bool keepsOutputMode = isSurroundOutput() && isTuningAvailable();
    array().getProfileParams(profile, list.data());
    SpatializerParamParser parser(list.data(), static_cast<int>(list.size() * sizeof(int32_t)));
    if (!parser.validate()) {
        ALOGE("%s() Invalid data for profile parameter values.", __func__);
        return;
    }
    parser.begin();
    while (parser.next()) {
        if (keepsOutputMode && isSpeakerOutputMode(parser)) {
            ALOGD("%s(): Hardcoded dom parameter values skipped", __func__);
            enableOutputMode(effect);
        } else {
            pushEntry(parser, effect);
        }
    }
    effect->commitEffectParams(DEVICE_OUT_DEFAULT);
}

int32_t SpatializerParamCache::loadTuning(IEffectOrm* effect) {
    ALOGD("%s", __func__);
    int32_t result = 0;
    for (const Port port : kSupportedPorts) {
        result = loadTuningDevice(array().getSelectedTuningDevice(port), effect);
    }
    return result;
}

int32_t SpatializerParamCache::loadTuningDevice(const std::string& device, IEffectOrm* effect) {
    ALOGD("%s(%s)", __func__, device.c_str());
    if (!array().isXMLTuningValid(device)) {
        return -EINVAL;
    }
    EffectParamParser parser = readerOf(array().getXMLTuningParams(device));
    if (!parser.validate()) {
        return -EINVAL;
    }
    parser.begin();
    while (parser.next()) {
        pushEntry(parser, effect);
    }
    return effect->commitEffectParams(DEVICE_OUT_DEFAULT);
}

int32_t SpatializerParamCache::setSelectedTuningDevice(int port, const std::string& device,
                                                       IEffectOrm* effect) {
    const char* const name = portName(port);
    if (name == nullptr) {
        return -EINVAL;
    }
    ALOGD("%s(port=%s, device=%s)", __func__, name, device.c_str());
    if (array().getSelectedTuningDevice(port) == device) {
        return 0;
    }
    if (const int status = array().setSelectedTuningDevice(port, device); status != 0) {
        return status;
    }
    if (port == PORT_INTERNAL_SPEAKER && isSurroundOutput()) {
        updateMixMatrix(device, effect);
    }
    return loadTuningDevice(device, effect);
}

int32_t SpatializerParamCache::setProfileGeqGains(const std::vector<int32_t>& gains,
                                                  IEffectOrm* effect) {
    const OrmSpatializerProfileId profile = array().getCurrentProfile();
    array().setProfileGeqGains(profile, gains);
    GeqValues values{};
    const auto count = readEffect(effect, DEVICE_OUT_DEFAULT, kCodeGebs, values);
    if (count != static_cast<int32_t>(kGeqValues)) {
        ALOGE("%s(): could not get proper GEQ parameters!", __func__);
        return -EINVAL;
    }
    putGains(gains, values);
    effect->setEffectParam(DEVICE_OUT_DEFAULT, kCodeGebs, values.data(), *count);
    return effect->commitEffectParams(DEVICE_OUT_DEFAULT);
}

std::vector<int32_t>& SpatializerParamCache::getProfileGeqGains() {
    const OrmSpatializerProfileId profile = array().getCurrentProfile();
    return array().getProfileGeqGains(profile);
}

bool SpatializerParamCache::isTuningAvailable() {
    return array().getTuningCount() > 0;
}

bool SpatializerParamCache::isValidPort(int port) {
    return std::find(kSupportedPorts.begin(), kSupportedPorts.end(), port) != kSupportedPorts.end();
}

}  // namespace ormel
