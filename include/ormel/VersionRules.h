// How the format version of a tuning document changes its reading.
#pragma once

#include <ormel/Parameter.h>

#include <cstdint>
#include <string_view>

namespace ormel {

enum class VersionRuleKind : uint8_t {
    /** Objects of the class get the value, whatever the document says. */
    VALUE,
    /** Endpoints get the value that comes before them in their profile; 0 if there is none. */
    PROFILES_VALUE,
    /** `authorized_technologies` only sets the type of virtual bass to the value. */
    SETTINGS_UNREAD,
    /** Ids of intelligent-equalizer presets are names, and includes refer to them by name. */
    IEQ_PRESETS_NAMED,
    /** A profile includes one preset for all of its endpoints; endpoints include none. */
    INCLUDE_IN_PROFILE,
    /** The profile's group is not read: no profile is a mobility profile. */
    GROUP_UNREAD,
};

/** Whether a rule holds for versions that begin with a text, or for those below it. */
enum class VersionBound : uint8_t { BEGINS, BELOW };

struct VersionRule {
    std::string_view version;
    /** The class of the objects that get the value; NONE for rules that change something else. */
    ParameterOwner owner;
    /** Unused, like the value, for kinds without a value. */
    Parameter param;
    int32_t value;
    VersionRuleKind kind;
    VersionBound bound;

    /**
     * Compares bytes, as far as the rule's text goes: "3.10.0" is below "3.4.", and an absent
     * version is below everything.
     */
    constexpr bool holdsFor(std::string_view formatVersion) const {
        const int order = formatVersion.compare(0, version.size(), version);
        return bound == VersionBound::BEGINS ? order == 0 : order < 0;
    }
};

/** All rules. Those for one class of objects are in the order in which they are applied. */
inline constexpr VersionRule kVersionRules[] = {
#define ORMEL_VERSION_RULE(bound, version, owner, kind, param, value, sentence) \
    {version, ParameterOwner::owner, param, value, VersionRuleKind::kind, VersionBound::bound},
#include <ormel/VersionRules.inc>
};

/** The rule of a kind that holds for a format version; null if none does. */
constexpr const VersionRule* findVersionRule(std::string_view formatVersion, VersionRuleKind kind) {
    for (const VersionRule& rule : kVersionRules) {
        if (rule.kind == kind && rule.holdsFor(formatVersion)) {
            return &rule;
        }
    }
    return nullptr;
}

/** The rule that sets a parameter of a class of objects; null if none does. */
constexpr const VersionRule* findVersionRule(std::string_view formatVersion, ParameterOwner owner,
                                             Parameter param) {
    for (const VersionRule& rule : kVersionRules) {
        if (rule.owner == owner && rule.param == param && owner != ParameterOwner::NONE &&
            rule.holdsFor(formatVersion)) {
            return &rule;
        }
    }
    return nullptr;
}

}  // namespace ormel
