#include <ormel/EntryLayout.h>
#include <ormel/SpatializerParamArray.h>

#include <map>
#include <set>
#include <tuple>
#include <unordered_map>

#include "CheckMeaning.h"
#include "text/Text.h"

namespace ormel::tools {

namespace {

template <typename Object, auto kGetId>
std::string idOf(const void* object) {
    return concat((static_cast<const Object*>(object)->*kGetId)());
}

std::string endpointOf(const void* object) {
    return endpointName(static_cast<const ProfileEndpoint*>(object)->getEndpoint());
}

/** A class of objects: where its parameters belong, and what two objects may not share. */
struct ObjectRow {
    const char* place;
    const char* name;
    std::string (*idOf)(const void* object);
    Rule repeated;
    /** What comes of two that share it. */
    const char* outcome;
};

/** By ParameterOwner; devices have none. */
// clang-format off
constexpr ObjectRow kObjects[] = {
    {"",                     "tuning device", idOf<DeviceTuning, &DeviceTuning::getDevice>, Rule::REPEATED_DEVICE,   "the last one stands"},
    {"a preset",             "ieq preset",    idOf<IeqPreset, &IeqPreset::getPresetId>,     Rule::REPEATED_PRESET,   "the first one stands"},
    {"a preset",             "geq preset",    idOf<GeqPreset, &GeqPreset::getProfileId>,    Rule::REPEATED_PRESET,   "both are sent, each with the gains of the first"},
    {"a profile",            "profile",       idOf<Profile, &Profile::getProfileId>,        Rule::REPEATED_PROFILE,  "the first one stands and gets the endpoints of both"},
    {"an endpoint_type",     "endpoint",      endpointOf,                                   Rule::REPEATED_ENDPOINT, "both are sent, so the values of the last one stand"},
    {"the data of a tuning", "tuning",        idOf<Tuning, &Tuning::getName>,               Rule::REPEATED_TUNING,   "devices of either get the first one"},
};
// clang-format on

const ObjectRow& rowOf(ParameterOwner owner) {
    return kObjects[static_cast<size_t>(owner)];
}

/** @param before what gave the section the parameter before, 0 for nothing */
void checkRepeated(const CheckContext& context, size_t element, size_t before) {
    if (before != 0) {
        context.add(Rule::REPEATED_VALUE, element, "replaces the value of line ",
                    context.document.line(before), "; remove one of the two");
    }
}

/** A value in a profile that goes to the endpoints behind it, up to the next such value. */
void checkForEndpoints(const CheckContext& context, size_t element, size_t before,
                       const std::vector<size_t>& endpoints) {
    const auto next = std::lower_bound(endpoints.begin(), endpoints.end(), before);
    if (!endpoints.empty() && endpoints.back() < element) {
        context.add(Rule::LATE_IEQ, element,
                    "reaches no endpoint, since all come before it; move it ahead of them");
    } else if (next == endpoints.end() || *next > element) {
        checkRepeated(context, element, before);
    } else if (before == 0) {
        context.add(Rule::LATE_IEQ, element,
                    "does not reach the endpoints before it; move it ahead of them");
    }
}

void checkOverwritten(const CheckContext& context, size_t element, Parameter param,
                      const ReadSection& section) {
    const VersionRule* const rule = findVersionRule(context.formatVersion, section.owner, param);
    if (rule == nullptr || section.object == nullptr) {
        return;
    }
    const int stands = firstOr0(context.valuesOf(section, param));
    const std::string text = context.document.attribute(element, "value").value_or("");
    if ((text == "true" ? 1 : string2Int(text)) != stands) {
        const bool isProfiles = rule->kind == VersionRuleKind::PROFILES_VALUE;
        context.add(Rule::OVERWRITTEN, element, "is replaced by ",
                    isProfiles ? "the profile's value " : "", stands, " in this format");
    }
}

/** The parameter elements of a document, each in its section. */
void checkParameters(const CheckContext& context) {
    std::unordered_map<size_t, std::vector<size_t>> endpointsOfProfile;
    for (const ReadSection& section : context.trace.getSections()) {
        if (section.kind == DocumentElement::ENDPOINT_TYPE) {
            endpointsOfProfile[section.outer].push_back(section.element);
        }
    }
    // By section and parameter.
    std::unordered_map<size_t, size_t> last;
    for (size_t i = 1; i < context.document.size(); ++i) {
        const ReadElement& record = context.read(i);
        if (record.as != ReadElement::As::PARAMETER) {
            continue;
        }
        const ReadSection& section = context.section(i);
        const Parameter param = record.setter->getParam(0);
        const size_t key = record.section * kParameterCount + static_cast<size_t>(param);
        const size_t before = std::exchange(last[key], i);
        const VersionRule* const rule =
                findVersionRule(context.formatVersion, ParameterOwner::PROFILE_ENDPOINT, param);
        if (section.kind == DocumentElement::PROFILE && rule != nullptr &&
            rule->kind == VersionRuleKind::PROFILES_VALUE) {
            checkForEndpoints(context, i, before, endpointsOfProfile[record.section]);
            continue;
        }
        checkRepeated(context, i, before);
        if (parametersOf(section.owner).count(param) == 0) {
            context.add(Rule::WRONG_SECTION, i, "is not sent from here; move it to ",
                        rowOf(kParameterOwners[param]).place);
        } else {
            checkOverwritten(context, i, param, section);
        }
    }
}

/** Entries of lists by channel, whose length is the first one's. */
constexpr std::pair<KivParameter, const char*> kChannelEntries[] = {
        {AOBS, "the optimizer"}, {CEQT, "the complex equalizer"}, {RSSA, "sibilance suppression"}};

/** The lists by channel of a tuning, which are sent for two and four channels only. */
void checkChannels(const CheckContext& context, const ReadSection& section) {
    const int channels = firstOr0(context.valuesOf(section, OUTPUT_CHANNELS));
    const size_t sentLists = channels == 2 || channels == 4 ? static_cast<size_t>(channels) : 0;
    std::vector<std::string> notSent;
    for (const auto& [entry, name] : kChannelEntries) {
        const EntryLayout& layout = *findEntryLayout(entry);
        const ParameterList& lists = layout.channelLists;
        const size_t length = context.valuesOf(section, lists[0]).size();
        if (layout.enable.size() != 0 &&
            firstOr0(context.valuesOf(section, layout.enable[0])) != 1) {
            continue;
        }
        if (sentLists == 0 && length != 0) {
            notSent.emplace_back(name);
        }
        for (size_t i = 1; i < sentLists; ++i) {
            const size_t other = context.valuesOf(section, lists[i]).size();
            const size_t source = section.sourceOf(lists[i]);
            if (other != length) {
                context.add(Rule::UNEQUAL_COLUMNS,
                            source == ReadSection::kNoElement ? section.element : source,
                            parameterName(lists[i]), " has ", other,
                            " values and the left channel ", length,
                            "; only the left one's length is sent");
            }
        }
    }
    if (!notSent.empty()) {
        context.add(Rule::CHANNELS_NOT_SENT, section.element, "has output_channels=\"", channels,
                    "\", so these are not sent: ", joined(notSent, ", "), "; write 2 or 4");
    }
}

/** Ids that profiles are applied by, and that presets of the graphic equalizer find them by. */
void checkProfileId(const CheckContext& context, const ReadSection& section,
                    const std::set<int>& profiles) {
    if (section.owner == ParameterOwner::PROFILE) {
        const int id = static_cast<const Profile*>(section.object)->getProfileId();
        if (id < 0 || id >= static_cast<int>(std::size(kProfileNames))) {
            context.add(Rule::PROFILE_ID, section.element, "has the id ", id,
                        ", which is not one of the library's profiles; write 0 to 3");
        }
    } else if (section.owner == ParameterOwner::GEQ_PRESET) {
        const int id = static_cast<const GeqPreset*>(section.object)->getProfileId();
        if (!profiles.empty() && profiles.count(id) == 0) {
            context.add(Rule::GEQ_PROFILE, section.element, "has the id ", id,
                        ", which no profile of the document has");
        }
    }
}

/** Tuning devices by name; of several the last, as in the store. */
using Devices = std::map<std::string, const ReadSection*>;

/** The tuning devices that are selected from the start. */
void checkDefaults(const CheckContext& context, const Devices& devices) {
    SpatializerParamArray store{SpatializerParamArray::Empty()};
    std::vector<std::string> names;
    for (const auto& [name, device] : devices) {
        names.push_back(name);
    }
    for (const Port port : kSupportedPorts) {
        const std::string name = store.getSelectedTuningDevice(port);
        const auto found = devices.find(name);
        const auto* const device = found == devices.end() ? nullptr : found->second;
        if (device != nullptr &&
            static_cast<const DeviceTuning*>(device->object)->getPort() == kPortNames[port]) {
            continue;
        }
        const std::string similar = device != nullptr ? name : nearestOf(name, names);
        const std::string remedy =
                device != nullptr ? concat("write endpoint_port=\"", kPortNames[port], '"')
                : similar.empty() ? concat("add <device_id id=\"", name, "\" endpoint_port=\"",
                                           kPortNames[port], "\"/>")
                                  : "is " + similar + " misspelt?";
        context.add(Rule::MISSING_DEFAULT_DEVICE,
                    similar.empty() ? 0 : devices.at(similar)->element, "no device_id names ", name,
                    " on port ", kPortNames[port],
                    ", so the port gets no tuning until another device is selected; ", remedy);
    }
}

}  // namespace

void checkObjects(const CheckContext& context) {
    checkParameters(context);
    std::set<int> profiles;
    for (const Profile* const profile : context.data.getProfiles()) {
        profiles.insert(profile->getProfileId());
    }
    std::map<std::tuple<ParameterOwner, size_t, std::string>, size_t> firsts;
    Devices devices;
    for (const ReadSection& section : context.trace.getSections()) {
        if (section.object == nullptr) {
            continue;
        }
        const ObjectRow& row = rowOf(section.owner);
        const std::string id = row.idOf(section.object);
        // Every profile has endpoints of its own.
        const bool isEndpoint = section.owner == ParameterOwner::PROFILE_ENDPOINT;
        const size_t scope = isEndpoint ? context.document.parent(section.element) : 0;
        const auto [first, isNew] = firsts.try_emplace({section.owner, scope, id}, section.element);
        if (!isNew) {
            const bool isOther = isEndpoint && id == kEndpointNames[ENDPOINT_OTHER];
            context.add(row.repeated, section.element, "repeats ", row.name, " ", id, " of line ",
                        context.document.line(first->second), "; ",
                        isOther ? "neither is sent" : row.outcome);
        }
        checkProfileId(context, section, profiles);
        if (section.owner == ParameterOwner::TUNING) {
            checkChannels(context, section);
        } else if (section.owner == ParameterOwner::NONE) {
            devices[id] = &section;
        }
    }
    if (!devices.empty()) {
        checkDefaults(context, devices);
    }
}

}  // namespace ormel::tools
