#include <ormel/KivParameter.h>
#include <ormel/SetParamCommand.h>
#include <ormel/SpatializerParamArray.h>
#include <ormel/Translator.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "CheckMeaning.h"
#include "CheckText.h"
#include "document/PackedEntries.h"
#include "text/Text.h"

namespace ormel::tools {

namespace {

/** Where parameters of a kind of object belong. */
const char* placeOf(ParameterOwner owner) {
    switch (owner) {
        case ParameterOwner::PROFILE:
            return "a profile";
        case ParameterOwner::PROFILE_ENDPOINT:
            return "an endpoint_type";
        case ParameterOwner::TUNING:
            return "the data of a tuning";
        default:
            return "a preset";
    }
}

/** The parameter elements of a document, each in its section. */
class ParameterCheck {
  public:
    explicit ParameterCheck(const CheckContext& context)
        : mContext(context), mDocument(context.document) {
        for (const ReadSection& section : mContext.trace.getSections()) {
            if (section.kind == DocumentElement::ENDPOINT_TYPE) {
                const size_t profile = mContext.read(mDocument.parent(section.element)).section;
                const auto [found, isNew] =
                        mEndpoints.try_emplace(profile, Range{section.element, section.element});
                found->second.last = section.element;
            }
        }
    }

    void run() {
        for (size_t i = 1; i < mDocument.size(); ++i) {
            const ReadElement& record = mContext.read(i);
            if (record.as == ReadElement::As::PARAMETER) {
                check(i, *record.setter, mContext.section(i));
            }
        }
    }

  private:
    struct Range {
        size_t first;
        size_t last;
    };

    void check(size_t element, const ValueSetter& setter, const ReadSection& section) {
        const Parameter param = setter.getParams().front();
        const size_t key =
                mContext.read(element).section * kParameterCount + static_cast<size_t>(param);
        const auto [earlier, isFirst] = mLast.try_emplace(key, element);
        const size_t before = isFirst ? 0 : earlier->second;
        earlier->second = element;
        if (section.kind == DocumentElement::PROFILE && isProfilesValue(param)) {
            checkForEndpoints(element, before);
            return;
        }
        if (before != 0) {
            addRepeated(element, before);
        }
        if (parametersOf(section.owner).count(param) == 0) {
            mContext.add(Rule::WRONG_SECTION, element,
                         std::string("is not sent from here; it belongs into ") +
                                 placeOf(kParameterOwners[param]));
        } else {
            checkOverwritten(element, param, section);
        }
    }

    void addRepeated(size_t element, size_t before) const {
        mContext.add(Rule::REPEATED_VALUE, element,
                     "replaces what line " + std::to_string(mDocument.line(before)) +
                             " gives; remove one of the two");
    }

    /** A value in a profile that goes to the endpoints behind it, up to the next such value. */
    void checkForEndpoints(size_t element, size_t before) const {
        const auto found = mEndpoints.find(mContext.read(element).section);
        const bool hasEndpoints = found != mEndpoints.end();
        if (hasEndpoints && found->second.last < element) {
            mContext.add(Rule::LATE_IEQ, element,
                         "reaches no endpoint, since all of them stand before it; move it ahead of "
                         "them");
        } else if (hasEndpoints && found->second.first < element && before == 0) {
            mContext.add(Rule::LATE_IEQ, element,
                         "does not reach the endpoints before it; move it ahead of them");
        } else if (before != 0 &&
                   !(hasEndpoints && endpointBetween(found->first, before, element))) {
            addRepeated(element, before);
        }
    }

    bool endpointBetween(size_t profile, size_t begin, size_t end) const {
        for (size_t i = begin; i < end; ++i) {
            if (mContext.read(i).is(DocumentElement::ENDPOINT_TYPE) &&
                mContext.read(mDocument.parent(i)).section == profile) {
                return true;
            }
        }
        return false;
    }

    const VersionRule* ruleOf(ParameterOwner owner, Parameter param) const {
        return findVersionRule(mContext.formatVersion, owner, param);
    }

    bool isProfilesValue(Parameter param) const {
        const VersionRule* const rule = ruleOf(ParameterOwner::PROFILE_ENDPOINT, param);
        return rule != nullptr && rule->kind == VersionRuleKind::PROFILES_VALUE;
    }

    void checkOverwritten(size_t element, Parameter param, const ReadSection& section) const {
        const VersionRule* const rule = ruleOf(section.owner, param);
        if (rule == nullptr || section.object == nullptr) {
            return;
        }
        const int stands = firstOr0(mContext.valuesOf(mContext.read(element).section, param));
        const std::string text = mDocument.attribute(element, "value").value_or("");
        if ((text == "true" ? 1 : string2Int(text)) != stands) {
            mContext.add(Rule::OVERWRITTEN, element,
                         std::string("is replaced by ") + std::to_string(stands) +
                                 (rule->kind == VersionRuleKind::PROFILES_VALUE
                                          ? ", which is the profile's in this format"
                                          : " in this format"));
        }
    }

    const CheckContext& mContext;
    const CheckDocument& mDocument;
    /** The first and last endpoint of a profile's section. */
    std::unordered_map<size_t, Range> mEndpoints;
    /** The last element by section and parameter. */
    std::unordered_map<size_t, size_t> mLast;
};

/** Entries of a list per channel, sent one behind the other with the first one's length. */
constexpr std::pair<KivParameter, const char*> kChannelLists[] = {{CEQT, "the complex equalizer"},
                                                                  {RSSA, "sibilance suppression"}};

/** What one tuning is sent as. */
class TuningCheck {
  public:
    TuningCheck(const CheckContext& context, const Tuning& tuning, size_t element)
        : mContext(context), mTuning(tuning), mElement(element), mSent(codesOf(tuning)) {}

    void run() {
        if (!isSent(AOBS) && !valuesOf(AUDIO_OPTIMIZER_FREQUENCY).empty()) {
            mNotSent.emplace_back("the optimizer");
        }
        for (const auto& [entry, what] : kChannelLists) {
            checkLists(*findEntryLayout(entry), what);
        }
        if (!mNotSent.empty()) {
            addNotSent();
        }
    }

  private:
    /** Codes of the entries that the tuning translates to. */
    static std::set<int32_t> codesOf(Tuning tuning) {
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

    bool isSent(KivParameter param) const { return mSent.count(kivCode(param)) != 0; }

    const std::vector<int>& valuesOf(Parameter param) const {
        static const std::vector<int> none;
        const auto found = mTuning.getValues().find(param);
        return found == mTuning.getValues().end() ? none : found->second;
    }

    /** Place of the element that gives a parameter, else that of the tuning. */
    size_t sourceOf(Parameter param) const {
        const size_t source = mContext.trace.sourceOf(mTuning, param);
        return source == ReadSection::kNoElement ? mElement : source;
    }

    void addNotSent() const {
        mContext.add(Rule::CHANNELS_NOT_SENT, mElement,
                     "has output_channels=\"" +
                             std::to_string(firstOr0(valuesOf(OUTPUT_CHANNELS))) +
                             "\", with which " + joined(mNotSent, ", ") + " cannot be sent");
    }

    void checkLists(const EntryLayout& layout, const char* what) {
        const ParameterList& lists = layout.channelLists;
        const Parameter left = lists[0];
        const bool isOn = firstOr0(valuesOf(layout.enable[0])) == 1;
        if (!isOn) {
            return;
        }
        if (!isSent(layout.destination)) {
            if (!valuesOf(left).empty()) {
                mNotSent.emplace_back(what);
            }
            return;
        }
        const auto channels = static_cast<size_t>(firstOr0(valuesOf(OUTPUT_CHANNELS)));
        const size_t length = valuesOf(left).size();
        for (size_t i = 1; i < std::min(channels, lists.size()); ++i) {
            const size_t other = valuesOf(lists[i]).size();
            if (other != length) {
                mContext.add(Rule::UNEQUAL_COLUMNS, sourceOf(lists[i]),
                             std::string(parameterName(lists[i])) + " has " +
                                     std::to_string(other) + " values and the left channel " +
                                     std::to_string(length) + ", the only length that is sent");
            }
        }
    }

    const CheckContext& mContext;
    const Tuning& mTuning;
    const size_t mElement;
    const std::set<int32_t> mSent;
    std::vector<std::string> mNotSent;
};

/** The tuning device that is selected on each supported port from the start. */
const std::map<Port, std::string>& defaultDevices() {
    static const auto& devices = *[] {
        auto* const names = new std::map<Port, std::string>;
        SpatializerParamArray store{SpatializerParamArray::Empty()};
        for (const Port port : kSupportedPorts) {
            names->emplace(port, store.getSelectedTuningDevice(port));
        }
        return names;
    }();
    return devices;
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
                check(section);
            }
        }
        if (!mDevices.empty()) {
            checkDefaults();
        }
    }

  private:
    void check(const ReadSection& section) {
        const ValueSetter* const setter = mContext.read(section.element).setter;
        switch (section.kind) {
            case DocumentElement::PROFILE: {
                const auto* const profile = objectOf<Profile>(section);
                checkOnce(Rule::REPEATED_PROFILE, section.element,
                          "profile " + std::to_string(profile->getProfileId()),
                          "the first one stands and gets the endpoints of both");
                checkProfileId(profile->getProfileId(), section.element);
                break;
            }
            case DocumentElement::ENDPOINT_TYPE: {
                const auto* const endpoint = objectOf<ProfileEndpoint>(section);
                checkOnce(Rule::REPEATED_ENDPOINT, section.element,
                          std::string("endpoint ") + endpointName(endpoint->getEndpoint()),
                          "both are sent, so the values of the last one stand",
                          std::to_string(mContext.document.parent(section.element)));
                break;
            }
            case DocumentElement::PRESET:
                if (setter->getParams().front() == IEQ_FREQUENCY) {
                    checkOnce(Rule::REPEATED_PRESET, section.element,
                              "ieq preset " +
                                      std::to_string(objectOf<IeqPreset>(section)->getPresetId()),
                              "the first one stands");
                } else {
                    checkOnce(Rule::REPEATED_PRESET, section.element,
                              "geq preset " +
                                      std::to_string(objectOf<GeqPreset>(section)->getProfileId()),
                              "both are sent, and the first one's gains stand");
                    checkGeqProfile(objectOf<GeqPreset>(section)->getProfileId(), section.element);
                }
                break;
            case DocumentElement::TUNING: {
                const auto* const tuning = objectOf<Tuning>(section);
                checkOnce(Rule::REPEATED_TUNING, section.element, "tuning " + tuning->getName(),
                          "devices of either get the first one");
                TuningCheck(mContext, *tuning, section.element).run();
                break;
            }
            case DocumentElement::DEVICE_ID: {
                const auto* const device = static_cast<const DeviceTuning*>(section.object);
                checkOnce(Rule::REPEATED_DEVICE, section.element,
                          "tuning device " + device->getDevice(), "the last one stands");
                mDevices[device->getDevice()] = {device->getPort(), section.element};
                break;
            }
            default:
                break;
        }
    }

    void checkProfileId(int id, size_t element) const {
        if (id < 0 || id >= static_cast<int>(std::size(kProfileNames))) {
            mContext.add(Rule::PROFILE_ID, element,
                         "has the id " + std::to_string(id) + ", which is no profile's");
        }
    }

    void checkGeqProfile(int id, size_t element) const {
        if (!mProfiles.empty() && mProfiles.count(id) == 0) {
            mContext.add(Rule::GEQ_PROFILE, element,
                         "has the id " + std::to_string(id) + ", which no profile here has");
        }
    }

    template <typename Object>
    static const Object* objectOf(const ReadSection& section) {
        return static_cast<const Object*>(section.object);
    }

    /** @param scope what else has to be the same for two to be one too many */
    void checkOnce(Rule rule, size_t element, const std::string& key, const std::string& outcome,
                   const std::string& scope = "") {
        const auto [first, isNew] = mFirst.try_emplace(scope + " " + key, element);
        if (!isNew) {
            mContext.add(rule, element,
                         key + " is there since line " +
                                 std::to_string(mContext.document.line(first->second)) + "; " +
                                 outcome);
        }
    }

    void checkDefaults() const {
        for (const Port port : kSupportedPorts) {
            const std::string& name = defaultDevices().at(port);
            const auto device = mDevices.find(name);
            if (device != mDevices.end() && device->second.port == kPortNames[port]) {
                continue;
            }
            const bool isThere = device != mDevices.end();
            const std::string similar = isThere ? name : nearestOf(name, otherDevices());
            mContext.add(
                    Rule::MISSING_DEFAULT_DEVICE,
                    similar.empty() ? 0 : mDevices.at(similar).element,
                    std::string("port ") + kPortNames[port] + " starts with tuning device " + name +
                            ", which is not on it; " +
                            (isThere || similar.empty() ? "bind it with device_id"
                                                        : "does " + similar + " misspell it?"));
        }
    }

    /** The names of devices that no port starts with. */
    std::vector<std::string> otherDevices() const {
        std::vector<std::string> names;
        for (const auto& [name, binding] : mDevices) {
            const bool isDefault =
                    std::any_of(defaultDevices().begin(), defaultDevices().end(),
                                [&name = name](const auto& each) { return each.second == name; });
            if (!isDefault) {
                names.push_back(name);
            }
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    struct Binding {
        std::string port;
        size_t element;
    };

    const CheckContext& mContext;
    std::set<int> mProfiles;
    std::unordered_map<std::string, size_t> mFirst;
    /** By name; of several the last, as in the store. */
    std::unordered_map<std::string, Binding> mDevices;
};

}  // namespace

void checkObjects(const CheckContext& context) {
    ParameterCheck(context).run();
    ReferenceCheck(context).run();
}

}  // namespace ormel::tools
