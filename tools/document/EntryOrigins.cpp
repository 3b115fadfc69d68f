#include "EntryOrigins.h"

#include <ormel/KivParameter.h>
#include <ormel/Translator.h>
#include <ormel/ValueSetter.h>
#include <ormel/VersionRules.h>

#include <algorithm>
#include <deque>
#include <map>
#include <set>
#include <utility>

#include "ReadTrace.h"

namespace ormel::tools {

namespace {

using Values = std::vector<int32_t>;
using ValueMap = std::map<Parameter, Values>;

/** What the reader begins with. */
constexpr int32_t kInitialVirtualBassType = 1;

/** Values to try translators on, in place of an object's. */
class Sample : public ParameterValues {
  public:
    Sample(const std::set<Parameter>& validParams, ValueMap values)
        : ParameterValues(-1, false), mValidParams(validParams) {
        getValues() = std::move(values);
    }

    int64_t getId() const override { return mId; }
    const std::set<Parameter>& getValidParams() const override { return mValidParams; }

  private:
    const std::set<Parameter>& mValidParams;
};

/** Whether a parameter is read from the start tag of its section. */
bool isAttribute(Parameter param) {
    const auto& setters = SetterCollection::kAllValueSetters;
    return std::none_of(setters.begin(), setters.end(), [param](const ValueSetter* setter) {
        const auto& params = setter->getParams();
        return std::find(params.begin(), params.end(), param) != params.end();
    });
}

/** The values of what a translator writes, by code. */
std::map<int32_t, Values> written(Translator& translator, Sample sample, Endpoint endpoint) {
    SetParamCommand command(DEVICE_OUT_DEFAULT);
    translator.kivTranslate(command, sample, endpoint, false);
    command.mParams[1] = command.mParamCount;
    std::map<int32_t, Values> byCode;
    for (Entry& entry : entriesOf(command.mParams)) {
        byCode[entry.code] = std::move(entry.values);
    }
    return byCode;
}

/** The parameters that a translator looks at, whether or not their change calls for it. */
std::set<Parameter> readParams(Translator& translator, const std::set<Parameter>& validParams,
                               Endpoint endpoint) {
    const auto& sources = translator.getSrcParams();
    std::set<Parameter> params(sources.begin(), sources.end());
    Sample sample(validParams, {});
    // What it reads and does not find, it leaves behind empty. A switch may hide what else it
    // reads, so those that it has asked for are switched on.
    for (size_t known = 0, count = 1; known != count; count = sample.getValues().size()) {
        known = sample.getValues().size();
        SetParamCommand command(DEVICE_OUT_DEFAULT);
        translator.kivTranslate(command, sample, endpoint, false);
        for (auto& [param, values] : sample.getValues()) {
            params.insert(param);
            values = {1};
        }
    }
    return params;
}

}  // namespace

/** An object as the load hands it to the translators. */
class EntryOrigins::Source {
  public:
    Source(const ParameterValues& object, DocumentElement kind, Endpoint endpoint,
           const LoadedDocument& document)
        : mObject(object),
          mEndpoint(endpoint),
          mTrace(document.trace()),
          mFormatVersion(document.objects().getFormatVersion()),
          mOwner(ownerOf(kind)),
          mValues(object.getValues()) {}

    /** Completes the object where the load does, with any values: only changes are looked at. */
    void complete(const Origin& origin) {
        mValues[origin.param] = {2};
        mCompletions.emplace(origin.param, origin);
    }

    /** The origins of the object's entry under a code, null when it has none. */
    const Origins* origins(int32_t code) {
        if (mOrigins.empty()) {
            findOrigins();
        }
        const auto found = mOrigins.find(code);
        return found == mOrigins.end() ? nullptr : &found->second;
    }

  private:
    void findOrigins() {
        std::set<Translator*> translators;
        for (const Parameter param : mObject.getValidParams()) {
            translators.insert(ParameterTranslator::sTranslatorCollection->getTranslator(param));
        }
        translators.erase(nullptr);
        for (Translator* const translator : translators) {
            findOrigins(*translator);
        }
    }

    void findOrigins(Translator& translator) {
        const std::set<Parameter> params =
                readParams(translator, mObject.getValidParams(), mEndpoint);
        ValueMap values;
        for (const Parameter param : params) {
            if (const auto found = mValues.find(param); found != mValues.end()) {
                values.insert(*found);
            }
        }
        const auto entries = write(translator, values);
        for (const auto& [code, entryValues] : entries) {
            mOrigins.emplace(code, Origins());
        }
        for (const Parameter param : params) {
            const std::set<int32_t> codes = entriesFrom(translator, entries, values, param);
            for (const int32_t code : codes) {
                mOrigins[code].push_back(originOf(param));
            }
        }
    }

    /** The codes of those @p entries that change with a parameter. */
    std::set<int32_t> entriesFrom(Translator& translator, const std::map<int32_t, Values>& entries,
                                  ValueMap values, Parameter param) const {
        std::set<int32_t> codes;
        for (const Values& other : {Values(), Values{1}}) {
            values[param] = other;
            const auto changed = write(translator, values);
            for (const auto& [code, entryValues] : entries) {
                const auto found = changed.find(code);
                if (found == changed.end() || found->second != entryValues) {
                    codes.insert(code);
                }
            }
        }
        return codes;
    }

    std::map<int32_t, Values> write(Translator& translator, const ValueMap& values) const {
        return written(translator, Sample(mObject.getValidParams(), values), mEndpoint);
    }

    Origin originOf(Parameter param) const {
        if (const auto done = mCompletions.find(param); done != mCompletions.end()) {
            return done->second;
        }
        if (const long line = mTrace.lineOf(mObject, param); line != 0) {
            return {Origin::Kind::LINE, param, line};
        }
        const auto found = mValues.find(param);
        if (found == mValues.end() || found->second.empty()) {
            return {Origin::Kind::ABSENT, param, 0};
        }
        const bool isAccepted = mObject.getValidParams().count(param) > 0;
        if (isAccepted && isAttribute(param)) {
            return {Origin::Kind::LINE, param, mTrace.lineOf(&mObject)};
        }
        // No element of an endpoint gives this one, so the rules do not tell.
        if (param == VIRTUAL_BASS_TYPE) {
            const bool isInitial = found->second.front() == kInitialVirtualBassType;
            return {isInitial ? Origin::Kind::DEFAULT : Origin::Kind::VERSION_RULE, param, 0};
        }
        const VersionRule* const rule = findVersionRule(mFormatVersion, mOwner, param);
        const bool isFixed = rule != nullptr && rule->kind == VersionRuleKind::VALUE;
        return {isFixed ? Origin::Kind::VERSION_RULE : Origin::Kind::DEFAULT, param, 0};
    }

    const ParameterValues& mObject;
    Endpoint mEndpoint;
    const ReadTrace& mTrace;
    std::string mFormatVersion;
    ParameterOwner mOwner;
    ValueMap mValues;
    std::map<Parameter, Origin> mCompletions;
    std::map<int32_t, Origins> mOrigins;
};

const char* nameOf(Origin::Kind kind) {
    switch (kind) {
        case Origin::Kind::LINE:
            break;
        case Origin::Kind::VERSION_RULE:
            return "version rule";
        case Origin::Kind::DEFAULT:
            return "default";
        case Origin::Kind::ABSENT:
            return "absent";
    }
    return "line";
}

EntryOrigins::EntryOrigins(const LoadedDocument& document) : mDocument(document) {
    const DeviceData& objects = document.objects();
    for (const Tuning* const tuning : objects.getTunings()) {
        mTunings.emplace(tuning->getName(), tuning);
    }
    const std::string speaker = document.store().getSelectedTuningDevice(PORT_INTERNAL_SPEAKER);
    bool isSpeakerKnown = false;
    for (const DeviceTuning* const binding : objects.getDeviceTunings()) {
        const auto tuning = mTunings.find(binding->getTuning());
        const bool isThere = tuning != mTunings.end();
        if (isThere) {
            mTuningOfDevice[binding->getDevice()] = tuning->second;
        }
        if (!isSpeakerKnown && binding->getDevice() == speaker) {
            mSpeakerTuning = isThere ? tuning->second : nullptr;
            isSpeakerKnown = true;
        }
    }
    for (const IeqPreset* const preset : objects.getIeqPresets()) {
        mIeqPresets.emplace(preset->getPresetId(), preset);
    }
    for (const Profile* const profile : objects.getProfiles()) {
        mProfiles.emplace(profile->getProfileId(), profile);
    }
    for (const GeqPreset* const preset : objects.getGeqPresets()) {
        mGeqPresets[preset->getProfileId()].push_back(preset);
    }
    for (const ProfileEndpoint* const endpoint : objects.getProfileEndpoints()) {
        mProfileEndpoints[endpoint->getProfileId()].push_back(endpoint);
    }
}

Origin EntryOrigins::speakerOrigin(Parameter param) const {
    if (mSpeakerTuning != nullptr) {
        const auto& values = mSpeakerTuning->getValues();
        const auto found = values.find(param);
        if (found != values.end() && !found->second.empty()) {
            return {Origin::Kind::LINE, param, mDocument.trace().lineOf(*mSpeakerTuning, param)};
        }
    }
    return {Origin::Kind::DEFAULT, param, 0};
}

void EntryOrigins::addEndpoint(const ProfileEndpoint& endpoint, Sources& sources) const {
    const bool isSpeaker = endpoint.getEndpoint() == ENDPOINT_SPEAKER;
    Source source(endpoint, DocumentElement::ENDPOINT_TYPE, endpoint.getEndpoint(), mDocument);
    source.complete(speakerOrigin(VIRTUAL_BASS_MODE));
    source.complete({Origin::Kind::DEFAULT, ORIENTATION, 0});
    if (isSpeaker) {
        source.complete(speakerOrigin(OUTPUT_MIX_MATRIX));
        sources[DEVICE_OUT_SPEAKER].push_back(source);
    } else if (endpoint.getEndpoint() == ENDPOINT_HEADPHONE) {
        for (const AndroidDevice device : kHeadphoneDevices) {
            sources[device].push_back(source);
        }
    }
}

EntryOrigins::Sources EntryOrigins::profileSources(const EffectList& list) const {
    Sources sources;
    if (const auto found = mProfiles.find(list.profile); found != mProfiles.end()) {
        sources[DEVICE_OUT_DEFAULT].emplace_back(*found->second, DocumentElement::PROFILE,
                                                 ENDPOINT_OTHER, mDocument);
    }
    if (const auto found = mGeqPresets.find(list.profile); found != mGeqPresets.end()) {
        for (const GeqPreset* const preset : found->second) {
            sources[DEVICE_OUT_DEFAULT].emplace_back(*preset, DocumentElement::PRESET,
                                                     ENDPOINT_OTHER, mDocument);
        }
    }
    if (const auto found = mProfileEndpoints.find(list.profile); found != mProfileEndpoints.end()) {
        for (const ProfileEndpoint* const endpoint : found->second) {
            addEndpoint(*endpoint, sources);
        }
    }
    // An endpoint whose preset the document lacks goes with an earlier one's, so the list itself is
    // asked which it was.
    for (const Entry& entry : list.entries) {
        if (entry.code != kivCode(IEID) || entry.values.empty()) {
            continue;
        }
        const auto preset = mIeqPresets.find(entry.values.front());
        if (preset != mIeqPresets.end()) {
            sources[entry.device].emplace_back(*preset->second, DocumentElement::PRESET,
                                               ENDPOINT_OTHER, mDocument);
        }
    }
    return sources;
}

EntryOrigins::Sources EntryOrigins::tuningSources(const EffectList& list) const {
    Sources sources;
    const auto tuning = mTuningOfDevice.find(list.name);
    if (tuning != mTuningOfDevice.end() && !list.entries.empty()) {
        sources[list.entries.front().device].emplace_back(*tuning->second, DocumentElement::TUNING,
                                                          tuning->second->getEndpoint(), mDocument);
    }
    return sources;
}

std::vector<Origins> EntryOrigins::originsOf(const EffectList& list) const {
    const bool isProfile = list.kind == EffectList::Kind::PROFILE;
    Sources sources = isProfile ? profileSources(list) : tuningSources(list);
    /** The sources of a device that an entry under a code may still come from, by both. */
    std::map<std::pair<int32_t, int32_t>, size_t> next;
    std::vector<Origins> all;
    all.reserve(list.entries.size());
    for (const Entry& entry : list.entries) {
        std::deque<Source>& candidates = sources[entry.device];
        size_t& candidate = next[{entry.device, entry.code}];
        const Origins* origins = nullptr;
        while (origins == nullptr && candidate < candidates.size()) {
            origins = candidates[candidate++].origins(entry.code);
        }
        all.push_back(origins == nullptr ? Origins() : *origins);
    }
    return all;
}

}  // namespace ormel::tools
