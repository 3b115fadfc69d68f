#include <ormel/Parameter.h>

#include <array>
#include <string_view>

#include "NeverDestroyed.h"

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
static_assert(VOLUME_MODELER_ENABLE == 105,
              "callers know the first 106 parameters by number: add rows behind them");

constexpr size_t kOwnerCount = static_cast<size_t>(ParameterOwner::TUNING) + 1;

using ParameterSets = std::array<std::set<Parameter>, kOwnerCount>;

ParameterSets buildParameterSets() {
    ParameterSets sets;
    for (size_t i = 0; i < kParameterCount; ++i) {
        auto& owned = sets[static_cast<size_t>(kParameterOwners[i])];
        owned.insert(owned.end(), static_cast<Parameter>(i));
    }
    return sets;
}

template <typename Value>
struct PortRow {
    Port port;
    Value value;
};

constexpr PortRow<Endpoint> kPortEndpoints[] = {
        {PORT_INTERNAL_SPEAKER, ENDPOINT_SPEAKER},
        {PORT_HEADPHONE, ENDPOINT_HEADPHONE},
        {PORT_BLUETOOTH, ENDPOINT_HEADPHONE},
        {PORT_USB, ENDPOINT_HEADPHONE},
        {PORT_HDMI, ENDPOINT_OTHER},
        {PORT_MIRACAST, ENDPOINT_OTHER},
        {PORT_OTHER, ENDPOINT_OTHER},
};

constexpr PortRow<AndroidDevice> kPortDevices[] = {
        {PORT_INTERNAL_SPEAKER, DEVICE_OUT_SPEAKER},
        {PORT_HEADPHONE, DEVICE_OUT_WIRED_HEADPHONE},
        {PORT_BLUETOOTH, DEVICE_OUT_BLUETOOTH_A2DP},
        {PORT_USB, DEVICE_OUT_USB_DEVICE},
};

template <typename Value, size_t kCount>
std::map<std::string, Value> buildPortMap(const PortRow<Value> (&rows)[kCount]) {
    std::map<std::string, Value> map;
    for (const auto& [port, value] : rows) {
        map.emplace(kPortNames[port], value);
    }
    return map;
}

}  // namespace

// The tables below are built on first use, which may be before this file's static initialisation.

const std::set<Parameter>& parametersOf(ParameterOwner owner) {
    static NeverDestroyed<ParameterSets> sets(buildParameterSets());
    return (*sets)[static_cast<size_t>(owner)];
}

std::map<std::string, Endpoint>& portNameToEndpoint() {
    static NeverDestroyed<std::map<std::string, Endpoint>> map(buildPortMap(kPortEndpoints));
    return *map;
}

std::map<std::string, AndroidDevice>& portNameToAndroidDevice() {
    static NeverDestroyed<std::map<std::string, AndroidDevice>> map(buildPortMap(kPortDevices));
    return *map;
}

std::map<std::string, Endpoint>& kPortNameToEndpoint = portNameToEndpoint();
std::map<std::string, AndroidDevice>& kPortNameToAndroidDevice = portNameToAndroidDevice();

}  // namespace ormel
