#include <ormel/Parameter.h>

#include <array>
#include <string_view>

namespace ormel {

namespace {

constexpr bool isUpperCaseOf(std::string_view enumerator, std::string_view name) {
    if (enumerator.size() != name.size()) {
        return false;
    }
    for (size_t i = 0; i < name.size(); ++i) {
        const bool letter = name[i] >= 'a' && name[i] <= 'z';
        const char upper = letter ? static_cast<char>(name[i] - 'a' + 'A') : name[i];
        if (enumerator[i] != upper) {
            return false;
        }
    }
    return true;
}

#define ORMEL_PARAMETER(enumerator, name, owner) \
    static_assert(isUpperCaseOf(#enumerator, name), "a row names two parameters");
#include <ormel/Parameters.inc>
static_assert(kParameterCount == 106 && VOLUME_MODELER_ENABLE == 105);

constexpr size_t kOwnerCount = static_cast<size_t>(ParameterOwner::TUNING) + 1;
using ParameterSets = std::array<std::set<Parameter>, kOwnerCount>;

ParameterSets* buildParameterSets() {
    auto* const sets = new ParameterSets;
    for (size_t i = 0; i < kParameterCount; ++i) {
        auto& owned = (*sets)[static_cast<size_t>(kParameterOwners[i])];
        owned.insert(owned.end(), static_cast<Parameter>(i));
    }
    return sets;
}

}  // namespace

// The tables below are made on first use and never destroyed, so that they serve code that runs
// before this file's static initialisation and after its end.

const std::set<Parameter>& parametersOf(ParameterOwner owner) {
    static const ParameterSets& sets = *buildParameterSets();
    return sets[static_cast<size_t>(owner)];
}

std::map<std::string, Endpoint>& portNameToEndpoint() {
    static auto& map = *new std::map<std::string, Endpoint>{
            {kPortNames[PORT_INTERNAL_SPEAKER], ENDPOINT_SPEAKER},
            {kPortNames[PORT_HEADPHONE], ENDPOINT_HEADPHONE},
            {kPortNames[PORT_BLUETOOTH], ENDPOINT_HEADPHONE},
            {kPortNames[PORT_USB], ENDPOINT_HEADPHONE},
            {kPortNames[PORT_HDMI], ENDPOINT_OTHER},
            {kPortNames[PORT_MIRACAST], ENDPOINT_OTHER},
            {kPortNames[PORT_OTHER], ENDPOINT_OTHER},
    };
    return map;
}

std::map<std::string, AndroidDevice>& portNameToAndroidDevice() {
    static auto& map = *new std::map<std::string, AndroidDevice>{
            {kPortNames[PORT_INTERNAL_SPEAKER], DEVICE_OUT_SPEAKER},
            {kPortNames[PORT_HEADPHONE], DEVICE_OUT_WIRED_HEADPHONE},
            {kPortNames[PORT_BLUETOOTH], DEVICE_OUT_BLUETOOTH_A2DP},
            {kPortNames[PORT_USB], DEVICE_OUT_USB_DEVICE},
    };
    return map;
}

std::map<std::string, Endpoint>& kPortNameToEndpoint = portNameToEndpoint();
std::map<std::string, AndroidDevice>& kPortNameToAndroidDevice = portNameToAndroidDevice();

}  // namespace ormel
