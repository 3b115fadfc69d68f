// Fuzzes sequences of front operations, with effects that give any answers. The plain front runs
// the same operations, and must have the same calls, results, messages and final state.
#include <ormel/SpatializerParamCache.h>

#include <cerrno>
#include <cstring>
#include <vector>

#include "Fuzz.h"
#include "PlainFront.h"
#include "PlainStore.h"
#include "PlainTranslation.h"

namespace ormel::fuzz {

namespace {

/** Names in the documents, and some that are in none. */
const std::string& nameOf(uint8_t number) {
    static const auto& names = *new std::vector<std::string>{"default_internal_speaker",
                                                             "default_headphone",
                                                             "default_bluetooth",
                                                             "default_usb",
                                                             "other_speaker",
                                                             "no_matrix",
                                                             "on_hdmi",
                                                             "",
                                                             "unknown"};
    return names[number % names.size()];
}

/** A number of a port or profile; mostly small, so that it exists. */
int32_t number(Input& input) {
    const uint8_t small = input.byte();
    return small == 0xff ? input.word() : small % 9 - 1;
}

/** Mostly a small value. */
int32_t value(Input& input) {
    const uint8_t small = input.byte();
    return small == 0xff ? input.word() : small;
}

/** Sets the effect's answers. @return whether there is an effect */
bool readAnswer(Input& input, TouchingEffect& effect) {
    const uint8_t settings = input.byte();
    effect.readStatus = (settings & 1) != 0 ? -5 : 0;
    effect.answerValue = (settings & 2) != 0 ? input.word() : 0;
    effect.answersCount = (settings & 4) != 0;
    effect.answerCount = (settings & 8) != 0 ? input.word() : input.byte();
    return (settings & 0x70) != 0x70;
}

Words gains(Input& input) {
    Words values(input.byte());
    for (int32_t& value : values) {
        value = input.byte();
    }
    return values;
}

/** Changes a list arbitrarily, as callers that hold references can. */
void edit(Input& input, Words& list, Words& plainList) {
    const uint8_t cut = input.byte();
    const uint8_t place = input.byte();
    const int32_t word = value(input);
    for (Words* const edited : {&list, &plainList}) {
        if (edited->empty()) {
            continue;
        }
        edited->resize(edited->size() - cut % edited->size());
        (*edited)[place % edited->size()] = word;
    }
}

std::string geqPreset(int profile, int bands) {
    std::string text = "<preset type='geq' id='" + std::to_string(profile) + "'>\n<data>\n<bands>";
    for (int band = 1; band <= bands; ++band) {
        text += "\n<b frequency='" + std::to_string(band) + "' gain='" +
                std::to_string(100 + band) + "'/>";
    }
    return text + "\n</bands>\n</data>\n</preset>\n";
}

constexpr char kBegin[] = R"(<d>
 <format_version major="3" minor="4" maintenance="0"/>
 <preset id="0" name="off" type="ieq">
  <data>
   <bands>
    <band_ieq frequency="100" target="1"/>
   </bands>
  </data>
 </preset>
 <profile id="0" name="dynamic">
  <endpoint_type id="speaker">
   <include ieq_preset="0"/>
   <virtualizer-enable value="2"/>
  </endpoint_type>
 </profile>
)";

constexpr char kSurround[] = R"(
 <profile id="1" name="movie">
  <endpoint_type id="speaker">
   <include ieq_preset="0"/>
   <virtualizer-enable value="3"/>
  </endpoint_type>
  <endpoint_type id="headphone">
   <include ieq_preset="0"/>
   <virtualizer-enable value="4"/>
  </endpoint_type>
 </profile>
 <profile id="2" name="music">
  <surround-decoder-enable value="1"/>
 </profile>
 <tuning name="a" endpoint_type="speaker" output_channels="4">
  <device_id id="default_internal_speaker" endpoint_port="internal_speaker"/>
  <device_id id="default_headphone" endpoint_port="headphone"/>
  <data>
   <output-mode>
    <matrix>
     <row v="1,2,3,4"/>
    </matrix>
   </output-mode>
  </data>
 </tuning>
 <tuning name="b" endpoint_type="speaker" output_channels="4">
  <device_id id="other_speaker" endpoint_port="internal_speaker"/>
  <device_id id="on_hdmi" endpoint_port="hdmi"/>
  <data>
   <output-mode>
    <matrix>
     <row v="1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,21,22,23,24,25,26,27,28,29,30"/>
     <row v="1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,21,22,23,24,25,26,27,28,29,30"/>
     <row v="1,2,3,4,5,6,7,8,9,10"/>
    </matrix>
   </output-mode>
  </data>
 </tuning>
 <tuning name="c" endpoint_type="speaker" output_channels="2">
  <device_id id="no_matrix" endpoint_port="internal_speaker"/>
  <data>
   <peak-value value="3"/>
  </data>
 </tuning>
)";

/** Has the same names and ids as the other document, with other values. */
constexpr char kStereo[] = R"(
 <profile id="1" name="movie">
  <volume-modeler-enable value="1"/>
 </profile>
 <profile id="3" name="custom">
  <endpoint_type id="speaker">
   <include ieq_preset="0"/>
   <virtualizer-enable value="5"/>
  </endpoint_type>
 </profile>
 <tuning name="a" endpoint_type="speaker" output_channels="2">
  <device_id id="default_internal_speaker" endpoint_port="internal_speaker"/>
  <device_id id="default_bluetooth" endpoint_port="bluetooth"/>
  <data>
   <output-mode>
    <matrix>
     <row v="5,6"/>
    </matrix>
   </output-mode>
  </data>
 </tuning>
)";

constexpr char kEnd[] = "</d>\n";

/** Profiles with 20 graphic-equalizer bands, with more and with fewer. */
std::string surroundDocument() {
    return std::string(kBegin) + kSurround + geqPreset(1, 20) + geqPreset(2, 21) +
           geqPreset(0, 19) + kEnd;
}

std::string stereoDocument() {
    return std::string(kBegin) + kStereo + geqPreset(1, 2) + kEnd;
}

std::string documentWithoutTunings() {
    return std::string(kBegin) + geqPreset(0, 20) + kEnd;
}

template <typename Map>
bool haveSameKeys(const Map& left, const Map& right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](const auto& one, const auto& other) { return one.first == other.first; });
}

/** The process's store and a plain one with the same state. */
class Stores {
  public:
    Stores() {
        mDocument.write(surroundDocument());
        mOtherDocuments[0].write(stereoDocument());
        mOtherDocuments[1].write(documentWithoutTunings());
        require(loadPlainly(mDocument, mLoaded));
        for (int32_t profile = -1; profile < 8; ++profile) {
            mLoaded.gains[profile] = {1, 2, 3};
        }
        mLoaded.messages.clear();
    }

    PlainStore plain;

    SpatializerParamArray& array() { return SpatializerParamArray::getInstance(); }

    /** Resets both to the state after loading the first document. */
    void restore() {
        if (!restoreInPlace()) {
            freshStore().loadSpatializerXMLFile(mDocument.path());
            for (const auto& [profile, gains] : mLoaded.gains) {
                array().setProfileGeqGains(profile, gains);
            }
        }
        plain = mLoaded;
        takeMessages();
    }

    /** Resets both to the state without a document. */
    void clear() {
        freshStore();
        plain = PlainStore();
        takeMessages();
    }

    /** Loads another document into both, or one that cannot be read. */
    void load(uint8_t number) {
        if (number % 4 > 1) {
            const std::string path = number % 4 == 2 ? "/" : "/proc/self/mem";
            array().loadSpatializerXMLFile(path);
            plain.log(3, "loadSpatializerXMLFile(" + path + ")");
            plain.log(6, "Spatializer Tuning XML parses error!");
            requireSameMessages(plain);
            return;
        }
        const MemoryFile& document = mOtherDocuments[number % 2];
        array().loadSpatializerXMLFile(document.path());
        require(loadPlainly(document, plain));
        requireSameMessages(plain);
    }

  private:
    /** @return false if entries were added, since nothing can remove them */
    bool restoreInPlace() {
        if (plain.profileCount != mLoaded.profileCount ||
            !haveSameKeys(plain.profileLists, mLoaded.profileLists) ||
            !haveSameKeys(plain.tuningLists, mLoaded.tuningLists) ||
            !haveSameKeys(plain.selectedDevices, mLoaded.selectedDevices) ||
            !haveSameKeys(plain.gains, mLoaded.gains)) {
            return false;
        }
        array().setCurrentProfile(mLoaded.currentProfile);
        for (const auto& [profile, list] : mLoaded.profileLists) {
            array().getXMLProfileParams(profile) = list;
        }
        for (const auto& [device, list] : mLoaded.tuningLists) {
            array().getXMLTuningParams(device) = list;
        }
        for (const auto& [port, device] : mLoaded.selectedDevices) {
            array().setSelectedTuningDevice(port, device);
        }
        for (const auto& [profile, gains] : mLoaded.gains) {
            array().setProfileGeqGains(profile, gains);
        }
        return true;
    }

    MemoryFile mDocument;
    MemoryFile mOtherDocuments[2];
    PlainStore mLoaded;
};

/** Runs an operation of the front on both stores and compares. */
void runFrontOperation(uint8_t operation, Input& input, PlainStore& plain) {
    SpatializerParamCache cache;
    RecordingEffect recorder;
    const bool isThere = readAnswer(input, recorder);
    RecordingEffect plainRecorder = recorder;
    IEffectOrm* const effect = isThere ? &recorder : nullptr;
    PlainFront front(plain, isThere ? &plainRecorder : nullptr);
    switch (operation) {
        case 0: {
            const int32_t profile = number(input);
            const bool isOrmelContent = (input.byte() & 1) != 0;
            require(cache.setProfile(profile, effect, isOrmelContent) ==
                    front.setProfile(profile, isOrmelContent));
            break;
        }
        case 1: {
            const int32_t profile = number(input);
            cache.setOrmelContentProfile(profile, effect);
            front.setOrmelContentProfile(profile);
            break;
        }
        case 2:
            require(cache.loadTuning(effect) == front.loadTuning());
            break;
        case 3: {
            const std::string& device = nameOf(input.byte());
            require(cache.loadTuningDevice(device, effect) == front.loadTuningDevice(device));
            break;
        }
        case 4: {
            const int32_t port = number(input);
            const std::string& device = nameOf(input.byte());
            require(cache.setSelectedTuningDevice(port, device, effect) ==
                    front.setSelectedTuningDevice(port, device));
            break;
        }
        case 5: {
            const Words values = gains(input);
            require(cache.setProfileGeqGains(values, effect) == front.setProfileGeqGains(values));
            break;
        }
        default: {
            const Words values = plain.gains[plain.currentProfile];
            require(cache.setProfileGeqGains(cache.getProfileGeqGains(), effect) ==
                    front.setProfileGeqGains(values));
            break;
        }
    }
    require(recorder.calls == plainRecorder.calls);
    requireSameMessages(plain);
}

/** Rarely true. For operations that need a load, now or before the next input. */
bool mayTakeLong(Input& input) {
    return input.byte() % 64 == 1;
}

void runStoreOperation(uint8_t operation, Input& input, Stores& stores) {
    SpatializerParamCache cache;
    SpatializerParamArray& array = stores.array();
    PlainStore& plain = stores.plain;
    switch (operation) {
        case 7: {
            const int32_t port = number(input);
            const std::string names = array.getAvailableTuningDevices(port);
            const auto length = static_cast<size_t>(array.getAvailableTuningDevicesLen(port));
            require(length == (names.empty() ? 0 : names.size() + 1));
            break;
        }
        case 8: {
            const int32_t port = number(input);
            const std::string& device = nameOf(input.byte());
            const auto available = plain.availableDevices.find(device);
            require(array.isValidTuningDevice(port, device) ==
                    (portName(port) != nullptr && available != plain.availableDevices.end() &&
                     available->second == portName(port)));
            require(array.setSelectedTuningDevice(port | 7, device) == -EINVAL);
            if (plain.selectedDevices.count(port) != 0 || mayTakeLong(input)) {
                require(array.getSelectedTuningDevice(port) == plain.selectedDevices[port]);
            }
            break;
        }
        case 9: {
            const int32_t profile = number(input);
            plain.gains[profile] = gains(input);
            array.setProfileGeqGains(profile, plain.gains[profile]);
            break;
        }
        case 10: {
            const int32_t profile = number(input);
            std::vector<char> list(array.getProfileParamsSize(profile) + 1);
            require(array.getProfileParams(profile, list.data()) == 0 && list.back() == 0);
            require(array.getProfileParams(profile, nullptr) == -EINVAL);
            break;
        }
        case 11: {
            const int32_t profile = number(input);
            if (plain.profileLists.count(profile) != 0 || mayTakeLong(input)) {
                edit(input, array.getXMLProfileParams(profile), plain.profileLists[profile]);
            }
            break;
        }
        case 12: {
            const std::string& device = nameOf(input.byte());
            array.getXMLTuningMixMatrix(device);
            if (plain.tuningLists.count(device) != 0 || mayTakeLong(input)) {
                edit(input, array.getXMLTuningParams(device), plain.tuningLists[device]);
            }
            break;
        }
        case 13: {
            const int32_t profile = number(input);
            edit(input, array.getProfileGeqGains(profile), plain.gains[profile]);
            break;
        }
        case 14:
            if (mayTakeLong(input)) {
                stores.load(input.byte());
            }
            break;
        default: {
            require(!cache.isValidPort(-1) && TouchingEffect().reservedEffectOperation() == 0);
            require(cache.isTuningAvailable() == (array.getTuningCount() > 0));
            std::string dump;
            array.dump(dump, number(input));
            require(!dump.empty() && dump.back() == '\n');
            break;
        }
    }
    takeMessages();
}

/** Dumps during loads. The load holds the lock, so the dump has nothing more than that. */
void dumpDuringLoad() {
    static auto& array = SpatializerParamArray::getInstance();
    static auto& text = *new std::string;
    __android_log_set_logger([](const __android_logger_data*, const char* message) {
        if (std::strcmp(message, "Spatializer Tuning XML parses error!") == 0) {
            array.dump(text, 0);
        }
    });
    array.loadSpatializerXMLFile("");
    require(text.find("could not lock") != std::string::npos);
}

constexpr int kMaxOperations = 32;
constexpr uint8_t kFrontOperations = 7;

void runOperation(Input& input, Stores& stores) {
    const uint8_t operation = input.byte() % 16;
    if (operation < kFrontOperations) {
        runFrontOperation(operation, input, stores.plain);
    } else {
        runStoreOperation(operation, input, stores);
    }
}

}  // namespace

}  // namespace ormel::fuzz

extern "C" int LLVMFuzzerInitialize(int* /* argc */, char*** /* argv */) {
    ormel::fuzz::setUp();
    ormel::fuzz::dumpDuringLoad();
    ormel::fuzz::keepMessages();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace ormel::fuzz;
    static auto& stores = *new Stores;
    Input input(data, size);
    if (input.byte() % 64 != 0) {
        stores.restore();
    } else {
        stores.clear();
    }
    for (int operations = 0; operations < kMaxOperations && !input.empty(); ++operations) {
        runOperation(input, stores);
    }
    requireSame(stores.array(), stores.plain);
    return 0;
}
