// Plain loading of a tuning document's objects into a store.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "PlainList.h"
#include "PlainReading.h"
#include "PlainStore.h"
#include "PlainTranslators.h"

namespace ormel::fuzz {

/** Loads the objects of one document like the library. */
class PlainLoad {
  public:
    PlainLoad(PlainDocument& document, PlainStore& store) : mDocument(document), mStore(store) {}

    /** @return false, with part of the work done, if there is too much */
    bool run() {
        takeInternalSpeaker();
        for (Profile& profile : mDocument.profiles) {
            loadProfile(profile);
        }
        for (const DeviceTuning& binding : mDocument.deviceTunings) {
            loadTuning(binding);
        }
        nameMissingDevices();
        return mWordCount <= kMaxWords;
    }

  private:
    Tuning* findTuning(const std::string& name) const {
        for (Tuning& tuning : mDocument.tunings) {
            if (tuning.getName() == name) {
                return &tuning;
            }
        }
        return nullptr;
    }

    /** The tuning of the first device tuning of the internal speaker's selected device. */
    Tuning* findInternalSpeaker() const {
        for (const DeviceTuning& binding : mDocument.deviceTunings) {
            if (binding.getDevice() == mStore.selectedDevices[0]) {
                return findTuning(binding.getTuning());
            }
        }
        return nullptr;
    }

    void takeInternalSpeaker() {
        if (Tuning* const tuning = findInternalSpeaker()) {
            mMixMatrix = tuning->getValues()[OUTPUT_MIX_MATRIX];
            mVirtualBassMode = tuning->getValues()[VIRTUAL_BASS_MODE];
            mStore.outputChannels = tuning->getValues()[OUTPUT_CHANNELS].at(0);
        }
        if (mMixMatrix.empty()) {
            mStore.log(3, "use the default mix matrix");
            mMixMatrix = {15,    24,    16384, 0,     0,     16384, 11583, 11583, 8192,  8192,
                          16384, 0,     0,     16384, 16384, 0,     0,     16384, 16384, 0,
                          0,     16384, 16384, 0,     0,     16384, 11,    16,    16384, 0,
                          0,     16384, 11583, 11583, 8192,  8192,  16384, 0,     0,     16384,
                          16384, 0,     0,     16384, 10,    12,    16384, 0,     0,     16384,
                          11583, 11583, 8192,  8192,  16384, 0,     0,     16384};
        }
        if (mVirtualBassMode.empty()) {
            mStore.log(3, "use the default vb mode");
            mVirtualBassMode = {3};
        }
    }

    void add(PlainList& list, ParameterValues& object, int32_t endpoint) {
        if (mWordCount <= kMaxWords) {
            const size_t before = list.words.size();
            translate(list, object, endpoint);
            mWordCount += list.words.size() - before;
        }
    }

    void loadProfile(Profile& profile) {
        const int32_t id = profile.getProfileId();
        PlainList list;
        list.device = 0x40000000;
        add(list, profile, 2);
        for (GeqPreset& preset : mDocument.geqPresets) {
            if (preset.getProfileId() == id) {
                add(list, preset, 2);
                mStore.gains.emplace(id, preset.getValues()[GEQ_GAIN]);
            }
        }
        for (ProfileEndpoint& endpoint : mDocument.profileEndpoints) {
            if (endpoint.getProfileId() == id) {
                addEndpoint(list, endpoint);
            }
        }
        mStore.log(3, "Profile " + std::to_string(id) +
                              ", numParameters = " + std::to_string(list.count()));
        mStore.profileLists.emplace(id, list.words);
        ++mStore.profileCount;
    }

    void addEndpoint(PlainList& list, ProfileEndpoint& endpoint) {
        endpoint.set(VIRTUAL_BASS_MODE, mVirtualBassMode);
        selectPreset(endpoint.getSelectedIeqPreset());
        if (endpoint.getEndpoint() == 1) {
            endpoint.set(ORIENTATION, {2});
            for (const int32_t device : {0x8, 0x80, 0x4000}) {
                addOnDevice(list, device, endpoint);
            }
        }
        if (endpoint.getEndpoint() == 0) {
            endpoint.set(ORIENTATION, {1});
            endpoint.set(OUTPUT_MIX_MATRIX, mMixMatrix);
            addOnDevice(list, 0x2, endpoint);
        }
    }

    /** Keeps the preset selected before if no preset has this id. */
    void selectPreset(int32_t id) {
        for (IeqPreset& preset : mDocument.ieqPresets) {
            if (preset.getPresetId() == id) {
                mPreset = &preset;
                return;
            }
        }
    }

    void addOnDevice(PlainList& list, int32_t device, ProfileEndpoint& endpoint) {
        list.device = device;
        if (mPreset != nullptr) {
            add(list, *mPreset, endpoint.getEndpoint());
        }
        add(list, endpoint, endpoint.getEndpoint());
    }

    void loadTuning(const DeviceTuning& binding) {
        const std::string device = binding.getDevice();
        Tuning* const tuning = findTuning(binding.getTuning());
        if (tuning == nullptr) {
            mStore.logBeginning(5, "");
            return;
        }
        PlainList list;
        list.device = deviceOfPort(binding.getPort());
        // The endpoint affects only the output mode, which no tuning has.
        add(list, *tuning, 2);
        mStore.log(3, "Tuning id(" + device + "), tuningName(" + binding.getTuning() +
                              ") numParameters = " + std::to_string(list.count()));
        mStore.tuningLists[device] = list.words;
        ++mStore.tuningCount;
        mStore.availableDevices[device] = binding.getPort();
        mStore.mixMatrices[device] = tuning->getValues()[OUTPUT_MIX_MATRIX];
        mStore.logBeginning(3, "Tuning id(" + device + "): endpoint ");
    }

    static int32_t deviceOfPort(const std::string& port) {
        static const auto& devices = *new std::map<std::string, int32_t>{{"internal_speaker", 0x2},
                                                                         {"headphone", 0x8},
                                                                         {"bluetooth", 0x80},
                                                                         {"usb", 0x4000}};
        const auto found = devices.find(port);
        return found == devices.end() ? 0 : found->second;
    }

    void nameMissingDevices() {
        for (const int32_t port : {0, 3, 4, 5}) {
            const std::string& device = mStore.selectedDevices[port];
            const auto found = mStore.availableDevices.find(device);
            if (found == mStore.availableDevices.end() || found->second != kPortNames[port]) {
                mStore.log(6, "loadSpatializerXMLFile() default tuningDevice " + device +
                                      " is not available for port " + kPortNames[port] + ".");
            }
        }
    }

    /** A short document with repeated profiles can give very long lists. */
    static constexpr size_t kMaxWords = size_t{4} << 20;

    PlainDocument& mDocument;
    PlainStore& mStore;
    Words mMixMatrix;
    Words mVirtualBassMode;
    IeqPreset* mPreset = nullptr;
    size_t mWordCount = 0;
};

/**
 * Loads a document that the library has accepted.
 *
 * @return false, with part of the document in @p store, if it is too long to translate here
 */
inline bool loadPlainly(const MemoryFile& file, PlainStore& store) {
    store.log(3, "loadSpatializerXMLFile(" + file.path() + ")");
    const Tree tree = readTree(file.content());
    require(rootOf(tree) != nullptr);
    PlainDocument document = PlainReading(tree, store).read();
    return PlainLoad(document, store).run();
}

}  // namespace ormel::fuzz
