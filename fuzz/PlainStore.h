// A store's state in plain maps. The fuzz targets compute the expected state step by step, and
// compare the library's store with it.
#pragma once

#include <ormel/SpatializerParamArray.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "Fuzz.h"
#include "PlainList.h"

namespace ormel::fuzz {

struct PlainStore {
    int32_t currentProfile = 1;
    std::map<int32_t, Words> profileLists;
    int32_t profileCount = 0;
    std::map<std::string, Words> tuningLists;
    std::map<std::string, Words> mixMatrices;
    int32_t tuningCount = 0;
    int32_t outputChannels = 2;
    /** Port name by tuning device. */
    std::map<std::string, std::string> availableDevices;
    std::map<int32_t, std::string> selectedDevices = {{0, "default_internal_speaker"},
                                                      {3, "default_headphone"},
                                                      {4, "default_bluetooth"},
                                                      {5, "default_usb"}};
    std::map<int32_t, Words> gains;

    /** The expected messages, each after the digit of its priority. */
    std::vector<std::string> messages;

    void log(int priority, const std::string& text) {
        messages.push_back(std::to_string(priority) + text.substr(0, kMaxMessage));
    }

    /** Logs the start of a message; any text may follow. */
    void logBeginning(int priority, const std::string& text) {
        log(priority, text);
        messages.back() += kAnyRest;
    }

    /** Android's log truncates longer messages. */
    static constexpr size_t kMaxMessage = 1023;
    /** Matches any text at the end of a message. Not an XML character, so no name has it. */
    static constexpr char kAnyRest = '\x01';
};

inline bool messageMatches(const std::string& actual, const std::string& expected) {
    if (!expected.empty() && expected.back() == PlainStore::kAnyRest) {
        return actual.compare(0, expected.size() - 1, expected, 0, expected.size() - 1) == 0;
    }
    return actual == expected;
}

inline void print(const char* title, const std::vector<std::string>& messages) {
    for (const std::string& message : messages) {
        static_cast<void>(std::fprintf(stderr, "%s: %s\n", title, message.c_str()));
    }
}

/** Compares the actual with the expected messages, and clears both. */
inline void requireSameMessages(PlainStore& plain) {
    const std::vector<std::string> actual = takeMessages();
    const bool isSame = std::equal(actual.begin(), actual.end(), plain.messages.begin(),
                                   plain.messages.end(), messageMatches);
    if (!isSame) {
        print("actual", actual);
        print("expected", plain.messages);
    }
    require(isSame);
    plain.messages.clear();
}

/** The tuning devices of a port, in ascending order. */
inline std::vector<std::string> devicesOn(const PlainStore& plain, const std::string& port) {
    std::vector<std::string> devices;
    for (const auto& [device, devicePort] : plain.availableDevices) {
        if (devicePort == port) {
            devices.push_back(device);
        }
    }
    return devices;
}

inline void requireSameDevices(SpatializerParamArray& array, const PlainStore& plain,
                               int32_t port) {
    std::string names;
    for (const std::string& device : devicesOn(plain, kPortNames[port])) {
        names += device + ' ';
    }
    require(array.getAvailableTuningDevicesLen(port) == static_cast<int>(names.size()));
    if (!names.empty()) {
        names.pop_back();
    }
    require(array.getAvailableTuningDevices(port) == names);
    for (const auto& [device, devicePort] : plain.availableDevices) {
        require(array.isValidTuningDevice(port, device) == (devicePort == kPortNames[port]));
    }
}

/** Changes nothing, except that @p array gets an empty list for gains that only @p plain has. */
inline void requireSame(SpatializerParamArray& array, const PlainStore& plain) {
    require(array.getCurrentProfile() == plain.currentProfile);
    require(array.getTuningProfileCount() == plain.profileCount);
    require(array.getTuningCount() == plain.tuningCount);
    require(array.getOutputChannelCount() == plain.outputChannels);
    for (int32_t profile = -2; profile < 10; ++profile) {
        require(array.isXMLProfileValid(profile) == (plain.profileLists.count(profile) != 0));
    }
    for (const auto& [profile, list] : plain.profileLists) {
        require(array.isXMLProfileValid(profile) && array.getXMLProfileParams(profile) == list);
    }
    for (const auto& [profile, gains] : plain.gains) {
        require(array.getProfileGeqGains(profile) == gains);
    }
    for (const auto& [device, list] : plain.tuningLists) {
        require(array.isXMLTuningValid(device) && array.getXMLTuningParams(device) == list);
        const auto matrix = plain.mixMatrices.find(device);
        require(array.getXMLTuningMixMatrix(device) ==
                (matrix == plain.mixMatrices.end() ? Words{} : matrix->second));
    }
    for (int32_t port = 0; port < static_cast<int32_t>(kPortCount); ++port) {
        requireSameDevices(array, plain, port);
    }
    for (const auto& [port, device] : plain.selectedDevices) {
        require(array.getSelectedTuningDevice(port) == device);
    }
    takeMessages();
}

}  // namespace ormel::fuzz
