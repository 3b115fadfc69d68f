// What the format version of a tuning document changes in its reading.
#pragma once

#include <ormel/Parameter.h>

#include <cstdint>
#include <string_view>

namespace ormel {

enum class VersionRuleKind : uint8_t {
    /** Objects of the class get the value, whatever the document says. */
    VALUE,
    /** Endpoints get the value that their profile gives ahead of them, 0 without one. */
    PROFILES_VALUE,
    /** The settings are not read: the virtual bass process has the value in their place. */
    SETTINGS_UNREAD,
    /** Intelligent-equalizer presets have names for ids, which includes name them by. */
    IEQ_PRESETS_NAMED,
    /** Profiles include a preset for all of their endpoints, which include none. */
    INCLUDE_IN_PROFILE,
    /** Whether a profile is a mobility profile is not read. */
    GROUP_UNREAD,
};

/** Whether a rule is for the versions that begin with a text, or for those below it. */
enum class VersionBound : uint8_t { BEGINS, BELOW };

struct VersionRule {
    std::string_view version;
    /** The class of the objects that get the value; NONE for rules that change something else. */
    ParameterOwner owner;
    /** Of no meaning where the kind knows no value, as is the value. */
    Parameter param;
    int32_t value;
    VersionRuleKind kind;
    VersionBound bound;

    /**
     * Versions are compared as bytes, as far as the rule's text goes: "3.10.0" is below "3.4.", and
     * an absent version is below everything.
     */
    constexpr bool holdsFor(std::string_view formatVersion) const {
        const int order = formatVersion.compare(0, version.size(), version);
        return bound == VersionBound::BEGINS ? order == 0 : order < 0;
    }
};

/** All rules, those for one class of objects in the order in which they are applied. */
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

/** The rule that gives objects of a class a parameter; null if none does. */
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
