#define LOG_TAG "OrmSpatializerParamCache"

#include <ormel/KivParameter.h>
#include <ormel/SpatializerParamArray.h>
#include <ormel/SpatializerParamCache.h>
#include <ormel/SpatializerParamParser.h>
#include <ormel/StoreFront.h>

#include "PackedListReader.h"

#include <kivparamstorage/EffectParamParser.h>
#include <kivparamstorage/KivParamStore.h>
#include <log/log.h>

#include <algorithm>
#include <array>
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

bool isSurroundOutput(SpatializerParamArray& store) {
    return store.getOutputChannelCount() > 2;
}

bool hasDeviceTunings(SpatializerParamArray& store) {
    return store.getTuningCount() > 0;
}

/** Decides which entries of a profile reach the effect, and how. */
struct ProfileRules {
    bool hasTunings;
    bool replacesMixMatrix;
    /** Says which parameters apply to the maker's own content; null if the content is not that. */
    KivParamStore* ormelContentParams;
};

/** Copies at most kGeqBands of @p gains to their place after the frequencies. */
void putGains(const std::vector<int32_t>& gains, GeqValues& values) {
    std::copy_n(gains.begin(), std::min(gains.size(), kGeqBands), values.begin() + kGeqGainsAt);
}

/** Calls to the caller's effect. If it is null, the first call fails and ends the operation. */
class EffectCalls {
  public:
    explicit EffectCalls(IEffectOrm* effect) : mEffect(effect) {}

    bool haveFailed() const { return mHaveFailed; }

    void set(int32_t device, int32_t code, const int32_t* values, int32_t count) {
        if (checkEffect()) {
            mEffect->setEffectParam(device, code, values, count);
        }
    }

    template <typename Parser>
    void set(const Parser& entry) {
        set(entry.mDeviceId, entry.mParamCode, entry.mValues, entry.mValueCount);
    }

    /**
     * Reads at most @p values.size() values; the others stay 0.
     *
     * @return the number of values read; none if the read failed or answered with an impossible
     *         number
     */
    template <typename Values>
    std::optional<int32_t> get(int32_t device, int32_t code, Values& values) {
        const auto room = static_cast<int32_t>(values.size());
        int32_t count = room;
        if (!checkEffect() || mEffect->getEffectParam(device, code, values.data(), &count) != 0 ||
            count < 0 || count > room) {
            return std::nullopt;
        }
        return count;
    }

    int32_t commit() {
        return checkEffect() ? mEffect->commitEffectParams(DEVICE_OUT_DEFAULT) : -EINVAL;
    }

  private:
    bool checkEffect() {
        if (mEffect == nullptr) {
            mHaveFailed = true;
        }
        return mEffect != nullptr;
    }

    IEffectOrm* const mEffect;
    bool mHaveFailed = false;
};

/** Buffer to read back the effect's current speaker output mode. */
std::vector<int32_t> outputModeBuffer(SpatializerParamArray& store) {
    return std::vector<int32_t>(static_cast<size_t>(store.getMixMatrixCapacity()) + 1);
}

template <typename Parser>
bool isSpeakerOutputMode(const Parser& entry) {
    return entry.mDeviceId == DEVICE_OUT_SPEAKER && entry.mParamCode == kCodeDom;
}

template <typename Parser>
Parser readerOf(std::vector<int32_t>& list) {
    return {list.data(), static_cast<int>(list.size() * sizeof(int32_t))};
}

/**
 * Reads one of the store's lists. A caller can write negative value counts into a list; these lead
 * back to words already read. A list that gives as many entries as it has words is therefore taken
 * to be circular, and ends there.
 */
class ListWalk {
  public:
    explicit ListWalk(std::vector<int32_t>& list)
        : mParser(readerOf<EffectParamParser>(list)),
          mEntriesLeft(list.size()),
          mIsCircular(isCircular(list)) {}

    bool validate() { return mIsCircular || mParser.validate(); }

    void begin() { mParser.begin(); }

    bool next() { return mEntriesLeft-- > 0 && mParser.next(); }

    const EffectParamParser& entry() const { return mParser; }

  private:
    static bool isCircular(std::vector<int32_t>& list) {
        const auto words = static_cast<int32_t>(list.size());
        auto parser = readerOf<SpatializerParamParser>(list);
        PackedListReader<SpatializerParamParser> reader(parser, nullptr);
        if (!reader.begin() || parser.mParamCount <= words) {
            return false;
        }
        while (parser.mParamIndex < words && reader.next()) {
        }
        return parser.mParamIndex == words;
    }

    EffectParamParser mParser;
    size_t mEntriesLeft;
    const bool mIsCircular;
};

/** Pushes the graphic equalizer's bands with the current profile's gains. */
void pushGeqEntry(SpatializerParamArray& store, const EffectParamParser& entry,
                  EffectCalls& effect) {
    if (entry.mValueCount != static_cast<int32_t>(kGeqValues)) {
        return;
    }
    GeqValues values{};
    std::copy_n(entry.mValues, kGeqGainsAt, values.begin());
    store.copyProfileGeqGains(store.getCurrentProfile(), &values[kGeqGainsAt], kGeqBands);
    effect.set(entry.mDeviceId, entry.mParamCode, values.data(), entry.mValueCount);
}

/** Pushes the speaker's output mode with the mix matrix of the selected tuning device. */
void pushOutputMode(SpatializerParamArray& store, const EffectParamParser& entry,
                    EffectCalls& effect) {
    const std::string device = store.getSelectedTuningDevice(PORT_INTERNAL_SPEAKER);
    const std::vector<int32_t>& matrix = store.getXMLTuningMixMatrix(device);
    if (matrix.empty()) {
        effect.set(entry);
        return;
    }
    // The count passed is the entry's own, whatever the matrix's length.
    const auto entryCount = static_cast<size_t>(std::max(entry.mValueCount, 0));
    std::vector<int32_t> values(std::max(matrix.size() + 1, entryCount));
    values.front() = entryCount == 0 ? 0 : entry.mValues[0];
    std::copy(matrix.begin(), matrix.end(), values.begin() + 1);
    effect.set(entry.mDeviceId, entry.mParamCode, values.data(), entry.mValueCount);
}

void pushProfileEntry(SpatializerParamArray& store, const EffectParamParser& entry,
                      EffectCalls& effect, const ProfileRules& rules) {
    if (entry.mParamCode == kCodeVbon) {
        if (rules.hasTunings) {
            effect.set(entry);
        }
        return;
    }
    if (entry.mParamCode == kCodeGebs) {
        pushGeqEntry(store, entry, effect);
        return;
    }
    if (rules.replacesMixMatrix && isSpeakerOutputMode(entry)) {
        pushOutputMode(store, entry, effect);
        return;
    }
    if (rules.ormelContentParams == nullptr ||
        rules.ormelContentParams->isDeviceProcParamInProfile(entry.mParamCode)) {
        effect.set(entry);
    }
}

/** Switches the effect's own output mode on, if it is readable and off. */
void enableOutputMode(SpatializerParamArray& store, EffectCalls& effect) {
    std::vector<int32_t> values = outputModeBuffer(store);
    const auto count = effect.get(DEVICE_OUT_SPEAKER, kCodeDom, values);
    if (count.has_value() && values.front() == 0) {
        values.front() = 1;
        effect.set(DEVICE_OUT_SPEAKER, kCodeDom, values.data(), *count);
    }
}

/** Replaces the mix matrix of the effect's output mode. */
void updateMixMatrix(SpatializerParamArray& store, const std::string& device, EffectCalls& effect) {
    std::vector<int32_t> values = outputModeBuffer(store);
    if (!effect.get(DEVICE_OUT_SPEAKER, kCodeDom, values).has_value()) {
        return;
    }
    const std::vector<int32_t>& matrix = store.getXMLTuningMixMatrix(device);
    if (matrix.empty()) {
        return;
    }
    ALOGD("%s(): Update the mix matrix with tuning %s", "setSelectedTuningDevice", device.c_str());
    values.resize(std::max(values.size(), matrix.size() + 1));
    std::copy(matrix.begin(), matrix.end(), values.begin() + 1);
    effect.set(DEVICE_OUT_SPEAKER, kCodeDom, values.data(),
               static_cast<int32_t>(matrix.size() + 1));
}

/** Pushes a profile's document list, and commits. */
int32_t applyProfile(SpatializerParamArray& store, ListWalk& list, EffectCalls& effect,
                     bool isOrmelContent) {
    const bool hasTunings = hasDeviceTunings(store);
    // Looked up once, because the singleton locks a mutex at every lookup.
    KivParamStore* const ormelContentParams =
            isOrmelContent ? &android::Singleton<KivParamStore>::getInstance() : nullptr;
    const ProfileRules rules = {hasTunings, hasTunings && isSurroundOutput(store),
                                ormelContentParams};
    list.begin();
    while (!effect.haveFailed() && list.next()) {
        pushProfileEntry(store, list.entry(), effect, rules);
    }
    return effect.commit();
}

/** Pushes a profile's built-in list, and commits; does nothing once a call has failed. */
void applyBuiltIn(SpatializerParamArray& store, OrmSpatializerProfileId profile,
                  EffectCalls& effect) {
    if (effect.haveFailed()) {
        return;
    }
    constexpr char kOperation[] = "setOrmelContentProfile";
    std::vector<int32_t> list(store.getProfileParamsSize(profile) / sizeof(int32_t));
    const bool keepsOutputMode = isSurroundOutput(store) && hasDeviceTunings(store);
    store.getProfileParams(profile, list.data());
    auto parser = readerOf<SpatializerParamParser>(list);
    if (!parser.validate()) {
        ALOGE("%s() Invalid data for profile parameter values.", kOperation);
        return;
    }
    parser.begin();
    while (!effect.haveFailed() && parser.next()) {
        if (keepsOutputMode && isSpeakerOutputMode(parser)) {
            ALOGD("%s(): Hardcoded dom parameter values skipped", kOperation);
            enableOutputMode(store, effect);
        } else {
            effect.set(parser);
        }
    }
    effect.commit();
}

/** Pushes a tuning device's list, and commits. */
int32_t applyTuning(SpatializerParamArray& store, const std::string& device, EffectCalls& effect) {
    ALOGD("%s(%s)", "loadTuningDevice", device.c_str());
    if (!store.isXMLTuningValid(device)) {
        return -EINVAL;
    }
    ListWalk list(store.getXMLTuningParams(device));
    if (!list.validate()) {
        return -EINVAL;
    }
    list.begin();
    while (!effect.haveFailed() && list.next()) {
        effect.set(list.entry());
    }
    return effect.commit();
}

}  // namespace

int32_t StoreFront::setProfile(OrmSpatializerProfileId profile, IEffectOrm* effect,
                               bool isOrmelContent) {
    ALOGD("%s(profile=%d, isOrmelContent=%d)", __func__, profile, isOrmelContent);
    mStore.setCurrentProfile(profile);
    EffectCalls calls(effect);
    int32_t result = 0;
    if (mStore.isXMLProfileValid(profile)) {
        ListWalk list(mStore.getXMLProfileParams(profile));
        if (!list.validate()) {
            ALOGE("%s() Invalid data for setting parameter values.", __func__);
            return -EINVAL;
        }
        result = applyProfile(mStore, list, calls, isOrmelContent);
    }
    if (isOrmelContent) {
        applyBuiltIn(mStore, ORM_SPATIALIZER_PROFILE_COMMON, calls);
        applyBuiltIn(mStore, profile, calls);
    }
    return calls.haveFailed() ? -EINVAL : result;
}

void StoreFront::setOrmelContentProfile(OrmSpatializerProfileId profile, IEffectOrm* effect) {
    EffectCalls calls(effect);
    applyBuiltIn(mStore, profile, calls);
}

int32_t StoreFront::loadTuning(IEffectOrm* effect) {
    ALOGD("%s", __func__);
    EffectCalls calls(effect);
    int32_t result = 0;
    for (const Port port : kSupportedPorts) {
        if (!calls.haveFailed()) {
            result = applyTuning(mStore, mStore.getSelectedTuningDevice(port), calls);
        }
    }
    return result;
}

int32_t StoreFront::loadTuningDevice(const std::string& device, IEffectOrm* effect) {
    EffectCalls calls(effect);
    return applyTuning(mStore, device, calls);
}

int32_t StoreFront::setSelectedTuningDevice(int port, const std::string& device,
                                            IEffectOrm* effect) {
    const char* const name = portName(port);
    if (name == nullptr) {
        return -EINVAL;
    }
    ALOGD("%s(port=%s, device=%s)", __func__, name, device.c_str());
    if (mStore.getSelectedTuningDevice(port) == device) {
        return 0;
    }
    if (const int status = mStore.setSelectedTuningDevice(port, device); status != 0) {
        return status;
    }
    EffectCalls calls(effect);
    if (port == PORT_INTERNAL_SPEAKER && isSurroundOutput(mStore)) {
        updateMixMatrix(mStore, device, calls);
    }
    return calls.haveFailed() ? -EINVAL : applyTuning(mStore, device, calls);
}

int32_t StoreFront::setProfileGeqGains(const std::vector<int32_t>& gains, IEffectOrm* effect) {
    const OrmSpatializerProfileId profile = mStore.getCurrentProfile();
    mStore.setProfileGeqGains(profile, gains);
    EffectCalls calls(effect);
    GeqValues values{};
    const auto count = calls.get(DEVICE_OUT_DEFAULT, kCodeGebs, values);
    if (calls.haveFailed()) {
        return -EINVAL;
    }
    if (count != static_cast<int32_t>(kGeqValues)) {
        ALOGE("%s(): could not get proper GEQ parameters!", __func__);
        return -EINVAL;
    }
    putGains(gains, values);
    calls.set(DEVICE_OUT_DEFAULT, kCodeGebs, values.data(), *count);
    return calls.commit();
}

std::vector<int32_t>& StoreFront::getProfileGeqGains() {
    const OrmSpatializerProfileId profile = mStore.getCurrentProfile();
    return mStore.getProfileGeqGains(profile);
}

bool StoreFront::isTuningAvailable() {
    return hasDeviceTunings(mStore);
}

namespace {

/** The front operations on the process's store. */
StoreFront front() {
    return StoreFront(SpatializerParamArray::getInstance());
}

}  // namespace

int32_t SpatializerParamCache::setProfile(OrmSpatializerProfileId profile, IEffectOrm* effect,
                                          bool isOrmelContent) {
    return front().setProfile(profile, effect, isOrmelContent);
}

void SpatializerParamCache::setOrmelContentProfile(OrmSpatializerProfileId profile,
                                                   IEffectOrm* effect) {
    front().setOrmelContentProfile(profile, effect);
}

int32_t SpatializerParamCache::loadTuning(IEffectOrm* effect) {
    return front().loadTuning(effect);
}

int32_t SpatializerParamCache::loadTuningDevice(const std::string& device, IEffectOrm* effect) {
    return front().loadTuningDevice(device, effect);
}

int32_t SpatializerParamCache::setSelectedTuningDevice(int port, const std::string& device,
                                                       IEffectOrm* effect) {
    return front().setSelectedTuningDevice(port, device, effect);
}

int32_t SpatializerParamCache::setProfileGeqGains(const std::vector<int32_t>& gains,
                                                  IEffectOrm* effect) {
    return front().setProfileGeqGains(gains, effect);
}

std::vector<int32_t>& SpatializerParamCache::getProfileGeqGains() {
    return front().getProfileGeqGains();
}

bool SpatializerParamCache::isTuningAvailable() {
    return front().isTuningAvailable();
}

bool SpatializerParamCache::isValidPort(int port) {
    return std::find(kSupportedPorts.begin(), kSupportedPorts.end(), port) != kSupportedPorts.end();
}

}  // namespace ormel
