// Sequences of front operations against effects that answer anything.
#include <ormel/SpatializerParamCache.h>

#include <vector>

#include "Fuzz.h"

namespace ormel::fuzz {

namespace {

/** Names that documents have, and some that they lack. */
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

/** Small ports and profiles, which exist, most of the time. */
int32_t number(Input& input) {
    const uint8_t small = input.byte();
    return small == 0xff ? input.word() : small % 9 - 1;
}

void readAnswer(Input& input, TouchingEffect& effect) {
    const uint8_t settings = input.byte();
    effect.readStatus = (settings & 1) != 0 ? -5 : 0;
    effect.answerValue = (settings & 2) != 0 ? input.word() : 0;
    effect.answersCount = (settings & 4) != 0;
    effect.answerCount = (settings & 8) != 0 ? input.word() : input.byte();
}

std::vector<int32_t> gains(Input& input) {
    std::vector<int32_t> values(input.byte());
    for (int32_t& value : values) {
        value = input.byte();
    }
    return values;
}

void runOperation(Input& input, SpatializerParamArray& array) {
    SpatializerParamCache cache;
    TouchingEffect effect;
    const uint8_t operation = input.byte();
    readAnswer(input, effect);
    switch (operation % 14) {
        case 0:
            cache.setProfile(number(input), &effect, (input.byte() & 1) != 0);
            break;
        case 1:
            cache.setOrmelContentProfile(number(input), &effect);
            break;
        case 2:
            cache.loadTuning(&effect);
            break;
        case 3:
            cache.loadTuningDevice(nameOf(input.byte()), &effect);
            break;
        case 4:
            cache.setSelectedTuningDevice(number(input), nameOf(input.byte()), &effect);
            break;
        case 5:
            cache.setProfileGeqGains(gains(input), &effect);
            break;
        case 6:
            cache.setProfileGeqGains(cache.getProfileGeqGains(), &effect);
            break;
        case 7: {
            const int32_t port = number(input);
            const std::string names = array.getAvailableTuningDevices(port);
            const auto length = static_cast<size_t>(array.getAvailableTuningDevicesLen(port));
            require(length == (names.empty() ? 0 : names.size() + 1));
            break;
        }
        case 8:
            array.getSelectedTuningDevice(number(input));
            array.isValidTuningDevice(number(input), nameOf(input.byte()));
            break;
        case 9:
            array.setProfileGeqGains(number(input), gains(input));
            break;
        case 10: {
            const int32_t profile = number(input);
            std::vector<char> list(array.getProfileParamsSize(profile));
            array.getProfileParams(profile, list.data());
            break;
        }
        case 11: {
            // Callers hold references to the lists, and may leave anything in them.
            std::vector<int32_t>& list = array.getXMLProfileParams(number(input));
            if (!list.empty()) {
                list.resize(list.size() - input.byte() % list.size());
                list[input.byte() % list.size()] = input.byte();
            }
            break;
        }
        case 12:
            array.getXMLTuningParams(nameOf(input.byte()));
            array.getXMLTuningMixMatrix(nameOf(input.byte()));
            break;
        default: {
            require(!cache.isValidPort(-1));
            require(cache.isTuningAvailable() == (array.getTuningCount() > 0));
            std::string dump;
            array.dump(dump, number(input));
            require(!dump.empty() && dump.back() == '\n');
            break;
        }
    }
}

constexpr char kSurroundDocument[] = R"(<d>
 <format_version major="3" minor="4" maintenance="0"/>
 <preset id="0" name="off" type="ieq">
  <data>
   <bands>
    <band_ieq frequency="100" target="1"/>
   </bands>
  </data>
 </preset>
 <profile id="1" name="movie">
  <endpoint_type id="speaker">
   <include ieq_preset="0"/>
   <virtualizer-enable value="1"/>
  </endpoint_type>
  <endpoint_type id="headphone">
   <include ieq_preset="0"/>
   <virtualizer-enable value="1"/>
  </endpoint_type>
 </profile>
 <preset id="1" name="movie" type="geq">
  <data>
   <bands>
    <b frequency="1" gain="1"/><b frequency="2" gain="2"/><b frequency="3" gain="3"/>
    <b frequency="4" gain="4"/><b frequency="5" gain="5"/><b frequency="6" gain="6"/>
    <b frequency="7" gain="7"/><b frequency="8" gain="8"/><b frequency="9" gain="9"/>
    <b frequency="10" gain="1"/><b frequency="11" gain="2"/><b frequency="12" gain="3"/>
    <b frequency="13" gain="4"/><b frequency="14" gain="5"/><b frequency="15" gain="6"/>
    <b frequency="16" gain="7"/><b frequency="17" gain="8"/><b frequency="18" gain="9"/>
    <b frequency="19" gain="1"/><b frequency="20" gain="2"/>
   </bands>
  </data>
 </preset>
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
</d>
)";

/**
 * The process's store with the document loaded, as it was before the last input. Loading takes most
 * of the time, so a store serves for many inputs; what stays of them are empty lists of profiles
 * and devices that are unknown.
 */
class LoadedStore {
  public:
    SpatializerParamArray& restore() {
        if (mInputs++ % kInputsPerStore == 0) {
            load();
        }
        auto& array = SpatializerParamArray::getInstance();
        array.getXMLProfileParams(kProfile) = mProfileList;
        array.setCurrentProfile(kProfile);
        for (int profile = -1; profile < 8; ++profile) {
            array.setProfileGeqGains(profile, {1, 2, 3});
        }
        array.setSelectedTuningDevice(PORT_INTERNAL_SPEAKER, nameOf(0));
        return array;
    }

    /** The store is another one now. */
    void forget() { mInputs = 0; }

  private:
    static constexpr int kProfile = 1;
    static constexpr int kInputsPerStore = 4096;

    void load() {
        mDocument.write(kSurroundDocument);
        auto& array = freshStore();
        array.loadSpatializerXMLFile(mDocument.path());
        require(array.getTuningCount() == 5);
        mProfileList = array.getXMLProfileParams(kProfile);
    }

    MemoryFile mDocument;
    std::vector<int32_t> mProfileList;
    int mInputs = 0;
};

}  // namespace

}  // namespace ormel::fuzz

extern "C" int LLVMFuzzerInitialize(int* /* argc */, char*** /* argv */) {
    ormel::fuzz::setUp();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace ormel::fuzz;
    static auto& store = *new LoadedStore;
    Input input(data, size);
    const bool isLoaded = input.byte() % 64 != 0;
    if (!isLoaded) {
        store.forget();
    }
    auto& array = isLoaded ? store.restore() : freshStore();
    for (int operations = 0; operations < 32 && !input.empty(); ++operations) {
        runOperation(input, array);
    }
    return 0;
}
