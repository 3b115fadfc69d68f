#include "Names.h"

#include <algorithm>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "Text.h"

namespace ormel::tools {

namespace {

constexpr std::pair<int32_t, const char*> kDeviceNames[] = {
        {DEVICE_OUT_DEFAULT, "all devices"},
        {DEVICE_OUT_SPEAKER, "speaker"},
        {DEVICE_OUT_WIRED_HEADPHONE, "wired headphone"},
        {DEVICE_OUT_BLUETOOTH_A2DP, "Bluetooth A2DP"},
        {DEVICE_OUT_USB_DEVICE, "USB device"},
};

/** A number that a text is all of, in decimal, or in hex behind 0x. */
std::optional<int32_t> wholeNumber(const std::string& text) {
    const bool isHex = text.compare(0, 2, "0x") == 0;
    return isHex ? integerOf(text.substr(2), 16) : integerOf(text);
}

std::string withoutBlanks(std::string name) {
    std::replace(name.begin(), name.end(), ' ', '_');
    return name;
}

std::string hexText(int32_t number) {
    std::ostringstream text;
    text << "0x" << std::hex << static_cast<uint32_t>(number);
    return text.str();
}

}  // namespace

size_t indexOf(const std::string& name, const std::string& kind,
               const std::vector<std::string>& names, const std::string& others) {
    const auto found = std::find(names.begin(), names.end(), name);
    if (found == names.end()) {
        throw std::runtime_error("unknown " + kind + " '" + name + "'; use one of " +
                                 joined(names, ", ") + others);
    }
    return static_cast<size_t>(found - names.begin());
}

OrmSpatializerProfileId profileOf(const std::string& text) {
    const std::optional<int32_t> number = wholeNumber(text);
    return number ? *number : static_cast<int32_t>(indexOf(text, "profile", profileNames()));
}

Port portOf(const std::string& text) {
    return static_cast<Port>(indexOf(text, "port", {std::begin(kPortNames), std::end(kPortNames)}));
}

int32_t deviceOf(const std::string& text, const std::string& others) {
    const std::optional<int32_t> number = wholeNumber(text);
    return number ? *number
                  : kDeviceNames[indexOf(withoutBlanks(text), "device", deviceNames(), others)]
                            .first;
}

std::optional<KivParameter> paramOf(int32_t code) {
    const auto* const begin = std::begin(kKivParameterCodes);
    const auto* const found = std::find(begin, std::end(kKivParameterCodes), code);
    return found == std::end(kKivParameterCodes) ? std::nullopt
                                                 : std::optional(KivParameter(found - begin));
}

int32_t codeOf(const std::string& letters) {
    const int32_t code = kivCodeOfName(letters);
    if (!paramOf(code).has_value()) {
        throw std::runtime_error("no parameter of the effect has the code '" + letters + "'");
    }
    return code;
}

std::vector<std::string> profileNames() {
    return {std::begin(kProfileNames), std::end(kProfileNames)};
}

std::vector<std::string> deviceNames() {
    std::vector<std::string> names;
    for (const auto& [number, name] : kDeviceNames) {
        names.push_back(withoutBlanks(name));
    }
    return names;
}

std::string profileText(OrmSpatializerProfileId profile) {
    if (profile == ORM_SPATIALIZER_PROFILE_COMMON) {
        return "common";
    }
    const bool named = profile >= 0 && profile < static_cast<int32_t>(std::size(kProfileNames));
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
    const std::optional<KivParameter> param = paramOf(code);
    return param.has_value()
                   ? CodeText{lowered(kKivParameterNames[*param]), kKivParameterMeanings[*param]}
                   : CodeText{hexText(code), "no parameter of the effect"};
}

}  // namespace ormel::tools
