// Checks all parts of a document that callers can see against a plain reading.
#pragma once

#include <ormel/EntryLayout.h>
#include <ormel/SetParamCommand.h>
#include <ormel/SpatializerParamParser.h>
#include <ormel/Translator.h>
#include <ormel/TuningFileParser.h>
#include <ormel/ValueSetter.h>
#include <ormel/VersionRules.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <vector>

#include "Fuzz.h"
#include "PlainReading.h"
#include "PlainTranslators.h"

namespace ormel::fuzz {

/** Compares the dumps of all objects of one kind with those of a plain reading. */
template <typename Objects, typename PlainObjects>
void requireSameObjects(const Objects& objects, PlainObjects& plainObjects) {
    require(objects.size() == plainObjects.size());
    auto plain = plainObjects.begin();
    for (auto* const object : objects) {
        require(object->toString() == (plain++)->toString());
    }
}

inline void requireSameDocument(const DeviceData& data, PlainDocument& plain) {
    require(data.getFormatVersion() == plain.formatVersion &&
            data.getToolVersion() == plain.toolVersion &&
            data.getDeviceName() == plain.deviceName &&
            data.getDeviceIndex() == plain.deviceIndex &&
            data.getTuningVersion() == plain.tuningVersion &&
            data.getAltivoGameSystemGain() == plain.gameSystemGain);
    requireSameObjects(data.getIeqPresets(), plain.ieqPresets);
    requireSameObjects(data.getGeqPresets(), plain.geqPresets);
    requireSameObjects(data.getProfiles(), plain.profiles);
    requireSameObjects(data.getProfileEndpoints(), plain.profileEndpoints);
    requireSameObjects(data.getTunings(), plain.tunings);
    requireSameObjects(data.getDeviceTunings(), plain.deviceTunings);
}

/** equals() must hold for an object and itself, and be symmetric. */
template <typename Object>
void compareAll(const std::set<Object*>& objects) {
    for (const Object* const object : objects) {
        require(object->equals(*object) &&
                object->equals(**objects.begin()) == (*objects.begin())->equals(*object));
    }
}

/** The translator of a parameter must have that parameter among its sources. */
inline void requireTranslators(const ParameterValues& object) {
    const TranslatorCollection collection;
    require(SimpleTranslator(VOL, VOLMAX_BOOST).getSrcParams().front() == VOLMAX_BOOST);
    for (const Parameter param : object.getValidParams()) {
        if (Translator* const translator = collection.getTranslator(param)) {
            const std::vector<Parameter>& params = translator->getSrcParams();
            require(std::find(params.begin(), params.end(), param) != params.end());
        }
    }
}

/** An object must have the values that the format version sets. */
inline void requireVersionRules(const std::string& version, const ParameterValues& object) {
    for (const Parameter param : object.getValidParams()) {
        const VersionRule* const rule = findVersionRule(version, kParameterOwners[param], param);
        if (rule != nullptr && rule->kind == VersionRuleKind::VALUE) {
            require(object.getValues().at(param) == Words{rule->value});
        }
    }
}

/** Number of values in an entry according to its layout, after its source was translated. */
inline size_t valuesByLayout(const EntryLayout& layout, ParameterValues& source,
                             Endpoint endpoint) {
    const auto sizeOf = [&](Parameter param) { return source.getValues()[param].size(); };
    const auto isOff = [&](Parameter param) { return firstOr0(source.getValues()[param]) == 0; };
    if (layout.destination == VBM && isOff(layout.enable[0])) {
        return 1;
    }
    size_t count = 0;
    for (size_t i = 0; i < layout.lists.size(); ++i) {
        count += sizeOf(layout.lists[i]);
    }
    if (layout.destination == DOM) {
        return count + 1 - (endpoint == ENDPOINT_SPEAKER ? 0 : sizeOf(OUTPUT_MIX_MATRIX));
    }
    const auto channels = static_cast<size_t>(firstOr0(source.getValues()[OUTPUT_CHANNELS]));
    for (size_t i = 0; i < std::min(layout.channelLists.size(), channels); ++i) {
        count += sizeOf(layout.channelLists[i]);
    }
    switch (layout.head) {
        case EntryHead::NONE:
            return count;
        case EntryHead::BANDS:
            return count + 1;
        case EntryHead::BANDS_CHANNELS:
        case EntryHead::CHANNELS_BANDS:
            return count + 2;
        case EntryHead::CHANNELS:
            return count + sizeOf(OUTPUT_CHANNELS);
    }
    return count;
}

/** Every entry of a list must have as many values as in its layout. */
inline void requireLayouts(std::vector<int32_t>& list, ParameterValues& source, Endpoint endpoint) {
    SpatializerParamParser entry(list.data(), static_cast<int>(list.size() * sizeof(int32_t)));
    require(entry.begin());
    while (entry.next()) {
        const auto* const code = std::find(std::begin(kKivParameterCodes),
                                           std::end(kKivParameterCodes), entry.mParamCode);
        const auto param = static_cast<KivParameter>(code - kKivParameterCodes);
        const EntryLayout layout = TranslatorCollection().getLayout(param);
        require(static_cast<size_t>(entry.mValueCount) == valuesByLayout(layout, source, endpoint));
    }
}

/** Translates every object, also as for a mono speaker, which no load does. */
template <typename Object>
void translateAll(const std::string& version, const std::set<Object*>& objects, bool mono) {
    constexpr int32_t kDevice = 2;
    for (Object* const object : objects) {
        requireTranslators(*object);
        requireVersionRules(version, *object);
        for (const Endpoint endpoint : {ENDPOINT_SPEAKER, ENDPOINT_HEADPHONE}) {
            Object copy = *object;
            SetParamCommand command(DEVICE_OUT_DEFAULT);
            command.setDeviceId(kDevice);
            ParameterTranslator translator;
            translator.setSource(object, endpoint, mono);
            translator.translateAll(command);
            PlainList plain;
            plain.device = kDevice;
            translate(plain, copy, endpoint, mono);
            require(command.mParamCount == plain.count());
            command.mParams[1] = command.mParamCount;
            require(command.mParams == plain.words);
            requireLayouts(command.mParams, *object, endpoint);
        }
    }
}

/** Sets every value of an object to its present value. */
inline void setAll(ParameterValues& object) {
    object.setDirty(object.getId() != -1);
    const ParameterValues& same = object;
    for (const auto& [param, values] : std::map(same.getValues())) {
        object.set(param, values);
    }
    require(object.isDirty() == !same.getValues().empty());
}

inline void setAll(DeviceData& data) {
    for (IeqPreset* const preset : data.getIeqPresets()) {
        setAll(static_cast<ParameterValues&>(*preset));
        preset->setName(preset->getName());
    }
    for (Profile* const profile : data.getProfiles()) {
        setAll(static_cast<ParameterValues&>(*profile));
        profile->setName(profile->getName());
        profile->setMobility(profile->isMobility());
        profile->setSelectedGeqPreset(profile->getSelectedGeqPreset());
    }
    for (Tuning* const tuning : data.getTunings()) {
        const Endpoint endpoint = tuning->getEndpoint();
        tuning->setEndpoint(endpointName(endpoint));
        tuning->setMono(tuning->isMono());
        require(tuning->getEndpoint() == endpoint && tuning->isReadonly());
    }
    for (GeqPreset* const preset : data.getGeqPresets()) {
        setAll(static_cast<ParameterValues&>(*preset));
    }
    for (ProfileEndpoint* const endpoint : data.getProfileEndpoints()) {
        setAll(static_cast<ParameterValues&>(*endpoint));
    }
    for (DeviceTuning* const binding : data.getDeviceTunings()) {
        binding->setDirty(binding->isDirty() && binding->getId() == -1);
        require(binding->isDirty());
    }
    const std::string signature = data.getFormatVersion() + data.getToolVersion();
    data.setSignature(signature);
    require(data.getSignature() == signature);
}

/** Endpoints whose intelligent equalizer is off must select preset 0. */
inline void validate(DeviceData& data) {
    data.validateData();
    for (ProfileEndpoint* const endpoint : data.getProfileEndpoints()) {
        const Words& enable = endpoint->getValues()[IEQ_ENABLE];
        require(enable.empty() || enable[0] != 0 || endpoint->getSelectedIeqPreset() == 0);
    }
}

/** Checks the positions of objects that the reader reports. */
class PlaceObserver : public TuningFileObserver {
  public:
    void onSection(const DocumentSection& section) override {
        const size_t place = mCounts[section.kind]++;
        if (section.kind == DocumentElement::PROFILE ||
            section.kind == DocumentElement::ENDPOINT_TYPE ||
            section.kind == DocumentElement::TUNING || section.kind == DocumentElement::DEVICE_ID) {
            require(section.object == place);
        }
    }

    void onPassedOver(uint32_t /* element */, Reason reason) override {
        mDropped += reason == Reason::NO_DATA ? 1 : 0;
    }

    /** Call after the document was read. */
    void requireAll(const DeviceData& data) {
        require(mCounts[DocumentElement::PROFILE] == data.getProfiles().size());
        require(mCounts[DocumentElement::ENDPOINT_TYPE] == data.getProfileEndpoints().size());
        require(mCounts[DocumentElement::TUNING] == data.getTunings().size() + mDropped);
        require(mCounts[DocumentElement::DEVICE_ID] == data.getDeviceTunings().size());
    }

  private:
    std::map<DocumentElement, size_t> mCounts;
    size_t mDropped = 0;
};

/** Reads a document from memory with the parser, and checks all of it. */
inline void inspect(const std::string& text, bool mono) {
    TuningFileParser parser;
    TuningFileParser observed;
    PlaceObserver observer;
    observed.setObserver(&observer);
    const int status = parser.setTuningFile(text, true);
    DeviceData* const data = parser.getDeviceData();
    require((status == 0) == (data != nullptr) && (status == 0) == parser.isParsed());
    require(observed.setTuningFile(text, true) == status);
    if (data == nullptr) {
        return;
    }
    PlainStore log;
    PlainDocument plain = PlainReading(readTree(text), log).read();
    require(parser.getNumOfProfiles() == static_cast<int>(plain.profiles.size()));
    for (const Profile& profile : plain.profiles) {
        const std::string name = parser.getProfileName(profile.getProfileId());
        require(profile.getProfileId() != plain.profiles.back().getProfileId() ||
                name == plain.profiles.back().getName());
    }
    const DeviceData& other = *observed.getDeviceData();
    observer.requireAll(other);
    const std::string version = other.getFormatVersion();
    translateAll(version, other.getIeqPresets(), mono);
    translateAll(version, other.getGeqPresets(), mono);
    translateAll(version, other.getProfiles(), mono);
    translateAll(version, other.getProfileEndpoints(), mono);
    translateAll(version, other.getTunings(), mono);
    compareAll(data->getGeqPresets());
    compareAll(data->getProfiles());
    compareAll(data->getProfileEndpoints());
    requireSameDocument(*data, plain);
    setAll(*data);
    validate(*data);
}

/** A setter made by the caller must work like the library's setter of the same class. */
template <typename Setter>
void compareSetter(ValueSetter& setter, TagIterator& cursor) {
#ifdef __cpp_rtti
    const bool isSameClass = typeid(setter) == typeid(Setter);
#else
    // The flags that ship have no RTTI, which leaves no way to tell the classes apart.
    const bool isSameClass = false;
#endif
    if (!isSameClass) {
        return;
    }
    const std::vector<Parameter> params = setter.getParams();
    std::unique_ptr<Setter> own;
    if constexpr (std::is_constructible_v<Setter, std::string, Parameter>) {
        own = std::make_unique<Setter>(setter.getNodeName(), params.front());
    } else {
        own = std::make_unique<Setter>(setter.getNodeName(), params);
    }
    require(own->getNodeName() == setter.getNodeName() && own->getParams() == params);
    GeqPreset values(0);
    GeqPreset ownValues(1, 0);
    setter.set(values, cursor);
    own->set(ownValues, cursor);
    require(values.equals(ownValues));
}

/** Runs every setter at the cursor, whether or not it is on an element of that setter. */
inline void readParameters(TagIterator& cursor) {
    for (ValueSetter* const setter : SetterCollection::kAllValueSetters) {
        compareSetter<SimpleValueSetter>(*setter, cursor);
        compareSetter<RowDataValueSetter>(*setter, cursor);
        compareSetter<DrcRowDataValueSetter>(*setter, cursor);
        compareSetter<MixMatrixValueSetter>(*setter, cursor);
        compareSetter<VirtualBassSubgainValueSetter>(*setter, cursor);
        compareSetter<VirtualBassValueSetter>(*setter, cursor);
        compareSetter<IeqValueSetter>(*setter, cursor);
        compareSetter<GeqValueSetter>(*setter, cursor);
        compareSetter<AudioOptimizerValueSetter>(*setter, cursor);
        compareSetter<RegulatorTuningValueSetter>(*setter, cursor);
    }
}

}  // namespace ormel::fuzz
