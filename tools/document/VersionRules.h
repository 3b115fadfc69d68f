// What a format version makes of values, whatever the document says.
#pragma once

#include <ormel/Parameter.h>

#include <map>
#include <set>
#include <string>
#include <vector>

#include "ReadTrace.h"

namespace ormel::tools {

/**
 * The rules of one format version, found out by having the library read a document of it that gives
 * every value: what comes out otherwise is a rule's.
 */
struct VersionRules {
    /** By parameter what the rule puts in the place of an object's value. */
    using Fixed = std::map<Parameter, std::vector<int>>;

    Fixed profile;
    Fixed endpoint;
    Fixed tuning;
    /** The parameters that endpoints get from their profile and not from themselves. */
    std::set<Parameter> fromProfile;
    /** Whether intelligent-equalizer presets go by name, not by number. */
    bool presetsAreNamed = false;

    /** The rules for the objects of one kind of section. */
    const Fixed& fixedIn(ReadAs section) const;

    /** The rules of a version, remembered from call to call. Not while a document is being read. */
    static const VersionRules& of(const std::string& formatVersion);
};

}  // namespace ormel::tools
