#include "VersionRules.h"

#include <ormel/TuningFileParser.h>
#include <ormel/ValueSetter.h>

#include <array>
#include <memory>

namespace ormel::tools {

namespace {

/** Values that no rule is likely to set. */
constexpr int kOfProfile = 1234567;
constexpr int kOfEndpoint = 2345678;
constexpr int kOfTuning = 3456789;
/** A preset whose name does not read as its number. */
constexpr size_t kProbePreset = kIeqPresetCount - 1;

std::string escaped(const std::string& text) {
    std::string reference;
    for (const char character : text) {
        const bool isPlain = character != '"' && character != '&' && character != '<' &&
                             static_cast<unsigned char>(character) >= ' ';
        reference += isPlain ? std::string(1, character)
                             : "&#" + std::to_string(static_cast<unsigned char>(character)) + ";";
    }
    return reference;
}

/** The reader joins the three parts with dots, so any two dots will do to part them. */
std::string versionElement(const std::string& version) {
    const size_t first = version.find('.');
    const size_t second = first == std::string::npos ? first : version.find('.', first + 1);
    if (second == std::string::npos) {
        return "";
    }
    return "<format_version major=\"" + escaped(version.substr(0, first)) + "\" minor=\"" +
           escaped(version.substr(first + 1, second - first - 1)) + "\" maintenance=\"" +
           escaped(version.substr(second + 1)) + "\"/>\n";
}

/** An element for every parameter that is a number or a row of them. */
std::string valueElements(int value) {
    std::string elements;
    for (ValueSetter* const setter : SetterCollection::kAllValueSetters) {
        if (dynamic_cast<const SimpleValueSetter*>(setter) != nullptr ||
            dynamic_cast<const RowDataValueSetter*>(setter) != nullptr) {
            elements +=
                    "<" + setter->getNodeName() + " value=\"" + std::to_string(value) + "\"/>\n";
        }
    }
    return elements;
}

/** Both kinds of include stand where they are looked for, so that the reader has no complaint. */
std::string probeDocument(const std::string& version) {
    const std::string include = "<include preset=\"off\" ieq_preset=\"0\"/>\n";
    return "<probe>\n" + versionElement(version) + "<preset id=\"" + kIeqPresetNames[kProbePreset] +
           "\" type=\"ieq\">\n</preset>\n" + "<profile id=\"0\">\n<tool_version/>\n" + include +
           valueElements(kOfProfile) + "<endpoint_type id=\"speaker\">\n" + include +
           valueElements(kOfEndpoint) + "</endpoint_type>\n</profile>\n" +
           "<tuning name=\"probe\">\n<data>\n" + valueElements(kOfTuning) +
           "</data>\n</tuning>\n</probe>\n";
}

template <typename Objects>
VersionRules::Fixed fixedValues(const Objects& objects, int given, std::set<Parameter>* inherited) {
    VersionRules::Fixed fixed;
    for (ValueSetter* const setter : SetterCollection::kAllValueSetters) {
        const Parameter param = setter->getParams().front();
        const auto& values = (*objects.begin())->getValues();
        const auto found = values.find(param);
        if (found == values.end() || found->second.empty() || found->second.front() == given) {
            continue;
        }
        if (inherited != nullptr && found->second.front() == kOfProfile) {
            inherited->insert(param);
        } else {
            fixed[param] = found->second;
        }
    }
    return fixed;
}

VersionRules probe(const std::string& version) {
    VersionRules rules;
    TuningFileParser parser;
    if (parser.setTuningFile(probeDocument(version), true) != 0) {
        return rules;
    }
    const DeviceData& document = *parser.getDeviceData();
    rules.profile = fixedValues(document.getProfiles(), kOfProfile, nullptr);
    rules.endpoint = fixedValues(document.getProfileEndpoints(), kOfEndpoint, &rules.fromProfile);
    rules.tuning = fixedValues(document.getTunings(), kOfTuning, nullptr);
    rules.presetsAreNamed =
            (*document.getIeqPresets().begin())->getPresetId() == static_cast<int>(kProbePreset);
    return rules;
}

}  // namespace

const VersionRules::Fixed& VersionRules::fixedIn(ReadAs section) const {
    static const auto& none = *new Fixed;
    switch (section) {
        case ReadAs::PROFILE:
            return profile;
        case ReadAs::ENDPOINT:
            return endpoint;
        case ReadAs::TUNING:
            return tuning;
        default:
            return none;
    }
}

const VersionRules& VersionRules::of(const std::string& formatVersion) {
    static auto& known = *new std::map<std::string, VersionRules>;
    const auto found = known.find(formatVersion);
    return found != known.end() ? found->second
                                : known.emplace(formatVersion, probe(formatVersion)).first->second;
}

}  // namespace ormel::tools
