#include "EntryOrigins.h"

#include <ormel/KivParameter.h>
#include <ormel/VersionRules.h>

namespace ormel::tools {

EntryOrigins::EntryOrigins(const LoadedDocument& document) : mDocument(document) {
    const DeviceData& objects = document.objects();
    std::map<std::string, const Tuning*> tunings;
    for (const Tuning* const tuning : objects.getTunings()) {
        tunings.emplace(tuning->getName(), tuning);
    }
    std::map<std::string, const Tuning*> firstTunings;
    for (const DeviceTuning* const binding : objects.getDeviceTunings()) {
        const Tuning* const tuning = tunings[binding->getTuning()];
        firstTunings.emplace(binding->getDevice(), tuning);
        if (tuning != nullptr) {
            mObjects[{ParameterOwner::TUNING, binding->getDevice(), false}] = {tuning};
        }
    }
    mSpeakerTuning = firstTunings[document.store().getSelectedTuningDevice(PORT_INTERNAL_SPEAKER)];
    const auto addAll = [this](ParameterOwner owner, const auto& all, auto getId) {
        for (const auto* const object : all) {
            mObjects[{owner, std::to_string((object->*getId)()), false}].push_back(object);
        }
    };
    addAll(ParameterOwner::IEQ_PRESET, objects.getIeqPresets(), &IeqPreset::getPresetId);
    addAll(ParameterOwner::GEQ_PRESET, objects.getGeqPresets(), &GeqPreset::getProfileId);
    addAll(ParameterOwner::PROFILE, objects.getProfiles(), &Profile::getProfileId);
    for (const ProfileEndpoint* const endpoint : objects.getProfileEndpoints()) {
        // Others are never sent.
        if (endpoint->getEndpoint() != ENDPOINT_OTHER) {
            const bool isSpeakers = endpoint->getEndpoint() == ENDPOINT_SPEAKER;
            mObjects[{ParameterOwner::PROFILE_ENDPOINT, std::to_string(endpoint->getProfileId()),
                      isSpeakers}]
                    .push_back(endpoint);
        }
    }
}

std::vector<Origins> EntryOrigins::originsOf(const EffectList& list) const {
    // Every object of a class has an entry under each code of the class.
    std::map<std::pair<int32_t, int32_t>, size_t> countOf;
    // An endpoint whose preset the document lacks goes with an earlier one's, so the list itself is
    // asked which it was.
    std::map<int32_t, int32_t> presetOfDevice;
    std::vector<Origins> all;
    for (const Entry& entry : list.entries) {
        if (entry.code == kivCode(IEID) && !entry.values.empty()) {
            presetOfDevice[entry.device] = entry.values.front();
        }
        const ParameterOwner owner = ownerOf(entry.code);
        Key key = {owner, std::to_string(list.profile), entry.device == DEVICE_OUT_SPEAKER};
        size_t place = 0;
        if (list.kind == EffectList::Kind::TUNING) {
            key = {ParameterOwner::TUNING, list.name, false};
        } else if (owner == ParameterOwner::IEQ_PRESET) {
            key = {owner, std::to_string(presetOfDevice[entry.device]), false};
        } else {
            place = countOf[{entry.device, entry.code}]++;
        }
        const auto found = mObjects.find(key);
        const bool isKnown = found != mObjects.end() && place < found->second.size();
        all.push_back(isKnown ? originsOf(entry, *found->second[place]) : Origins());
    }
    return all;
}

const ParameterValues* EntryOrigins::tuningOf(const EffectList& list) const {
    const auto found = mObjects.find({ParameterOwner::TUNING, list.name, false});
    const bool isTuning = list.kind == EffectList::Kind::TUNING;
    return isTuning && found != mObjects.end() ? found->second.front() : nullptr;
}

Origins EntryOrigins::originsOf(const Entry& entry, const ParameterValues& object) const {
    Origins origins;
    for (const Parameter param : sourcesOf(entry, object)) {
        // The load completes endpoints by what is a tuning's.
        const bool isCompleted = ownerOf(entry.code) == ParameterOwner::PROFILE_ENDPOINT &&
                                 kParameterOwners[param] == ParameterOwner::TUNING;
        const bool isDefault = isCompleted && (param == ORIENTATION || mSpeakerTuning == nullptr ||
                                               valuesOf(*mSpeakerTuning, param).empty());
        origins.push_back(isDefault ? Origin{Origin::Kind::DEFAULT, param}
                                    : originOf(param, isCompleted ? *mSpeakerTuning : object));
    }
    return origins;
}

Origin EntryOrigins::originOf(Parameter param, const ParameterValues& object) const {
    const ReadTrace& trace = mDocument.trace();
    if (const long line = trace.lineOf(object, param); line != 0) {
        return {Origin::Kind::LINE, param, line};
    }
    const std::vector<int>& values = valuesOf(object, param);
    if (values.empty()) {
        return {Origin::Kind::ABSENT, param};
    }
    const std::string version = mDocument.objects().getFormatVersion();
    const VersionRule* const rule =
            param == VIRTUAL_BASS_TYPE ? findVersionRule(version, VersionRuleKind::SETTINGS_UNREAD)
                                       : findVersionRule(version, kParameterOwners[param], param);
    if (rule != nullptr) {
        const bool isRules =
                rule->kind != VersionRuleKind::PROFILES_VALUE && rule->value == values.front();
        return {isRules ? Origin::Kind::VERSION_RULE : Origin::Kind::DEFAULT, param};
    }
    // What neither an element nor a rule gives to an object that accepts it is in its start tag.
    const long line = object.getValidParams().count(param) == 0 ? 0 : trace.lineOf(&object);
    return {line == 0 ? Origin::Kind::DEFAULT : Origin::Kind::LINE, param, line};
}

}  // namespace ormel::tools
