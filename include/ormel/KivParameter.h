// The effect's parameters and their codes on the wire.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>

namespace ormel {

enum KivParameter : int32_t {
#define ORMEL_KIV_PARAMETER(name, meaning) name,
#include <ormel/KivParameters.inc>
};

/** Names by KivParameter value. Not range checked. */
constexpr const char* kKivParameterNames[] = {
#define ORMEL_KIV_PARAMETER(name, meaning) #name,
#include <ormel/KivParameters.inc>
};

constexpr size_t kKivParameterCount = std::size(kKivParameterNames);

/** What this library feeds into each parameter, by KivParameter value. Not range checked. */
constexpr const char* kKivParameterMeanings[kKivParameterCount] = {
#define ORMEL_KIV_PARAMETER(name, meaning) meaning,
#include <ormel/KivParameters.inc>
};

/**
 * Code of a parameter name: its letters in lower case, the first in the least significant byte. 0
 * for an empty name or one of more than four characters.
 */
constexpr int32_t kivCodeOfName(std::string_view name) {
    if (name.size() > 4) {
        return 0;
    }
    uint32_t code = 0;
    for (size_t i = 0; i < name.size(); ++i) {
        const bool upper = name[i] >= 'A' && name[i] <= 'Z';
        const char lower = upper ? static_cast<char>(name[i] - 'A' + 'a') : name[i];
        code |= static_cast<uint32_t>(static_cast<unsigned char>(lower)) << (8 * i);
    }
    return static_cast<int32_t>(code);
}

/** Codes by KivParameter value. Not range checked. */
constexpr int32_t kKivParameterCodes[kKivParameterCount] = {
#define ORMEL_KIV_PARAMETER(name, meaning) kivCodeOfName(#name),
#include <ormel/KivParameters.inc>
};

/** Code of a parameter; 0 if out of range. */
constexpr int32_t kivCode(KivParameter param) {
    const bool known = param >= 0 && param < static_cast<int32_t>(kKivParameterCount);
    return known ? kKivParameterCodes[param] : 0;
}

}  // namespace ormel
