// Tuning documents: loaded twice, they must become the same, and refused, they must change nothing.
#include <ormel/SpatializerParamCache.h>
#include <ormel/TuningFileParser.h>

#include <algorithm>
#include <vector>

#include "Fuzz.h"

namespace ormel::fuzz {

namespace {

/** All that a load can change, but for the lists of unknown profiles. */
struct State {
    std::vector<std::vector<int32_t>> lists;
    std::string devices;
    int32_t counts[3];

    bool operator==(const State& other) const {
        return lists == other.lists && devices == other.devices && counts[0] == other.counts[0] &&
               counts[1] == other.counts[1] && counts[2] == other.counts[2];
    }
};

State stateOf(SpatializerParamArray& array) {
    State state;
    for (int profile = -1; profile < 5; ++profile) {
        state.lists.push_back(array.isXMLProfileValid(profile) ? array.getXMLProfileParams(profile)
                                                               : std::vector<int32_t>{});
        state.lists.push_back(array.getProfileGeqGains(profile));
    }
    for (int port = 0; port < static_cast<int>(kPortCount); ++port) {
        const std::string names = array.getAvailableTuningDevices(port);
        state.devices += names + '\n';
        for (size_t at = 0; at < names.size();) {
            const size_t end = std::min(names.find(' ', at), names.size());
            const std::string device = names.substr(at, end - at);
            if (array.isXMLTuningValid(device)) {
                state.lists.push_back(array.getXMLTuningParams(device));
                state.lists.push_back(array.getXMLTuningMixMatrix(device));
            }
            at = end + 1;
        }
    }
    state.counts[0] = array.getTuningProfileCount();
    state.counts[1] = array.getTuningCount();
    state.counts[2] = array.getOutputChannelCount();
    return state;
}

template <typename Objects>
void compareAll(const Objects& objects) {
    for (const auto* const object : objects) {
        require(object->equals(*object) &&
                object->equals(**objects.begin()) == (*objects.begin())->equals(*object));
    }
}

template <typename Objects>
size_t dumpAll(const Objects& objects) {
    size_t length = 0;
    for (auto* const object : objects) {
        object->setDirty(object->isDirty() && object->getId() != -1);
        length += object->toString().size();
    }
    return length;
}

/** Sets what can be set of the objects to what it is already. */
void setAll(DeviceData& data) {
    for (IeqPreset* const preset : data.getIeqPresets()) {
        preset->setName(preset->getName());
    }
    for (Profile* const profile : data.getProfiles()) {
        profile->setName(profile->getName());
        profile->setSelectedGeqPreset(profile->getSelectedGeqPreset());
    }
    for (Tuning* const tuning : data.getTunings()) {
        const Endpoint endpoint = tuning->getEndpoint();
        tuning->setEndpoint(endpointName(endpoint));
        require(tuning->getEndpoint() == endpoint);
    }
}

/** Moves a cursor as no reader would, a move for every byte, and reads wherever it comes to. */
void walk(const std::string& moves, const std::string& text) {
    TagIterator cursor;
    cursor.init(text, true);
    for (const char move : moves) {
        switch (static_cast<uint8_t>(move) % 8) {
            case 0:
                cursor.childrenNext();
                break;
            case 1:
                cursor.pushNode();
                break;
            case 2:
                cursor.popNode();
                break;
            default:
                require(!cursor.isNextValid() || cursor.isCurValid());
                cursor.next();
                break;
        }
        std::vector<std::string> texts;
        std::vector<int> numbers;
        cursor.parseNodeAll(texts);
        cursor.parseNodeIntVector(numbers);
        require(cursor.getAttrsName().size() == texts.size() && numbers.size() == texts.size());
        require(cursor.isElementNode() || texts.empty());
        require(cursor.isCurValid() || cursor.getNodeName().empty());
    }
}

/** Reads the document from memory, as other callers of the parser do, and looks at all of it. */
void inspect(const std::string& text) {
    TuningFileParser parser;
    const int status = parser.setTuningFile(text, true);
    DeviceData* const data = parser.getDeviceData();
    require((status == 0) == (data != nullptr) && (status == 0) == parser.isParsed());
    if (data == nullptr) {
        return;
    }
    require(static_cast<size_t>(parser.getNumOfProfiles()) == data->getProfiles().size());
    compareAll(data->getGeqPresets());
    compareAll(data->getProfiles());
    compareAll(data->getProfileEndpoints());
    data->setSignature(data->getFormatVersion() + data->getToolVersion() + data->getDeviceName());
    data->validateData();
    setAll(*data);
    const size_t length = dumpAll(data->getIeqPresets()) + dumpAll(data->getGeqPresets()) +
                          dumpAll(data->getProfiles()) + dumpAll(data->getProfileEndpoints()) +
                          dumpAll(data->getTunings()) + dumpAll(data->getDeviceTunings());
    require(length > 0 || data->getProfiles().empty());
}

/** Bytes of a walk. */
constexpr size_t kMoves = 32;

bool gRefused = false;

/** Whether the store took the document. */
bool loadsInto(SpatializerParamArray& array, const std::string& path) {
    gRefused = false;
    array.loadSpatializerXMLFile(path);
    return !gRefused;
}

void runFront(SpatializerParamArray& array, TouchingEffect& effect) {
    SpatializerParamCache cache;
    for (int profile = -1; profile < 5; ++profile) {
        cache.setProfile(profile, &effect, (profile & 1) != 0);
        cache.setProfileGeqGains(std::vector<int32_t>(25, profile), &effect);
    }
    cache.loadTuning(&effect);
    for (const Port port : kSupportedPorts) {
        const std::string names = array.getAvailableTuningDevices(port);
        cache.setSelectedTuningDevice(port, names.substr(0, names.find(' ')), &effect);
    }
}

}  // namespace

}  // namespace ormel::fuzz

extern "C" int LLVMFuzzerInitialize(int* /* argc */, char*** /* argv */) {
    ormel::fuzz::setUp();
    __android_log_set_logger([](const __android_logger_data*, const char* message) {
        if (std::strcmp(message, "Spatializer Tuning XML parses error!") == 0) {
            ormel::fuzz::gRefused = true;
        }
    });
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace ormel::fuzz;
    static MemoryFile& file = *new MemoryFile;
    Input input(data, size);
    TouchingEffect effect;
    const uint8_t settings = input.byte();
    effect.readStatus = (settings & 1) != 0 ? -1 : 0;
    effect.answersCount = (settings & 2) != 0;
    effect.answerCount = settings;
    const std::string moves = (settings & 8) != 0 ? input.bytes(kMoves) : "";
    const std::string text = input.rest();
    file.write(text);
    if (!moves.empty()) {
        walk(moves, text);
    }
    if ((settings & 4) != 0) {
        inspect(text);
    }

    // Taking the state leaves empty gains behind, so each store serves for one.
    static const State& unloaded = *new State(stateOf(freshStore()));
    const bool loads = loadsInto(freshStore(), file.path());
    auto& array = ormel::SpatializerParamArray::getInstance();
    const State loaded = stateOf(array);
    require(loads || loaded == unloaded);

    // A different heap must not show in the lists.
    const std::vector<char> displaced(size * 7 % 4096);
    require(loadsInto(freshStore(), file.path()) == loads);
    require(stateOf(array) == loaded);
    runFront(array, effect);
    return 0;
}
