#include <ormel/EntryLayout.h>
#include <ormel/SetParamCommand.h>
#include <ormel/SpatializerParamArray.h>
#include <ormel/Translator.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <tuple>
#include <unordered_map>
#include <utility>
#include <vector>

#include "CheckMeaning.h"
#include "CheckText.h"
#include "document/PackedEntries.h"
#include "text/Text.h"

namespace ormel::tools {

namespace {

std::string idText(int id) {
    return std::to_string(id);
}
std::string idText(Endpoint endpoint) {
    return endpointName(endpoint);
}
std::string idText(std::string name) {
    return name;
}

template <typename Object, auto kGetId>
std::string idOf(const void* object) {
    return idText((static_cast<const Object*>(object)->*kGetId)());
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
    {"",                     "tuning device", idOf<DeviceTuning, &DeviceTuning::getDevice>,         Rule::REPEATED_DEVICE,   "the last one stands"},
    {"a preset",             "ieq preset",    idOf<IeqPreset, &IeqPreset::getPresetId>,             Rule::REPEATED_PRESET,   "the first one stands"},
    {"a preset",             "geq preset",    idOf<GeqPreset, &GeqPreset::getProfileId>,            Rule::REPEATED_PRESET,   "both are sent, and the first one's gains stand"},
    {"a profile",            "profile",       idOf<Profile, &Profile::getProfileId>,                Rule::REPEATED_PROFILE,  "the first one stands and gets the endpoints of both"},
    {"an endpoint_type",     "endpoint",      idOf<ProfileEndpoint, &ProfileEndpoint::getEndpoint>, Rule::REPEATED_ENDPOINT, "both are sent, so the values of the last one stand"},
    {"the data of a tuning", "tuning",        idOf<Tuning, &Tuning::getName>,                       Rule::REPEATED_TUNING,   "devices of either get the first one"},
};
// clang-format on

const ObjectRow& rowOf(ParameterOwner owner) {
    return kObjects[static_cast<size_t>(owner)];
}

/** The parameter elements of a document, each in its section. */
class ParameterCheck {
  public:
    explicit ParameterCheck(const CheckContext& context)
        : mContext(context), mDocument(context.document) {
        for (const ReadSection& section : mContext.trace.getSections()) {
            if (section.kind == DocumentElement::ENDPOINT_TYPE) {
                const size_t profile = mContext.read(mDocument.parent(section.element)).section;
                mEndpoints[profile].push_back(section.element);
            }
        }
    }

    void run() {
        for (size_t i = 1; i < mDocument.size(); ++i) {
            const ReadElement& record = mContext.read(i);
            if (record.as == ReadElement::As::PARAMETER) {
                check(i, record.setter->getParam(0), mContext.section(i));
            }
        }
    }

  private:
    void check(size_t element, Parameter param, const ReadSection& section) {
        const size_t key =
                mContext.read(element).section * kParameterCount + static_cast<size_t>(param);
        const size_t before = std::exchange(mLast[key], element);
        const VersionRule* const rule = ruleOf(ParameterOwner::PROFILE_ENDPOINT, param);
        if (section.kind == DocumentElement::PROFILE && rule != nullptr &&
            rule->kind == VersionRuleKind::PROFILES_VALUE) {
            checkForEndpoints(element, before);
            return;
        }
        if (before != 0) {
            addRepeated(element, before);
        }
        if (parametersOf(section.owner).count(param) == 0) {
            mContext.add(Rule::WRONG_SECTION, element, "is not sent from here; it belongs into ",
                         rowOf(kParameterOwners[param]).place);
        } else {
            checkOverwritten(element, param, section);
        }
    }

    void addRepeated(size_t element, size_t before) const {
        mContext.add(Rule::REPEATED_VALUE, element, "replaces what line ", mDocument.line(before),
                     " gives; remove one of the two");
    }

    /** A value in a profile that goes to the endpoints behind it, up to the next such value. */
    void checkForEndpoints(size_t element, size_t before) {
        const std::vector<size_t>& endpoints = mEndpoints[mContext.read(element).section];
        const auto isBetween = [=](size_t endpoint) {
            return endpoint >= before && endpoint < element;
        };
        if (!endpoints.empty() && endpoints.back() < element) {
            mContext.add(Rule::LATE_IEQ, element,
                         "reaches no endpoint, since all of them stand before it; move it ahead of "
                         "them");
        } else if (std::none_of(endpoints.begin(), endpoints.end(), isBetween)) {
            if (before != 0) {
                addRepeated(element, before);
            }
        } else if (before == 0) {
            mContext.add(Rule::LATE_IEQ, element,
                         "does not reach the endpoints before it; move it ahead of them");
        }
    }

    const VersionRule* ruleOf(ParameterOwner owner, Parameter param) const {
        return findVersionRule(mContext.formatVersion, owner, param);
    }

    void checkOverwritten(size_t element, Parameter param, const ReadSection& section) const {
        const VersionRule* const rule = ruleOf(section.owner, param);
        if (rule == nullptr || section.object == nullptr) {
            return;
        }
        const int stands = firstOr0(mContext.valuesOf(section, param));
        const std::string text = mDocument.attribute(element, "value").value_or("");
        if ((text == "true" ? 1 : string2Int(text)) != stands) {
            const bool isProfiles = rule->kind == VersionRuleKind::PROFILES_VALUE;
            mContext.add(Rule::OVERWRITTEN, element, "is replaced by ", stands,
                         isProfiles ? ", which is the profile's" : "", " in this format");
        }
    }

    const CheckContext& mContext;
    const CheckDocument& mDocument;
    /** The endpoints in a profile's section. */
    std::unordered_map<size_t, std::vector<size_t>> mEndpoints;
    /** The last element by section and parameter. */
    std::unordered_map<size_t, size_t> mLast;
};

/** Entries of lists by channel, whose length is the first one's. */
constexpr std::pair<KivParameter, const char*> kChannelEntries[] = {
        {AOBS, "the optimizer"}, {CEQT, "the complex equalizer"}, {RSSA, "sibilance suppression"}};

/** Codes of the entries that a tuning translates to. */
std::set<int32_t> codesOf(Tuning tuning) {
    SetParamCommand command(DEVICE_OUT_DEFAULT);
    ParameterTranslator translator;
    translator.setSource(&tuning, ENDPOINT_SPEAKER, false);
    translator.translateAll(command);
    command.mParams[SetParamCommand::LIST_COUNT] = command.mParamCount;
    std::set<int32_t> codes;
    for (const Entry& entry : entriesOf(command.mParams)) {
        codes.insert(entry.code);
    }
    return codes;
}

/** The lists by channel of a tuning, for what its channels keep from being sent as it is. */
void checkChannels(const CheckContext& context, const ReadSection& section) {
    const auto& tuning = *static_cast<const Tuning*>(section.object);
    const std::set<int32_t> sent = codesOf(tuning);
    const int channels = firstOr0(context.valuesOf(section, OUTPUT_CHANNELS));
    std::vector<std::string> notSent;
    for (const auto& [entry, name] : kChannelEntries) {
        const EntryLayout& layout = *findEntryLayout(entry);
        const ParameterList& lists = layout.channelLists;
        const size_t length = context.valuesOf(section, lists[0]).size();
        if (layout.enable.size() != 0 &&
            firstOr0(context.valuesOf(section, layout.enable[0])) != 1) {
            continue;
        }
        const bool isSent = sent.count(kivCode(entry)) != 0;
        if (!isSent && length != 0) {
            notSent.emplace_back(name);
        }
        const size_t sentLists = isSent ? std::min(static_cast<size_t>(channels), lists.size()) : 0;
        for (size_t i = 1; i < sentLists; ++i) {
            const size_t other = context.valuesOf(section, lists[i]).size();
            const size_t source = context.trace.sourceOf(tuning, lists[i]);
            if (other != length) {
                context.add(Rule::UNEQUAL_COLUMNS,
                            source == ReadSection::kNoElement ? section.element : source,
                            parameterName(lists[i]), " has ", other,
                            " values and the left channel ", length,
                            ", the only length that is sent");
            }
        }
    }
    if (!notSent.empty()) {
        context.add(Rule::CHANNELS_NOT_SENT, section.element, "has output_channels=\"", channels,
                    "\", with which ", joined(notSent, ", "), " cannot be sent");
    }
}

/** What must be there once, and what must be there. */
class ReferenceCheck {
  public:
    explicit ReferenceCheck(const CheckContext& context) : mContext(context) {
        for (const Profile* const profile : context.data.getProfiles()) {
            mProfiles.insert(profile->getProfileId());
        }
    }

    void run() {
        for (const ReadSection& section : mContext.trace.getSections()) {
            if (section.object != nullptr) {
                checkOnce(section);
                check(section);
            }
        }
        if (!mDevices.empty()) {
            checkDefaults();
        }
    }

  private:
    void checkOnce(const ReadSection& section) {
        const ObjectRow& row = rowOf(section.owner);
        const std::string id = row.idOf(section.object);
        const bool isEndpoint = section.owner == ParameterOwner::PROFILE_ENDPOINT;
        const size_t scope = isEndpoint ? mContext.document.parent(section.element) : 0;
        const auto [first, isNew] = mFirst.try_emplace({row.name, scope, id}, section.element);
        if (!isNew) {
            mContext.add(row.repeated, section.element, row.name, " ", id, " is there since line ",
                         mContext.document.line(first->second), "; ", row.outcome);
        }
    }

    void check(const ReadSection& section) {
        if (section.owner == ParameterOwner::NONE) {
            const auto* const device = static_cast<const DeviceTuning*>(section.object);
            mDevices[device->getDevice()] = {device->getPort(), section.element};
        } else if (section.owner == ParameterOwner::TUNING) {
            checkChannels(mContext, section);
        } else if (section.owner == ParameterOwner::PROFILE) {
            const int id = static_cast<const Profile*>(section.object)->getProfileId();
            if (id < 0 || id >= static_cast<int>(std::size(kProfileNames))) {
                mContext.add(Rule::PROFILE_ID, section.element, "has the id ", id,
                             ", which is no profile's");
            }
        } else if (section.owner == ParameterOwner::GEQ_PRESET) {
            const int id = static_cast<const GeqPreset*>(section.object)->getProfileId();
            if (!mProfiles.empty() && mProfiles.count(id) == 0) {
                mContext.add(Rule::GEQ_PROFILE, section.element, "has the id ", id,
                             ", which no profile here has");
            }
        }
    }

    void checkDefaults() const {
        SpatializerParamArray store{SpatializerParamArray::Empty()};
        std::map<std::string, Device> others = mDevices;
        for (const Port port : kSupportedPorts) {
            others.erase(store.getSelectedTuningDevice(port));
        }
        std::vector<std::string> otherNames;
        for (const auto& [name, device] : others) {
            otherNames.push_back(name);
        }
        for (const Port port : kSupportedPorts) {
            const std::string name = store.getSelectedTuningDevice(port);
            const auto device = mDevices.find(name);
            const bool isThere = device != mDevices.end();
            if (isThere && device->second.port == kPortNames[port]) {
                continue;
            }
            const std::string similar = isThere ? name : nearestOf(name, otherNames);
            mContext.add(Rule::MISSING_DEFAULT_DEVICE,
                         similar.empty() ? 0 : mDevices.at(similar).element, "port ",
                         kPortNames[port], " starts with tuning device ", name,
                         ", which is not on it; ",
                         isThere || similar.empty() ? "bind it with device_id"
                                                    : "does " + similar + " misspell it?");
        }
    }

    struct Device {
        std::string port;
        size_t element;
    };

    const CheckContext& mContext;
    std::set<int> mProfiles;
    /** By class, scope and id. */
    std::map<std::tuple<std::string_view, size_t, std::string>, size_t> mFirst;
    /** By name; of several the last, as in the store. */
    std::map<std::string, Device> mDevices;
};

}  // namespace

void checkObjects(const CheckContext& context) {
    ParameterCheck(context).run();
    ReferenceCheck(context).run();
}

}  // namespace ormel::tools
