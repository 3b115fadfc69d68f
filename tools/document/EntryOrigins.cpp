#include "EntryOrigins.h"

#include <ormel/VersionRules.h>

#include <set>

#include "ReadTrace.h"

namespace ormel::tools {

namespace {

/** The class of the objects that entries are made from; only endpoints have a parameter of none. */
ParameterOwner ownerOf(const EntryLayout& layout) {
    for (const ParameterList* const params :
         {&layout.enable, &layout.lists, &layout.channelLists}) {
        if (params->size() != 0 && kParameterOwners[(*params)[0]] != ParameterOwner::NONE) {
            return kParameterOwners[(*params)[0]];
        }
    }
    return ParameterOwner::PROFILE_ENDPOINT;
}

const std::vector<int>& valuesOf(const ParameterValues& object, Parameter param) {
    static const std::vector<int> none;
    const auto found = object.getValues().find(param);
    return found == object.getValues().end() ? none : found->second;
}

template <typename Key>
const ParameterValues* findIn(const std::map<Key, const ParameterValues*>& objects,
                              const Key& key) {
    const auto found = objects.find(key);
    return found == objects.end() ? nullptr : found->second;
}

/** What an entry was made from. */
std::set<Parameter> paramsOf(const Entry& entry, const EntryLayout& layout,
                             const ParameterValues& object) {
    const std::vector<Parameter> enable = layout.enable.toVector();
    std::set<Parameter> params(enable.begin(), enable.end());
    const bool isOff =
            layout.enable.size() != 0 && firstOr0(valuesOf(object, layout.enable[0])) == 0;
    for (const Parameter param : layout.lists.toVector()) {
        const bool isLeftOut = param == OUTPUT_MIX_MATRIX && entry.device != DEVICE_OUT_SPEAKER;
        if (!isOff && !isLeftOut) {
            params.insert(param);
        }
    }
    if (const auto channels = channelsOf(entry, layout); channels.has_value()) {
        params.insert(OUTPUT_CHANNELS);
        const std::vector<Parameter> lists = layout.channelLists.toVector();
        params.insert(lists.begin(), lists.begin() + *channels);
    }
    return params;
}

/** The devices that an endpoint is sent to. */
std::vector<int32_t> devicesOf(Endpoint endpoint) {
    if (endpoint == ENDPOINT_HEADPHONE) {
        return {kHeadphoneDevices.begin(), kHeadphoneDevices.end()};
    }
    return endpoint == ENDPOINT_SPEAKER ? std::vector<int32_t>{DEVICE_OUT_SPEAKER}
                                        : std::vector<int32_t>();
}

}  // namespace

const char* nameOf(Origin::Kind kind) {
    constexpr const char* kNames[] = {"line", "version rule", "default", "absent"};
    return kNames[static_cast<size_t>(kind)];
}

EntryOrigins::EntryOrigins(const LoadedDocument& document)
    : mDocument(document), mFormatVersion(document.objects().getFormatVersion()) {
    const DeviceData& objects = document.objects();
    std::map<std::string, const Tuning*> tunings;
    for (const Tuning* const tuning : objects.getTunings()) {
        tunings.emplace(tuning->getName(), tuning);
    }
    std::map<std::string, const Tuning*> firstTunings;
    for (const DeviceTuning* const binding : objects.getDeviceTunings()) {
        const auto tuning = tunings.find(binding->getTuning());
        const bool isThere = tuning != tunings.end();
        firstTunings.emplace(binding->getDevice(), isThere ? tuning->second : nullptr);
        if (isThere) {
            mTuningOfDevice[binding->getDevice()] = tuning->second;
        }
    }
    mSpeakerTuning = firstTunings[document.store().getSelectedTuningDevice(PORT_INTERNAL_SPEAKER)];
    for (const IeqPreset* const preset : objects.getIeqPresets()) {
        mIeqPresets.emplace(preset->getPresetId(), preset);
    }
    for (const Profile* const profile : objects.getProfiles()) {
        mObjects[{profile->getProfileId(), DEVICE_OUT_DEFAULT, ParameterOwner::PROFILE}].push_back(
                profile);
    }
    for (const GeqPreset* const preset : objects.getGeqPresets()) {
        mObjects[{preset->getProfileId(), DEVICE_OUT_DEFAULT, ParameterOwner::GEQ_PRESET}]
                .push_back(preset);
    }
    for (const ProfileEndpoint* const endpoint : objects.getProfileEndpoints()) {
        for (const int32_t device : devicesOf(endpoint->getEndpoint())) {
            mObjects[{endpoint->getProfileId(), device, ParameterOwner::PROFILE_ENDPOINT}]
                    .push_back(endpoint);
        }
    }
}

std::vector<Origins> EntryOrigins::originsOf(const EffectList& list) const {
    const bool isTuning = list.kind == EffectList::Kind::TUNING;
    // Every object of a class has an entry under each code of the class.
    std::map<std::pair<int32_t, int32_t>, size_t> countOf;
    // An endpoint whose preset the document lacks goes with an earlier one's, so the list itself is
    // asked which it was.
    std::map<int32_t, int32_t> presetOfDevice;
    std::vector<Origins> all;
    all.reserve(list.entries.size());
    for (const Entry& entry : list.entries) {
        const EntryLayout layout = layoutOf(entry.code);
        const ParameterOwner owner = ownerOf(layout);
        if (entry.code == kivCode(IEID) && !entry.values.empty()) {
            presetOfDevice[entry.device] = entry.values.front();
        }
        const ParameterValues* object = nullptr;
        if (isTuning) {
            object = findIn(mTuningOfDevice, list.name);
        } else if (owner == ParameterOwner::IEQ_PRESET) {
            object = findIn(mIeqPresets, presetOfDevice[entry.device]);
        } else if (const auto found = mObjects.find({list.profile, entry.device, owner});
                   found != mObjects.end()) {
            const size_t place = countOf[{entry.device, entry.code}]++;
            object = place < found->second.size() ? found->second[place] : nullptr;
        }
        all.push_back(object == nullptr ? Origins() : originsOf(entry, layout, *object));
    }
    return all;
}

Origins EntryOrigins::originsOf(const Entry& entry, const EntryLayout& layout,
                                const ParameterValues& object) const {
    const bool isEndpoint = ownerOf(layout) == ParameterOwner::PROFILE_ENDPOINT;
    Origins origins;
    for (const Parameter param : paramsOf(entry, layout, object)) {
        // The load completes endpoints.
        if (isEndpoint && (param == VIRTUAL_BASS_MODE || param == OUTPUT_MIX_MATRIX)) {
            origins.push_back(speakerOrigin(param));
        } else if (isEndpoint && param == ORIENTATION) {
            origins.push_back({Origin::Kind::DEFAULT, param, 0});
        } else {
            origins.push_back(originOf(param, object));
        }
    }
    return origins;
}

Origin EntryOrigins::speakerOrigin(Parameter param) const {
    if (mSpeakerTuning == nullptr || valuesOf(*mSpeakerTuning, param).empty()) {
        return {Origin::Kind::DEFAULT, param, 0};
    }
    return {Origin::Kind::LINE, param, mDocument.trace().lineOf(*mSpeakerTuning, param)};
}

Origin EntryOrigins::originOf(Parameter param, const ParameterValues& object) const {
    const ReadTrace& trace = mDocument.trace();
    if (const long line = trace.lineOf(object, param); line != 0) {
        return {Origin::Kind::LINE, param, line};
    }
    const std::vector<int>& values = valuesOf(object, param);
    if (values.empty()) {
        return {Origin::Kind::ABSENT, param, 0};
    }
    const VersionRule* const rule =
            param == VIRTUAL_BASS_TYPE
                    ? findVersionRule(mFormatVersion, VersionRuleKind::SETTINGS_UNREAD)
                    : findVersionRule(mFormatVersion, kParameterOwners[param], param);
    if (rule != nullptr && rule->kind != VersionRuleKind::PROFILES_VALUE &&
        rule->value == values.front()) {
        return {Origin::Kind::VERSION_RULE, param, 0};
    }
    // What neither an element nor a rule gives to an object that accepts it is in its start tag.
    const bool isAttribute = rule == nullptr && object.getValidParams().count(param) != 0;
    const long line = isAttribute ? trace.lineOf(&object) : 0;
    return {line == 0 ? Origin::Kind::DEFAULT : Origin::Kind::LINE, param, line};
}

}  // namespace ormel::tools
