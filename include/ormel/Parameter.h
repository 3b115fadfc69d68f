// The vocabulary of a tuning: its parameters, output endpoints, ports and Android output devices.
//
// The library's public sets and maps, here and in the headers of setters, translators and tuning
// objects, are filled when the library is loaded and never destroyed, so that static objects of
// other libraries may use them to their end. Unloading the library leaves their nodes behind: at
// most 20 kB of heap each time that a process loads and unloads it.
#pragma once

#include <ormel/Port.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <map>
#include <set>
#include <string>

namespace ormel {

/** A tuning parameter. */
enum Parameter : int32_t {
#define ORMEL_PARAMETER(enumerator, name, owner) enumerator,
#include <ormel/Parameters.inc>
};

/**
 * Text names by Parameter value, in snake case. The names of a document's elements are not these
 * but those of the value setters (ValueSetter.h). Not range checked.
 */
constexpr const char* kParameterNames[] = {
#define ORMEL_PARAMETER(enumerator, name, owner) name,
#include <ormel/Parameters.inc>
};

/** Number of tuning parameters. */
constexpr size_t kParameterCount = std::size(kParameterNames);

/** Text name of a parameter, "" for a number that is none. */
constexpr const char* parameterName(int32_t param) {
    const bool known = param >= 0 && param < static_cast<int32_t>(kParameterCount);
    return known ? kParameterNames[param] : "";
}

/** The class of tuning object that accepts a parameter. */
enum class ParameterOwner : int32_t {
    NONE,
    IEQ_PRESET,
    GEQ_PRESET,
    PROFILE,
    PROFILE_ENDPOINT,
    TUNING
};

/** The accepting class by Parameter value. */
constexpr ParameterOwner kParameterOwners[kParameterCount] = {
#define ORMEL_PARAMETER(enumerator, name, owner) ParameterOwner::owner,
#include <ormel/Parameters.inc>
};

/** The parameters that objects of a class accept; of NONE, those of no class. */
const std::set<Parameter>& parametersOf(ParameterOwner owner);

/** The class of output that a tuning or a profile endpoint is for. */
enum Endpoint : int32_t {
    ENDPOINT_SPEAKER = 0,
    ENDPOINT_HEADPHONE = 1,
    ENDPOINT_OTHER = 2,
};
constexpr size_t kEndpointCount = 3;

/** Text names by Endpoint value. Not range checked. */
constexpr const char* kEndpointNames[kEndpointCount] = {"speaker", "headphone", "other"};

/** Text name of an endpoint, "" for a number that is none. */
constexpr const char* endpointName(int32_t endpoint) {
    const bool known = endpoint >= 0 && endpoint < static_cast<int32_t>(kEndpointCount);
    return known ? kEndpointNames[endpoint] : "";
}

/** Android output device bits (audio_devices_t) that parameters are addressed to. */
enum AndroidDevice : int32_t {
    DEVICE_OUT_SPEAKER = 0x2,
    DEVICE_OUT_WIRED_HEADPHONE = 0x8,
    DEVICE_OUT_BLUETOOTH_A2DP = 0x80,
    DEVICE_OUT_USB_DEVICE = 0x4000,
    /** Stands for every output device. */
    DEVICE_OUT_DEFAULT = 0x40000000,
};

/** The devices that a headphone endpoint is for, in ascending order. */
inline constexpr std::array kHeadphoneDevices = {DEVICE_OUT_WIRED_HEADPHONE,
                                                 DEVICE_OUT_BLUETOOTH_A2DP, DEVICE_OUT_USB_DEVICE};

/** The orientation values that the effect gets with either kind of endpoint. */
constexpr int kSpeakerOrientation = 1;
constexpr int kHeadphoneOrientation = 2;

constexpr size_t kIeqPresetCount = 4;

/** Intelligent-equalizer preset names by preset id. Not range checked. */
constexpr const char* kIeqPresetNames[kIeqPresetCount] = {"off", "detailed", "balanced", "warm"};

/**
 * Endpoint of each port, by port name; every port has one.
 *
 * The document load reads this map and the next with inserting lookups, so a port name that is in
 * neither ends up in both, reading as 0. The load serialises its own access; nobody else may write
 * to them, nor read them while a document is loaded.
 */
extern std::map<std::string, Endpoint>& kPortNameToEndpoint;

/** Android device of each port that takes tunings; "hdmi", "miracast" and "other" have none. */
extern std::map<std::string, AndroidDevice>& kPortNameToAndroidDevice;

/** The maps above, for code that may run before this library's own static initialisation. */
std::map<std::string, Endpoint>& portNameToEndpoint();
std::map<std::string, AndroidDevice>& portNameToAndroidDevice();

}  // namespace ormel
