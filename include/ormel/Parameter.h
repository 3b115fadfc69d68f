// The vocabulary of a tuning: its parameters, output endpoints, ports and Android output devices.
//
// The library's public sets and maps, here and in the headers of setters, translators and tuning
// objects, are filled when the library is loaded and never destroyed, so that other libraries'
// static objects can use them in their destructors. Each time a process loads and unloads the
// library, this leaks at most 20 kB of heap.
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

enum Parameter : int32_t {
#define ORMEL_PARAMETER(enumerator, name, owner) enumerator,
#include <ormel/Parameters.inc>
};

/**
 * Text names by Parameter value, in snake case. Not range checked. Documents use other names for
 * their elements: those of the value setters (ValueSetter.h).
 */
constexpr const char* kParameterNames[] = {
#define ORMEL_PARAMETER(enumerator, name, owner) name,
#include <ormel/Parameters.inc>
};

constexpr size_t kParameterCount = std::size(kParameterNames);

/** Text name of a parameter; "" if out of range. */
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

/** The accepting class, by Parameter value. */
constexpr ParameterOwner kParameterOwners[kParameterCount] = {
#define ORMEL_PARAMETER(enumerator, name, owner) ParameterOwner::owner,
#include <ormel/Parameters.inc>
};

/** The parameters that a class accepts; for NONE, those that no class accepts. */
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

/** Text name of an endpoint; "" if out of range. */
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
    /** All output devices. */
    DEVICE_OUT_DEFAULT = 0x40000000,
};

/** The devices of a headphone endpoint, in ascending order. */
inline constexpr std::array kHeadphoneDevices = {DEVICE_OUT_WIRED_HEADPHONE,
                                                 DEVICE_OUT_BLUETOOTH_A2DP, DEVICE_OUT_USB_DEVICE};

/** The orientation that the effect gets for speaker and headphone endpoints. */
constexpr int kSpeakerOrientation = 1;
constexpr int kHeadphoneOrientation = 2;

constexpr size_t kIeqPresetCount = 4;

/** Intelligent-equalizer preset names by preset id. Not range checked. */
constexpr const char* kIeqPresetNames[kIeqPresetCount] = {"off", "detailed", "balanced", "warm"};

/**
 * Endpoint by port name; every port has one.
 *
 * The document load inserts: it adds a port name that is missing from this map or the next with the
 * value 0. Loads serialise their own access. Nobody else may write to the maps, or read them during
 * a load.
 */
extern std::map<std::string, Endpoint>& kPortNameToEndpoint;

/** Android device by port name; "hdmi", "miracast" and "other" have none. */
extern std::map<std::string, AndroidDevice>& kPortNameToAndroidDevice;

/** The same maps, for code that may run before this library's static initialisation. */
std::map<std::string, Endpoint>& portNameToEndpoint();
std::map<std::string, AndroidDevice>& portNameToAndroidDevice();

}  // namespace ormel
