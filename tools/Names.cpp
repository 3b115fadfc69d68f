#include "Names.h"

#include <ormel/KivParameter.h>

#include <array>
#include <charconv>
#include <cstddef>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace ormel::tools {

namespace {

/** By number. */
constexpr std::array kProfileNames = {"dynamic", "movie", "music", "custom"};
static_assert(ORM_SPATIALIZER_PROFILE_DYNAMIC == 0 && ORM_SPATIALIZER_PROFILE_CUSTOM == 3);

constexpr std::pair<int32_t, const char*> kDeviceNames[] = {
        {DEVICE_OUT_DEFAULT, "all devices"},
        {DEVICE_OUT_SPEAKER, "speaker"},
        {DEVICE_OUT_WIRED_HEADPHONE, "wired headphone"},
        {DEVICE_OUT_BLUETOOTH_A2DP, "Bluetooth A2DP"},
        {DEVICE_OUT_USB_DEVICE, "USB device"},
};

template <typename Names>
int32_t numberOf(const std::string& name, const std::string& kind, const Names& names) {
    std::string known;
    int32_t number = 0;
    for (const char* const candidate : names) {
        if (name == candidate) {
            return number;
        }
        known.append(number++ == 0 ? "" : ", ").append(candidate);
    }
    throw std::runtime_error("unknown " + kind + " '" + name + "'; there are " + known);
}

std::string hexText(int32_t number) {
    std::ostringstream text;
    text << "0x" << std::hex << static_cast<uint32_t>(number);
    return text.str();
}

}  // namespace

OrmSpatializerProfileId profileOf(const std::string& text) {
    OrmSpatializerProfileId number = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    const bool isNumber = error == std::errc() && rest == end;
    return isNumber ? number : numberOf(text, "profile", kProfileNames);
}

Port portOf(const std::string& text) {
    return static_cast<Port>(numberOf(text, "port", kPortNames));
}

std::string profileText(OrmSpatializerProfileId profile) {
    const bool named = profile >= 0 && profile < static_cast<int32_t>(kProfileNames.size());
    return named ? kProfileNames[static_cast<size_t>(profile)] : std::to_string(profile);
}

std::string deviceText(int32_t device) {
    for (const auto& [number, name] : kDeviceNames) {
        if (number == device) {
            return name;
        }
    }
    return hexText(device);
}

CodeText codeText(int32_t code) {
    for (size_t param = 0; param < kKivParameterCount; ++param) {
        if (kivCodeOfName(kKivParameterNames[param]) != code) {
            continue;
        }
        // A code is its letters, the first one in the least significant byte.
        std::string letters;
        for (auto rest = static_cast<uint32_t>(code); rest != 0; rest >>= 8) {
            letters += static_cast<char>(rest & 0xff);
        }
        return {letters, kKivParameterMeanings[param]};
    }
    return {hexText(code), "no parameter of the effect"};
}

}  // namespace ormel::tools
