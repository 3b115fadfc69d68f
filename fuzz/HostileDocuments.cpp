#include "HostileDocuments.h"

#include <algorithm>
#include <utility>

namespace ormel::fuzz {

namespace {

constexpr Part::Kind PROFILE = Part::Kind::PROFILE;
constexpr Part::Kind TUNING = Part::Kind::TUNING;

// If these cannot be allocated, the program may end.
// NOLINTBEGIN(cert-err58-cpp)
const std::string kRoot = "<d>\n";
const std::string kEnd = "</d>";

/** A document whose DTD declares one entity, up to the entity's text. */
const std::string kEntity = "<!DOCTYPE d [<!ENTITY e '";
const std::string kEntityEnd = "'>]><d>\n";

/** A tuning with one device, up to its data; and the end of the tuning and the document. */
const std::string kTuning = "<tuning name='t'>\n<device_id id='d' endpoint_port='usb'/>\n<data>\n";
const std::string kTuningEnd = "</data>\n</tuning>\n</d>";

/** A tuning up to its devices; a numbered device; the end of a tuning with empty data. */
const std::string kDevices = "<d>\n<tuning name='t'>\n";
const std::string kDevice = "<device_id id='@' endpoint_port='usb'/>\n";
const std::string kNoData = "<data>\n</data>\n</tuning>\n";

const std::string kHeadphone = "<endpoint_type id='headphone'>\n";

/** The starts of documents in formats that name presets. */
const std::string k320 = "<d>\n<format_version major='3' minor='2' maintenance='0'/>\n";
const std::string k330 = "<d>\n<format_version major='3' minor='3' maintenance='0'/>\n";

/** Goes before nested references: the parser accepts them only after enough other text. */
const std::string kComment = "<!-- blank -->\n";
// NOLINTEND(cert-err58-cpp)

constexpr size_t kHundred = 100;

std::string times(size_t count, const std::string& text) {
    std::string all;
    for (size_t i = 0; i < count; ++i) {
        all += text;
    }
    return all;
}

std::string withNumber(std::string text, size_t number) {
    const std::string digits = std::to_string(number);
    for (size_t at = 0; (at = text.find('@', at)) != std::string::npos; at += digits.size()) {
        text.replace(at, 1, digits);
    }
    return text;
}

std::string numbered(size_t count, const std::string& text) {
    std::string all;
    for (size_t i = 0; i < count; ++i) {
        all += withNumber(text, i);
    }
    return all;
}

/** Declares entities e0 to e@p last. Each but the first has @p fanout references to the one before.
 */
std::string levels(size_t last, size_t fanout, const std::string& leaf) {
    std::string declarations = "<!ENTITY e0 '" + leaf + "'>";
    for (size_t i = 1; i <= last; ++i) {
        declarations +=
                withNumber("<!ENTITY e@ '", i) + times(fanout, withNumber("&e@;", i - 1)) + "'>";
    }
    return declarations;
}

/** The same for parameter entities p0 to p@p last. */
std::string parameterLevels(size_t last, size_t fanout, const std::string& leaf) {
    std::string declarations = "<!ENTITY % p0 '" + leaf + "'>";
    for (size_t i = 1; i <= last; ++i) {
        declarations += withNumber("<!ENTITY % p@ '", i) +
                        times(fanout, withNumber("&#37;p@;", i - 1)) + "'>";
    }
    return declarations;
}

std::string name(size_t length) {
    return std::string(length, 'n');
}

std::string withoutLastByte(const std::string& text) {
    return text.substr(0, text.size() - 1);
}

// clang-format off

/** Long or nested entities, and other content that a DTD can add. */
std::vector<HostileShape> entityShapes() {
    return {
        {"matrix rows that each name one long entity", {
            {kEntity}, {"1,", 50}, {kEntityEnd + kTuning + "<output-mode>\n<m>\n", 0, TUNING},
            {"<r v='&e;'/>\n", 50}, {"</m>\n</output-mode>\n" + kTuningEnd}}},
        {"preset names of one long entity", {
            {kEntity}, {"n", 50}, {kEntityEnd},
            {"<preset type='ieq' id='@' name='&e;'>\n</preset>\n", 50}, {kEnd}}},
        {"profile names of one long entity", {
            {kEntity}, {"n", 50}, {kEntityEnd},
            {"<profile id='@' name='&e;'>\n</profile>\n", 50, PROFILE}, {kEnd}}},
        {"tuning names of one long entity", {
            {kEntity}, {"n", 50}, {kEntityEnd},
            {"<tuning name='&e;@'>\n" + kDevice + kNoData, 50, TUNING},
            {kEnd}}},
        {"device ids and ports of one long entity", {
            {kEntity}, {"n", 50}, {kEntityEnd + "<tuning name='t'>\n"},
            {"<device_id id='&e;@' endpoint_port='&e;@'/>\n", 50, TUNING},
            {"<data>\n" + kTuningEnd}}},
        {"ports of one long entity", {
            {kEntity}, {"n", 50}, {kEntityEnd + "<tuning name='t'>\n"},
            {"<device_id id='d' endpoint_port='&e;@'/>\n", 50, TUNING}, {"<data>\n" + kTuningEnd}}},
        {"endpoint ids of one long entity", {
            {kEntity}, {"n", 50}, {kEntityEnd + "<profile>\n", 0, PROFILE},
            {"<endpoint_type id='&e;'>\n</endpoint_type>\n", 50}, {"</profile>\n</d>"}}},
        {"device names of one long entity", {
            {kEntity}, {"n", 50}, {kEntityEnd + "<authorized_technologies>\n"},
            {"<global_setting device_name='&e;'/>\n", 50}, {"</authorized_technologies>\n</d>"}}},
        {"versions of one long entity", {
            {kEntity}, {"1", 50}, {kEntityEnd},
            {"<format_version major='&e;' minor='&e;' maintenance='&e;'/>\n", 50}, {kEnd}}},
        {"single values of one long entity", {
            {kEntity}, {"0", 50}, {kEntityEnd + "<profile>\n", 0, PROFILE},
            {"<volmax-boost value='&e;'/>\n", 50}, {"</profile>\n</d>"}}},
        {"bands of one long entity", {
            {kEntity}, {"0", 50}, {kEntityEnd + kTuning + "<audio-optimizer-bands>\n", 0, TUNING},
            {"<b frequency='&e;' gain_left='&e;' gain_right='&e;'/>\n", 50},
            {"</audio-optimizer-bands>\n" + kTuningEnd}}},
        {"equalizer bands of one long entity", {
            {kEntity}, {"1,", 50}, {kEntityEnd + "<preset type='geq'>\n<data>\n<bands>\n"},
            {"<b frequency='&e;' gain='&e;'/>\n", 50}, {"</bands>\n</data>\n</preset>\n</d>"}}},
        {"subgains of one long entity", {
            {kEntity}, {"0", 50}, {kEntityEnd + kTuning, 0, TUNING},
            {"<virtual-bass-subgains" + numbered(100, " a@='&e;'") + "/>\n", 50},
            {kTuningEnd}}},
        {"one row of references to one long entity", {
            {kEntity}, {"1,", 50}, {kEntityEnd + "<profile>\n<drc-metadata row='", 0, PROFILE},
            {"&e;", 50}, {"'/>\n</profile>\n</d>"}}},
        {"one row of references to many entities", {
            {"<!DOCTYPE d [" + numbered(100, "<!ENTITY e@ '1,'>") + "]><d>\n" + kTuning +
             "<bass-mbdrc-tuning row='", 0, TUNING},
            {numbered(100, "&e@;"), 100}, {"'/>\n" + kTuningEnd}}},
        {"an entity bomb in text", {
            {"<!DOCTYPE d [" + levels(10, 10, "ha") + "]><d>\n"}, {"&e10;\n", 100}, {kEnd}}},
        {"an entity bomb in attributes", {
            {"<!DOCTYPE d [" + levels(10, 10, "1,") + "]><d>\n<profile>\n", 0, PROFILE},
            {"<drc-metadata row='&e10;'/>\n", 100}, {"</profile>\n</d>"}}},
        {"a small entity bomb in attributes", {
            {"<!DOCTYPE d [" + levels(3, 10, "1,") + "]><d>\n"}, {kComment, 20},
            {"<profile>\n", 0, PROFILE}, {"<drc-metadata row='&e3;'/>\n", 80},
            {"</profile>\n</d>"}}},
        {"a long chain of entities in attributes", {
            {"<!DOCTYPE d [" + levels(9, 1, "1,") + "]><d>\n"}, {kComment, 20},
            {"<profile>\n", 0, PROFILE}, {"<drc-metadata row='&e9;'/>\n", 80},
            {"</profile>\n</d>"}}},
        {"nested references to an empty entity", {
            {"<!DOCTYPE d [" + levels(3, 30, "") + "]><d>\n"}, {kComment, 20},
            {"<profile>\n", 0, PROFILE}, {"<drc-metadata row='&e3;'/>\n", 80},
            {"</profile>\n</d>"}}},
        {"nested references to an empty entity in one row", {
            {"<!DOCTYPE d [" + levels(3, 30, "") + "]><d>\n"}, {kComment, 20},
            {"<profile>\n<drc-metadata row='", 0, PROFILE}, {"&e3;", 80},
            {"'/>\n</profile>\n</d>"}}},
        {"nested references to an undeclared entity", {
            {"<!DOCTYPE d SYSTEM 'none' [" + levels(2, 30, "&und;") + "]><d>\n"}, {kComment, 20},
            {"<profile>\n", 0, PROFILE}, {"<drc-metadata row='&e2;'/>\n", 80},
            {"</profile>\n</d>"}}},
        {"nested references in names", {
            {"<!DOCTYPE d [" + levels(2, 30, "n") + "]><d>\n"}, {kComment, 20},
            {"<profile id='@' name='&e2;'>\n</profile>\n", 80, PROFILE}, {kEnd}}},
        {"references named profile ahead of many declarations", {
            {"<!DOCTYPE d [<!ENTITY profile ''>"}, {"<!ENTITY a@ ''>", 50}, {"]><d>\n"},
            {"&profile;\n", 50, PROFILE}, {kEnd}}},
        {"references named endpoint_type ahead of many declarations", {
            {"<!DOCTYPE d [<!ENTITY endpoint_type ''>"}, {"<!ELEMENT a@ ANY>", 50},
            {"]><d>\n<profile>\n", 0, PROFILE}, {"&endpoint_type;\n", 50}, {"</profile>\n</d>"}}},
        {"references named as bands ahead of many declarations", {
            {"<!DOCTYPE d [<!ENTITY audio-optimizer-bands ''>"}, {"<!ATTLIST d a@ CDATA ''>", 50},
            {"]><d>\n" + kTuning, 0, TUNING}, {"&audio-optimizer-bands;\n", 50}, {kTuningEnd}}},
        {"undeclared references named profile", {
            {"<!DOCTYPE d SYSTEM 'none'><d>\n"}, {"&profile;\n", 100, PROFILE}, {kEnd}}},
        {"references to an entity of many elements", {
            {kEntity}, {"<profile/>", 50}, {kEntityEnd}, {"&e;\n", 50}, {kEnd}}},
        {"long default attributes", {
            {"<!DOCTYPE d [<!ATTLIST r v CDATA '" + times(500, "1,") + "'>]><d>\n" + kTuning +
             "<output-mode>\n<m>\n", 0, TUNING},
            {"<r/>\n", 100}, {"</m>\n</output-mode>\n" + kTuningEnd}}},
        {"many default attributes", {
            {"<!DOCTYPE d [<!ATTLIST virtual-bass-subgains" + numbered(20, " a@ CDATA '1'") +
             ">]><d>\n" + kTuning, 0, TUNING},
            {"<virtual-bass-subgains/>\n", 100}, {kTuningEnd}}},
        {"default attributes of one long entity", {
            {kEntity}, {"1,", 50}, {"'><!ATTLIST r v CDATA '&e;'>]><d>\n" + kTuning +
                                    "<output-mode>\n<m>\n", 0, TUNING},
            {"<r/>\n", 50}, {"</m>\n</output-mode>\n" + kTuningEnd}}},
        {"references to one long parameter entity", {
            {"<!DOCTYPE d [<!ENTITY % p '"}, {"<!--p-->", 50}, {"'>\n"}, {"%p;\n", 50},
            {"]><d>\n</d>"}}},
        {"references to a parameter entity of comments", {
            {"<!DOCTYPE d [<!ENTITY % p '" + times(5, "<!---->") + "'>\n"}, {"%p;\n", 100},
            {"]><d>\n</d>"}}},
        {"references to a parameter entity of declarations", {
            {"<!DOCTYPE d [<!ENTITY % p '" + times(5, "<!ENTITY e \"1\">") + "'>\n"},
            {"%p;\n", 100}, {"]><d>\n</d>"}}},
        {"many levels of parameter entities", {
            {"<!DOCTYPE d [" + parameterLevels(15, 2, "<!---->")}, {"<!---->", 100},
            {"%p15;]><d>\n</d>"}}},
        {"wide levels of parameter entities", {
            {"<!DOCTYPE d [" + parameterLevels(4, 10, "<!---->")}, {"<!---->", 100},
            {"%p4;]><d>\n</d>"}}},
        // After little other text, libxml2 reports too many references, and never ends.
        {"wide levels of parameter entities ahead of all else", {
            {"<!DOCTYPE d [" + parameterLevels(4, 10, "<!---->") + "%p4;]><d>"}, {"\n", 100},
            {kEnd}}},
        {"references to levels of parameter entities", {
            {"<!DOCTYPE d [" + parameterLevels(2, 10, "")}, {"%p2;\n", 100}, {"]><d>\n</d>"}}},
        {"many comments in a DTD", {{"<!DOCTYPE d ["}, {"<!---->", 100}, {"]><d>\n</d>"}}},
        {"many entities", {
            {"<!DOCTYPE d ["}, {"<!ENTITY e@ '1'>", 50}, {"]><d>\n<profile>\n", 0, PROFILE},
            {"<drc-metadata row='&e0;&e1;'/>\n", 50}, {"</profile>\n</d>"}}},
    };
}

/**
 * Elements without children, for which the reader reads their siblings, and other nodes that it
 * reads like such elements.
 */
std::vector<HostileShape> siblingShapes() {
    return {
        {"nested childless sections around one long number", {
            {kRoot}, {"<tuning/>\n", 10}, {"<audio-optimizer-bands/>\n", 40}, {"<b frequency='"},
            {"0", 50}, {"1'/>\n</d>"}}},
        {"childless sections four deep around one long number", {
            {kRoot}, {"<profile/>\n", 10, PROFILE}, {"<endpoint_type/>\n", 20},
            {"<regulator-tuning/>\n", 20}, {"<b threshold_low='"}, {"0", 50}, {"1'/>\n</d>"}}},
        {"childless matrices around one long row", {
            {kRoot + kTuning, 0, TUNING}, {"<output-mode/>\n", 50}, {"<r v='"}, {"1,", 50},
            {"'/>\n" + kTuningEnd}}},
        {"childless profiles ahead of many endpoints", {
            {kRoot}, {"<profile/>\n", 9, PROFILE}, {"<endpoint_type>\n</endpoint_type>\n", 91},
            {kEnd}}},
        {"childless profiles of many ids ahead of headphone endpoints", {
            {kRoot}, {"<profile id='@'/>\n", 40, PROFILE},
            {kHeadphone + "</endpoint_type>\n", 60}, {kEnd}}},
        {"childless profiles and endpoints", {
            {kRoot}, {"<profile/>\n", 50, PROFILE}, {"<endpoint_type/>\n", 50}, {kEnd}}},
        {"childless endpoints ahead of thousands of empty attributes", {
            {kRoot + "<profile>\n", 0, PROFILE}, {"<endpoint_type/>\n", 5},
            {"<virtual-bass-subgains" + numbered(1000, " a@=''") + "/>\n", 95},
            {"</profile>\n</d>"}}},
        {"childless profiles ahead of thousands of numbers", {
            {kRoot}, {"<profile/>\n", 20, PROFILE},
            {"<drc-metadata row='1,2,3,4,5,6,7,8,9'/>\n", 80}, {kEnd}}},
        {"childless settings ahead of many global settings", {
            {kRoot}, {"<authorized_technologies/>\n", 14},
            {"<global_setting device_index='1'/>\n", 86}, {kEnd}}},
        {"childless settings ahead of one long device name", {
            {kRoot}, {"<authorized_technologies/>\n", 50}, {"<global_setting device_name='"},
            {"n", 50}, {"'/>\n</d>"}}},
        {"childless settings ahead of long attribute names", {
            {kRoot}, {"<authorized_technologies/>\n", 50}, {"<global_setting"},
            {" " + name(10000) + "@=''", 50}, {"/>\n</d>"}}},
        {"childless profiles ahead of one long row", {
            {kRoot}, {"<profile/>\n", 50, PROFILE}, {"<drc-metadata row='"}, {"1,", 50},
            {"'/>\n</d>"}}},
        {"childless profiles of many ids ahead of one long row", {
            {kRoot}, {"<profile id='@'/>\n", 50, PROFILE}, {"<drc-metadata row='"}, {"1,", 50},
            {"'/>\n</d>"}}},
        {"childless profiles ahead of one long value", {
            {kRoot}, {"<profile/>\n", 50, PROFILE}, {"<volmax-boost value='"}, {"0", 50},
            {"1'/>\n</d>"}}},
        {"childless profiles ahead of one long endpoint id", {
            {kRoot}, {"<profile/>\n", 50, PROFILE}, {"<endpoint_type id='"}, {"n", 50},
            {"'/>\n</d>"}}},
        {"childless profiles ahead of long unknown names", {
            {kRoot}, {"<profile/>\n", 40, PROFILE}, {"<" + name(5000) + "@/>\n", 60}, {kEnd}}},
        {"childless profiles ahead of many unknown names", {
            {kRoot}, {"<profile/>\n", 40, PROFILE}, {"<n@/>\n", 60}, {kEnd}}},
        {"childless endpoints around one long row", {
            {kRoot + "<profile id='1'>\n", 0, PROFILE}, {"<endpoint_type/>\n", 50},
            {"<drc-metadata row='"}, {"1,", 50}, {"'/>\n</profile>\n</d>"}}},
        {"childless headphone endpoints around one long row", {
            {kRoot + "<profile id='1'>\n", 0, PROFILE}, {"<endpoint_type id='headphone'/>\n", 50},
            {"<drc-metadata row='"}, {"1,", 50}, {"'/>\n</profile>\n</d>"}}},
        {"childless graphic equalizers ahead of many bands", {
            {kRoot}, {"<preset type='geq' id='@'/>\n", 50}, {"<b frequency='1' gain='1'/>\n", 50},
            {kEnd}}},
        {"childless intelligent equalizers ahead of many bands", {
            {kRoot}, {"<preset type='ieq' id='@'/>\n", 50},
            {"<band_ieq frequency='1' target='1'/>\n", 50}, {kEnd}}},
        {"childless profiles ahead of endpoints of unknown presets", {
            {k330},
            {"<profile/>\n", 20, PROFILE},
            {"<endpoint_type>\n<include preset='none'/>\n</endpoint_type>\n", 80}, {kEnd}}},
        {"profiles of unknown presets", {
            {k320},
            {"<profile/>\n", 100, PROFILE}, {kEnd}}},
        {"processing instructions named profile", {
            {kRoot}, {"<?profile?>\n", 100, PROFILE}, {kEnd}}},
        {"processing instructions named tuning", {{kRoot}, {"<?tuning?>\n", 100}, {kEnd}}},
        {"processing instructions named as bands", {
            {kRoot + "<profile>\n", 0, PROFILE}, {"<?audio-optimizer-bands?>", 50},
            {"<b frequency='1'/>\n", 50}, {"</profile>\n</d>"}}},
        {"processing instructions named as settings", {
            {kRoot}, {"<?authorized_technologies?>", 50},
            {"<global_setting device_name='n'/>\n", 50}, {kEnd}}},
        {"childless profiles ahead of comments", {
            {kRoot}, {"<profile/>", 50, PROFILE}, {"<!---->", 50}, {kEnd}}},
        {"childless bands ahead of comments", {
            {kRoot + kTuning, 0, TUNING}, {"<audio-optimizer-bands/>", 50}, {"<!---->", 50},
            {kTuningEnd}}},
        {"childless elements of every kind", {
            {kRoot},
            {"<authorized_technologies/>\n<profile/>\n<endpoint_type/>\n<preset type='geq'/>\n"
             "<tuning/>\n<output-mode/>\n<audio-optimizer-bands/>\n<regulator-tuning/>\n", 100,
             PROFILE},
            {kEnd}}},
    };
}

/** Values shared by many objects, and repeated elements. */
std::vector<HostileShape> sharingShapes() {
    return {
        {"one long matrix for many devices", {
            {kDevices}, {kDevice, 50, TUNING},
            {"<data>\n<output-mode>\n<m>\n<r v='"}, {"1,", 50},
            {"'/>\n</m>\n</output-mode>\n" + kTuningEnd}}},
        {"one long row for many devices", {
            {kDevices}, {kDevice, 50, TUNING},
            {"<data>\n<bass-mbdrc-tuning row='"}, {"1,", 50}, {"'/>\n" + kTuningEnd}}},
        {"one long tuning name for many devices", {
            {kRoot + "<tuning name='"}, {"n", 50}, {"'>\n"},
            {kDevice, 50, TUNING}, {"<data>\n" + kTuningEnd}}},
        {"one device again and again", {
            {kDevices}, {"<device_id id='d' endpoint_port='usb'/>\n", 60, TUNING},
            {"<data>\n<bass-mbdrc-tuning row='"}, {"1,", 40}, {"'/>\n" + kTuningEnd}}},
        {"one long matrix for many speaker endpoints", {
            {kRoot + "<tuning name='t'>\n<device_id id='default_internal_speaker' "
                     "endpoint_port='internal_speaker'/>\n<data>\n<output-mode>\n<m>\n<r v='", 0,
             TUNING},
            {"1,", 50}, {"'/>\n</m>\n</output-mode>\n</data>\n</tuning>\n"},
            {"<profile id='@'>\n<endpoint_type id='speaker'>\n</endpoint_type>\n</profile>\n", 50,
             PROFILE},
            {kEnd}}},
        {"one long matrix for many endpoints of one profile", {
            {kRoot + "<tuning name='t'>\n<device_id id='default_internal_speaker' "
                     "endpoint_port='internal_speaker'/>\n<data>\n<output-mode>\n<m>\n<r v='", 0,
             TUNING},
            {"1,", 50}, {"'/>\n</m>\n</output-mode>\n</data>\n</tuning>\n"},
            {"<profile id='1'>\n", 0, PROFILE},
            {"<endpoint_type id='speaker'>\n</endpoint_type>\n", 50}, {"</profile>\n</d>"}}},
        {"one long preset for many headphone endpoints", {
            {kRoot + "<preset type='ieq' id='1'>\n<data>\n<bands>\n"},
            {"<band_ieq frequency='1' target='1'/>\n", 50},
            {"</bands>\n</data>\n</preset>\n<profile id='1'>\n", 0, PROFILE},
            {kHeadphone + "<include ieq_preset='1'/>\n</endpoint_type>\n", 50},
            {"</profile>\n</d>"}}},
        {"headphone endpoints of long rows", {
            {kRoot + "<profile id='1'>\n", 0, PROFILE},
            {kHeadphone + "<advanced-headphone-virtualizer-rendering-config row='" +
             times(1000, "1,") + "'/>\n</endpoint_type>\n", 100},
            {"</profile>\n</d>"}}},
        {"many headphone endpoints", {
            {kRoot + "<profile id='1'>\n", 0, PROFILE},
            {kHeadphone + "<volmax-boost value='1'/>\n</endpoint_type>\n", 100},
            {"</profile>\n</d>"}}},
        {"many graphic equalizers of one profile", {
            {kRoot},
            {"<preset type='geq' id='1'>\n<data>\n<bands>\n" +
             times(20, "<b frequency='1' gain='1'/>\n") + "</bands>\n</data>\n</preset>\n", 80},
            {"<profile id='1'>\n</profile>\n", 20, PROFILE}, {kEnd}}},
        {"many intelligent equalizers of one id", {
            {kRoot}, {"<preset type='ieq' id='1' name='n'>\n</preset>\n", 50},
            {"<profile id='1'>\n" + kHeadphone + "<include ieq_preset='1'/>\n"
             "</endpoint_type>\n</profile>\n", 50, PROFILE},
            {kEnd}}},
        {"many profiles of one id with endpoints", {
            {kRoot},
            {"<profile id='1'>\n" + kHeadphone + "</endpoint_type>\n</profile>\n", 100,
             PROFILE},
            {kEnd}}},
        {"many tunings of one name", {
            {kRoot},
            {"<tuning name='t'>\n" + kDevice + kNoData,
             100, TUNING},
            {kEnd}}},
        {"devices of a tuning without data", {
            {kDevices}, {kDevice, 100},
            {"</tuning>\n</d>"}}},
        {"one preset's parameter again and again", {
            {kRoot + "<profile id='1'>\n", 0, PROFILE}, {"<volmax-boost value='1'/>\n", 100},
            {"</profile>\n</d>"}}},
    };
}

/** Very many of one item. */
std::vector<HostileShape> massShapes() {
    return {
        {"many profiles", {{kRoot}, {"<profile id='@'>\n</profile>\n", 100, PROFILE}, {kEnd}}},
        {"many profiles without children", {
            {kRoot}, {"<profile id='@'/>\n", 100, PROFILE}, {kEnd}}},
        {"many tunings", {
            {kRoot},
            {"<tuning name='t@'>\n" + kDevice + kNoData,
             100, TUNING},
            {kEnd}}},
        {"many tunings without children", {{kRoot}, {"<tuning name='t@'/>\n", 100}, {kEnd}}},
        {"many devices", {
            {kDevices}, {kDevice, 100, TUNING},
            {"<data>\n" + kTuningEnd}}},
        {"long device ids", {
            {kDevices},
            {"<device_id id='" + name(1000) + "@' endpoint_port='usb'/>\n", 100, TUNING},
            {"<data>\n" + kTuningEnd}}},
        {"many ports", {
            {kDevices}, {"<device_id id='d' endpoint_port='@'/>\n", 100, TUNING},
            {"<data>\n" + kTuningEnd}}},
        {"long ports", {
            {kDevices},
            {"<device_id id='d' endpoint_port='" + name(1000) + "@'/>\n", 100, TUNING},
            {"<data>\n" + kTuningEnd}}},
        {"long tuning names", {
            {kRoot},
            {"<tuning name='" + name(1000) + "@'>\n" + kDevice + kNoData, 100, TUNING},
            {kEnd}}},
        {"many presets", {
            {kRoot}, {"<preset type='ieq' id='@' name='n'>\n</preset>\n", 50},
            {"<preset type='geq' id='@'>\n</preset>\n", 50}, {kEnd}}},
        {"presets of unknown names", {
            {k320},
            {"<preset type='ieq' id='none'/>\n", 100}, {kEnd}}},
        {"endpoints of unknown presets", {
            {k330 + "<profile>\n", 0, PROFILE},
            {"<endpoint_type>\n<include preset='none'/>\n</endpoint_type>\n", 100},
            {"</profile>\n</d>"}}},
        {"many global settings", {
            {kRoot + "<authorized_technologies>\n"},
            {"<global_setting device_name='' device_index='' tuning_version=''/>\n", 100},
            {"</authorized_technologies>\n</d>"}}},
        {"many versions", {{kRoot}, {"<format_version/>\n", 100}, {kEnd}}},
        {"one long version", {
            {kRoot + "<format_version major='"}, {"3", 100}, {"'/>\n</d>"}}},
        {"intelligent equalizer of many bands", {
            {kRoot + "<preset type='ieq' id='1'>\n<data>\n<bands>\n"},
            {"<band_ieq frequency='1' target='1'/>\n", 100},
            {"</bands>\n</data>\n</preset>\n<profile id='1'>\n" + kHeadphone +
             "<include ieq_preset='1'/>\n</endpoint_type>\n</profile>\n</d>", 0, PROFILE}}},
        {"graphic equalizer of many bands", {
            {kRoot + "<preset type='geq' id='1'>\n<data>\n<bands>\n"},
            {"<band_geq frequency='1' gain='1'/>\n", 100},
            {"</bands>\n</data>\n</preset>\n<profile id='1'>\n</profile>\n</d>", 0, PROFILE}}},
        {"audio optimizer of many bands", {
            {kRoot + kTuning + "<audio-optimizer-bands>\n", 0, TUNING}, {"<b/>", 100},
            {"</audio-optimizer-bands>\n" + kTuningEnd}}},
        {"regulator of many bands", {
            {kRoot + kTuning + "<regulator-tuning>\n", 0, TUNING}, {"<b/>", 100},
            {"</regulator-tuning>\n" + kTuningEnd}}},
        {"matrix of many rows", {
            {kRoot + kTuning + "<output-mode>\n<m>\n", 0, TUNING}, {"<r v='1'/>", 100},
            {"</m>\n</output-mode>\n" + kTuningEnd}}},
        {"one long matrix row", {
            {kRoot + kTuning + "<output-mode>\n<m>\n<r v='", 0, TUNING}, {"1,", 100},
            {"'/>\n</m>\n</output-mode>\n" + kTuningEnd}}},
        {"one long row for headphones", {
            {kRoot + "<profile id='1'>\n" + kHeadphone +
             "<advanced-headphone-virtualizer-rendering-config row='", 0, PROFILE},
            {"1,", 100}, {"'/>\n</endpoint_type>\n</profile>\n</d>"}}},
        {"one long row of signs", {
            {kRoot + kTuning + "<bass-mbdrc-tuning row='", 0, TUNING}, {"1-", 100},
            {"'/>\n" + kTuningEnd}}},
        {"one long row of commas", {
            {kRoot + kTuning + "<bass-mbdrc-tuning row='", 0, TUNING}, {",", 100},
            {"'/>\n" + kTuningEnd}}},
        {"one long number", {
            {kRoot + "<profile>\n<volmax-boost value='", 0, PROFILE}, {"0", 100},
            {"1'/>\n</profile>\n</d>"}}},
        {"many long numbers", {
            {kRoot + "<profile>\n", 0, PROFILE},
            {"<volmax-boost value='" + times(500, "9") + "'/>\n", 100}, {"</profile>\n</d>"}}},
        {"many subgains", {
            {kRoot + kTuning, 0, TUNING},
            {"<virtual-bass-subgains" + numbered(1000, " a@=''") + "/>\n", 100}, {kTuningEnd}}},
        {"all attributes of one profile", {
            {kRoot + "<profile id='1'", 0, PROFILE}, {" a@=''", 100}, {">\n</profile>\n</d>"}}},
        {"thousands of attributes of a global setting", {
            {kRoot + "<authorized_technologies>\n"},
            {"<global_setting" + numbered(1000, " a@=''") + "/>\n", 100},
            {"</authorized_technologies>\n</d>"}}},
        {"one long device name under many prefixes", {
            {"<d"}, {" xmlns:p@='p@'", 25},
            {">\n<authorized_technologies>\n<global_setting device_name='"}, {"n", 50}, {"'"},
            {" p@:device_name=''", 25}, {"/>\n</authorized_technologies>\n</d>"}}},
        {"one long number under many prefixes", {
            {"<d"}, {" xmlns:p@='p@'", 25},
            {">\n<authorized_technologies>\n<global_setting device_index='"}, {"0", 50}, {"1'"},
            {" p@:device_index=''", 25}, {"/>\n</authorized_technologies>\n</d>"}}},
        {"one long subgain under many prefixes", {
            {"<d"}, {" xmlns:p@='p@'", 25},
            {">\n" + kTuning + "<virtual-bass-subgains a='", 0, TUNING}, {"0", 50},
            {"1'"}, {" p@:a=''", 25}, {"/>\n" + kTuningEnd}}},
        {"bands under many prefixes", {
            {"<d"}, {" xmlns:p@='p@'", 25},
            {">\n" + kTuning + "<audio-optimizer-bands>\n<b frequency='", 0, TUNING}, {"0", 50},
            {"1'"}, {" p@:frequency=''", 25}, {"/>\n</audio-optimizer-bands>\n" + kTuningEnd}}},
        {"undeclared prefixes", {
            {kRoot + "<authorized_technologies>\n"}, {"<global_setting q:device_name=''/>\n", 50},
            {"</authorized_technologies>\n"}, {"<q:profile/>\n", 50}, {kEnd}}},
        {"messages about one long namespace", {
            {"<d xmlns:p='"}, {"p", 25}, {"' xmlns:q='"}, {"p", 25}, {"'>"},
            {"<a p:x='' q:x=''/>", 50}, {"</d>"}}},
        {"many namespaces", {{"<d"}, {" xmlns:p@='p@'", 100}, {">\n</d>"}}},
        {"a namespace on every element", {{kRoot}, {"<n xmlns='n@'/>\n", 100}, {kEnd}}},
        {"many names", {{kRoot + kTuning, 0, TUNING}, {"<n@/>\n", 100}, {kTuningEnd}}},
        {"long names", {
            {kRoot + kTuning, 0, TUNING}, {"<" + name(20000) + "@/>\n", 100}, {kTuningEnd}}},
        {"long attribute names", {
            {kRoot + kTuning + "<virtual-bass-subgains", 0, TUNING},
            {" " + name(20000) + "@='1'", 100}, {"/>\n" + kTuningEnd}}},
        {"many comments", {{kRoot}, {"<!---->", 100}, {kEnd}}},
        {"many comments among devices", {
            {kDevices}, {"<!---->", 100},
            {"<device_id id='d' endpoint_port='usb'/>\n<data>\n" + kTuningEnd, 0, TUNING}}},
        {"many processing instructions", {{kRoot}, {"<?n?>", 100}, {kEnd}}},
        {"many CDATA sections", {{kRoot}, {"<![CDATA[]]>", 100}, {kEnd}}},
        {"CDATA sections between texts", {{kRoot}, {"<![CDATA[x]]>x", 100}, {kEnd}}},
        {"comments between texts", {{kRoot + kTuning, 0, TUNING}, {"x<!---->", 100}, {kTuningEnd}}},
        {"text of many escapes", {{kRoot}, {"&amp;", 100}, {kEnd}}},
        {"text of many character references", {{kRoot}, {"x&#65;", 100}, {kEnd}}},
        {"one long text", {{kRoot}, {"x", 100}, {kEnd}}},
        {"a row of many escapes", {
            {kRoot + "<profile>\n<drc-metadata row='", 0, PROFILE}, {"&#38;", 100},
            {"'/>\n</profile>\n</d>"}}},
        {"a row of many character references", {
            {kRoot + "<profile>\n<drc-metadata row='", 0, PROFILE}, {"&#49;,", 100},
            {"'/>\n</profile>\n</d>"}}},
        {"a row of line ends", {
            {kRoot + "<profile>\n<drc-metadata row='", 0, PROFILE}, {"1\r\n", 100},
            {"'/>\n</profile>\n</d>"}}},
        {"many small elements", {{kRoot}, {"<a/>", 100}, {kEnd}}},
        {"many deep elements", {
            {kRoot}, {times(200, "<a>") + times(200, "</a>"), 100}, {kEnd}}},
        {"too deep an element", {{"<d>"}, {"<a>", 100}, {kEnd}}},
        {"a minified document", {
            {"<d><format_version major='3' minor='4' maintenance='0'/>"},
            {"<profile id='@'><a/><endpoint_type id='headphone'><a/><volmax-boost value='1'/>"
             "<ieq-enable value='1'/></endpoint_type></profile>", 50, PROFILE},
            {"<tuning name='t@'><a/><device_id id='@' endpoint_port='usb'/><data><a/>"
             "<calibration-boost value='1'/><output-mode><a/><m><a/><r v='1,2,2,3,4,5,6'/></m>"
             "</output-mode></data></tuning>", 50, TUNING},
            {kEnd}}},
    };
}

/** Other encodings, and texts that are no documents. */
std::vector<HostileShape> encodingShapes() {
    return {
        {"profiles in UTF-16", {
            {kRoot}, {"<profile id='@'>\n</profile>\n", 50, PROFILE}, {kEnd}}, utf16},
        {"childless profiles around one long row in UTF-16", {
            {kRoot}, {"<profile/>\n", 25, PROFILE}, {"<drc-metadata row='"}, {"1,", 25},
            {"'/>\n</d>"}}, utf16},
        {"Latin letters in ISO 8859-1", {
            {"<?xml version='1.0' encoding='ISO-8859-1'?><d>\n<tuning name='t'>\n"},
            {"<device_id id='" + times(1000, "\xe9") + "@' endpoint_port='usb'/>\n", 100, TUNING},
            {"<data>\n" + kTuningEnd}}},
        {"profiles that lack the last byte", {
            {kRoot}, {"<profile id='@'>\n</profile>\n", 100, PROFILE}, {kEnd}}, withoutLastByte},
        {"a tuning that lacks the last byte", {
            {kRoot + kTuning + "<output-mode>\n<m>\n<r v='", 0, TUNING}, {"1,", 100},
            {"'/>\n</m>\n</output-mode>\n" + kTuningEnd}}, withoutLastByte},
        {"open brackets", {{"<", 100}}},
        {"zeros", {{std::string(1, '\0'), 100}}},
    };
}

// clang-format on

}  // namespace

std::string utf16(const std::string& text) {
    std::string bytes = "\xff\xfe";
    bytes.reserve(2 * text.size() + 2);
    for (const char character : text) {
        bytes.append(1, character).append(1, '\0');
    }
    return bytes;
}

std::vector<HostileShape> hostileShapes() {
    std::vector<HostileShape> shapes;
    for (auto* const group :
         {entityShapes, siblingShapes, sharingShapes, massShapes, encodingShapes}) {
        const std::vector<HostileShape> added = group();
        shapes.insert(shapes.end(), added.begin(), added.end());
    }
    return shapes;
}

HostileDocument makeHostile(const HostileShape& shape, size_t size) {
    HostileDocument document;
    for (const auto& [text, percent, kind] : shape.parts) {
        const size_t share = size / kHundred * static_cast<size_t>(percent);
        const size_t copies = std::max<size_t>(share / text.size(), 1);
        document.text += numbered(copies, text);
        document.reading.profiles += kind == PROFILE ? static_cast<int>(copies) : 0;
        document.reading.tunings += kind == TUNING ? static_cast<int>(copies) : 0;
    }
    if (shape.encode != nullptr) {
        document.text = shape.encode(document.text);
    }
    return document;
}

}  // namespace ormel::fuzz
