// Plain versions of the front's operations. The fuzz targets compare their calls, results and
// messages with the library's.
#pragma once

#include <kivparamstorage/KivParamStore.h>
#include <ormel/IEffectOrm.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <string>

#include "PlainList.h"
#include "PlainStore.h"

namespace ormel::fuzz {

/**
 * Works on a plain store like SpatializerParamCache on the process's. Without an effect, the first
 * use of the effect ends the operation with -22.
 */
class PlainFront {
  public:
    PlainFront(PlainStore& store, IEffectOrm* effect) : mStore(store), mEffect(effect) {}

    int32_t setProfile(int32_t profile, bool isOrmelContent) {
        return untilNoEffect([&] { return applyProfile(profile, isOrmelContent); });
    }

    void setOrmelContentProfile(int32_t profile) {
        untilNoEffect([&] {
            applyBuiltIn(profile);
            return 0;
        });
    }

    int32_t loadTuning() {
        return untilNoEffect([&] { return applyTunings(); });
    }

    int32_t loadTuningDevice(const std::string& device) {
        return untilNoEffect([&] { return applyTuning(device); });
    }

    int32_t setSelectedTuningDevice(int32_t port, const std::string& device) {
        return untilNoEffect([&] { return selectTuning(port, device); });
    }

    int32_t setProfileGeqGains(const Words& gains) {
        return untilNoEffect([&] { return applyGains(gains); });
    }

  private:
    struct NoEffect {};

    template <typename Operation>
    static int32_t untilNoEffect(Operation operation) {
        try {
            return operation();
        } catch (const NoEffect&) {
            return -EINVAL;
        }
    }

    IEffectOrm& effect() {
        if (mEffect == nullptr) {
            throw NoEffect();
        }
        return *mEffect;
    }

    int32_t applyProfile(int32_t profile, bool isOrmelContent) {
        mStore.log(3, "setProfile(profile=" + std::to_string(profile) +
                              ", isOrmelContent=" + (isOrmelContent ? "1)" : "0)"));
        mStore.currentProfile = profile;
        int32_t result = 0;
        if (mStore.profileLists.count(profile) != 0) {
            mStore.log(3, "getXMLProfileParams(profile = " + std::to_string(profile) + ")");
            PlainReader reader(mStore.profileLists[profile]);
            if (!reader.validate()) {
                mStore.log(6, "setProfile() Invalid data for setting parameter values.");
                return -EINVAL;
            }
            PlainEntry entry;
            reader.begin();
            for (int32_t i = 0; i < reader.sizeInWords() && reader.next(entry); ++i) {
                pushProfileEntry(entry, isOrmelContent);
            }
            result = effect().commitEffectParams(kAllDevices);
        }
        if (isOrmelContent) {
            applyBuiltIn(-1);
            applyBuiltIn(profile);
        }
        return result;
    }

    void applyBuiltIn(int32_t profile) {
        mStore.log(3, "getProfileParams(profile = " + std::to_string(profile) + ")");
        PlainReader reader(builtInList(profile));
        if (!reader.validate()) {
            mStore.log(6, "setOrmelContentProfile() Invalid data for profile parameter values.");
            return;
        }
        PlainEntry entry;
        reader.begin();
        while (reader.next(entry)) {
            if (mStore.outputChannels < 3 || mStore.tuningCount <= 0 || !isSpeakerDom(entry)) {
                push(entry);
                continue;
            }
            mStore.log(3, "setOrmelContentProfile(): Hardcoded dom parameter values skipped");
            Words buffer(kDomRoom);
            int32_t count = kDomRoom;
            if (read(kSpeaker, kDom, buffer, count) && buffer[0] == 0) {
                buffer[0] = 1;
                effect().setEffectParam(kSpeaker, kDom, buffer.data(), count);
            }
        }
        effect().commitEffectParams(kAllDevices);
    }

    int32_t applyTunings() {
        mStore.log(3, "loadTuning");
        int32_t result = 0;
        for (const int32_t port : {0, 3, 4, 5}) {
            result = applyTuning(mStore.selectedDevices[port]);
        }
        return result;
    }

    int32_t applyTuning(const std::string& device) {
        mStore.log(3, "loadTuningDevice(" + device + ")");
        if (mStore.tuningLists.count(device) == 0) {
            return -EINVAL;
        }
        mStore.log(3, "getXMLTuningParams(device = " + device + ")");
        PlainReader reader(mStore.tuningLists[device]);
        if (!reader.validate()) {
            return -EINVAL;
        }
        PlainEntry entry;
        reader.begin();
        for (int32_t i = 0; i < reader.sizeInWords() && reader.next(entry); ++i) {
            push(entry);
        }
        return effect().commitEffectParams(kAllDevices);
    }

    int32_t selectTuning(int32_t port, const std::string& device) {
        const char* const name = portName(port);
        if (name == nullptr) {
            return -EINVAL;
        }
        const std::string message =
                std::string("setSelectedTuningDevice(port=") + name + ", device=" + device + ")";
        mStore.log(3, message);
        if (mStore.selectedDevices[port] == device) {
            return 0;
        }
        mStore.log(3, message);
        const auto available = mStore.availableDevices.find(device);
        if (available == mStore.availableDevices.end() || available->second != name) {
            mStore.log(6, "setSelectedTuningDevice(): tuningDevice " + device +
                                  " is not available for port " + name + ".");
            return -EINVAL;
        }
        mStore.selectedDevices[port] = device;
        if (port == 0 && mStore.outputChannels >= 3) {
            updateMixMatrix(device);
        }
        return applyTuning(device);
    }

    int32_t applyGains(const Words& gains) {
        mStore.gains[mStore.currentProfile] = gains;
        Words buffer(kGeqWords);
        int32_t count = kGeqWords;
        if (!read(kAllDevices, kGebs, buffer, count) || count != kGeqWords) {
            mStore.log(6, "setProfileGeqGains(): could not get proper GEQ parameters!");
            return -EINVAL;
        }
        putGains(buffer);
        effect().setEffectParam(kAllDevices, kGebs, buffer.data(), kGeqWords);
        return effect().commitEffectParams(kAllDevices);
    }

    static constexpr int32_t kAllDevices = 0x40000000;
    static constexpr int32_t kSpeaker = 2;
    static constexpr int32_t kVbon = 0x6e6f6276;
    static constexpr int32_t kGebs = 0x73626567;
    static constexpr int32_t kDom = 0x006d6f64;
    /** Size of the band count, frequencies and gains of 20 bands. */
    static constexpr int32_t kGeqWords = 41;
    static constexpr int32_t kGeqFirstGain = 21;
    static constexpr int32_t kDomRoom = 61;

    static Words builtInList(int32_t profile) {
        using Array = SpatializerParamArray;
        switch (profile) {
            case -1:
                return {Array::mCommonParams.begin(), Array::mCommonParams.end()};
            case 0:
                return {Array::mDynamicProfileParams.begin(), Array::mDynamicProfileParams.end()};
            case 1:
                return {Array::mMovieProfileParams.begin(), Array::mMovieProfileParams.end()};
            case 2:
                return {Array::mMusicProfileParams.begin(), Array::mMusicProfileParams.end()};
            case 3:
                return {Array::mCustomProfileParams.begin(), Array::mCustomProfileParams.end()};
            default:
                return {};
        }
    }

    static bool isSpeakerDom(const PlainEntry& entry) {
        return entry.device == kSpeaker && entry.code == kDom;
    }

    void push(const PlainEntry& entry) {
        effect().setEffectParam(entry.device, entry.code, entry.values.data(), entry.count);
    }

    /** Reads from the effect; false if that fails or the count is out of range. */
    bool read(int32_t device, int32_t code, Words& buffer, int32_t& count) {
        const int32_t room = count;
        return effect().getEffectParam(device, code, buffer.data(), &count) == 0 && count >= 0 &&
               count <= room;
    }

    void pushProfileEntry(const PlainEntry& entry, bool isOrmelContent) {
        if (entry.code == kVbon) {
            if (mStore.tuningCount > 0) {
                push(entry);
            }
        } else if (entry.code == kGebs) {
            if (entry.count == kGeqWords) {
                PlainEntry completed = entry;
                completed.values.resize(kGeqFirstGain);
                completed.values.resize(kGeqWords);
                putGains(completed.values);
                push(completed);
            }
        } else if (mStore.tuningCount > 0 && isSpeakerDom(entry) && mStore.outputChannels > 2) {
            pushWithMixMatrix(entry);
        } else if (!isOrmelContent ||
                   KivParamStore::getInstance().isDeviceProcParamInProfile(entry.code)) {
            push(entry);
        }
    }

    /** Copies the current profile's gains into the bands, at most 20. */
    void putGains(Words& bands) {
        const Words& gains = mStore.gains[mStore.currentProfile];
        std::copy_n(gains.begin(), std::min(gains.size(), size_t{kGeqWords - kGeqFirstGain}),
                    bands.begin() + kGeqFirstGain);
    }

    const Words& mixMatrixOf(const std::string& device) {
        static const Words none;
        const auto found = mStore.mixMatrices.find(device);
        if (found == mStore.mixMatrices.end()) {
            mStore.log(5,
                       "getXMLTuningMixMatrix(): no mix matrix found with tuning device " + device);
            return none;
        }
        return found->second;
    }

    void pushWithMixMatrix(const PlainEntry& entry) {
        const Words& matrix = mixMatrixOf(mStore.selectedDevices[0]);
        if (matrix.empty()) {
            push(entry);
            return;
        }
        PlainEntry replaced = entry;
        replaced.values.resize(1);
        replaced.values.insert(replaced.values.end(), matrix.begin(), matrix.end());
        replaced.values.resize(static_cast<size_t>(std::max(entry.count, 0)));
        push(replaced);
    }

    void updateMixMatrix(const std::string& device) {
        Words buffer(kDomRoom);
        int32_t count = kDomRoom;
        if (!read(kSpeaker, kDom, buffer, count)) {
            return;
        }
        const Words& matrix = mixMatrixOf(device);
        if (matrix.empty()) {
            return;
        }
        mStore.log(3, "setSelectedTuningDevice(): Update the mix matrix with tuning " + device);
        buffer.resize(1);
        buffer.insert(buffer.end(), matrix.begin(), matrix.end());
        effect().setEffectParam(kSpeaker, kDom, buffer.data(), static_cast<int32_t>(buffer.size()));
    }

    PlainStore& mStore;
    IEffectOrm* const mEffect;
};

}  // namespace ormel::fuzz
