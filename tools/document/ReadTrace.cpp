#include "ReadTrace.h"

#include <ormel/ValueSetter.h>
#include <ormel/VersionRules.h>

namespace ormel::tools {

using As = ReadElement::As;

size_t ReadSection::sourceOf(Parameter param, size_t end) const {
    for (auto source = sources.rbegin(); source != sources.rend(); ++source) {
        if (source->first == param && source->second < end) {
            return source->second;
        }
    }
    return kNoElement;
}

ReadTrace::ReadTrace(const std::string& path, const std::string& text, const XmlElements& elements)
    : mXml(elements), mElements(elements.size()) {
    const XmlErrorScope heldBack;
    mParser.setObserver(this);
    if (mParser.setTuningFile(text, true) != 0) {
        throw RefusedDocument(path + ": " + mParser.getError(),
                              mLast == ReadSection::kNoElement ? 0 : mXml.line(mLast));
    }
    findObjects();
}

/** The record of an element that is reported; null for none, and where the text is not known. */
ReadElement* ReadTrace::come(uint32_t element) {
    if (element >= mElements.size()) {
        return nullptr;
    }
    mLast = element;
    mElements[element].isNamed = true;
    return &mElements[element];
}

void ReadTrace::onSection(const DocumentSection& section) {
    ReadElement* const record = come(section.element);
    if (record == nullptr) {
        return;
    }
    // The data of a childless tuning is the tuning itself.
    if (section.kind != DocumentElement::DATA) {
        record->as = As::SECTION;
        record->kind = section.kind;
    }
    const ParameterOwner owner = rowOf(section.kind).owner;
    if (owner != ParameterOwner::NONE || section.kind == DocumentElement::DEVICE_ID) {
        beginSection(section, owner);
    }
    if (owner != ParameterOwner::NONE || section.kind == DocumentElement::DATA ||
        section.kind == DocumentElement::AUTHORIZED_TECHNOLOGIES) {
        noteEntry(section.element);
    }
}

void ReadTrace::noteEntry(size_t element) {
    const bool isChildless = mXml.nodes(element) == 0;
    (isChildless ? mElements[element].isStray : mElements[element].isEntered) = true;
}

void ReadTrace::beginSection(const DocumentSection& section, ParameterOwner owner) {
    const auto index = static_cast<uint32_t>(mSections.size());
    mElements[section.element].section = index;
    mProfile = owner == ParameterOwner::PROFILE ? index : mProfile;
    ReadSection& added = mSections.emplace_back(
            ReadSection{section.kind, owner, section.element, section.object, mProfile});
    if (owner == ParameterOwner::PROFILE_ENDPOINT && mVirtualBass != ReadSection::kNoElement) {
        added.sources.emplace_back(VIRTUAL_BASS_TYPE, mVirtualBass);
    }
}

void ReadTrace::onSetting(const DocumentSection& section, std::string_view name) {
    if (name == "virtual_bass_process" && section.element < mElements.size()) {
        mVirtualBass = section.element;
    }
}

void ReadTrace::onPassedOver(uint32_t element, Reason reason) {
    ReadElement* const record = come(element);
    if (record != nullptr && reason == Reason::NO_DATA) {
        mStop = record->section;
    }
}

void ReadTrace::onParameter(const DocumentSection& section, ValueSetter& setter, uint32_t element) {
    ReadElement* const record = come(element);
    if (record == nullptr || section.element >= mElements.size()) {
        return;
    }
    if (section.kind == DocumentElement::PRESET) {
        beginSection(section, kParameterOwners[setter.getParam(0)]);
    } else {
        record->as = As::PARAMETER;
        record->section = mElements[section.element].section;
        ReadSection& fed = mSections[record->section];
        fed.strays += section.isChildless ? 1 : 0;
        addSources(fed, setter, element);
    }
    record->setter = &setter;
    findBands(element, ReadElement(*record));
}

XmlPosition ReadTrace::enter(const XmlPosition& position) {
    if (mXml.isOnElement(position)) {
        noteEntry(position.element);
    }
    return mXml.childrenNext(position);
}

/** Takes the elements from a position on for bands or rows, all of a name if there is one. */
void ReadTrace::addBands(const XmlPosition& position, As as, const char* name,
                         const ReadElement& parameter) {
    for (size_t i = position.element; i < position.end; i = mXml.end(i)) {
        ReadElement& band = mElements[i];
        band.isNamed = true;
        if (name != nullptr && mXml.name(i) != name) {
            return;
        }
        band.as = as;
        band.setter = parameter.setter;
        band.section = parameter.section;
        ReadSection& section = mSections[parameter.section];
        // A preset's parameters come from the element that its bands are in.
        if (section.kind == DocumentElement::PRESET && section.sources.empty()) {
            addSources(section, *parameter.setter, mXml.parent(i));
        }
    }
}

/** Finds the bands and rows of a parameter where its setter looks for them. */
void ReadTrace::findBands(size_t element, const ReadElement& parameter) {
    const XmlPosition position = mXml.positionOf(element);
    const ValueSetter* const setter = parameter.setter;
    if (const auto* const preset = dynamic_cast<const PresetBandsValueSetter*>(setter)) {
        addBands(enter(enter(enter(position))), As::BAND, preset->getBandName(), parameter);
    } else if (dynamic_cast<const BandColumnsValueSetter*>(setter) != nullptr) {
        addBands(enter(position), As::BAND, nullptr, parameter);
    } else if (dynamic_cast<const MixMatrixValueSetter*>(setter) != nullptr) {
        const XmlPosition matrix = enter(position);
        if (mXml.isOnElement(matrix) && mXml.nodes(matrix.element) != 0) {
            addBands(enter(matrix), As::ROW, nullptr, parameter);
        }
    }
}

void ReadTrace::addSources(ReadSection& section, const ValueSetter& setter, size_t element) {
    for (size_t i = 0; i < setter.getParamCount(); ++i) {
        section.sources.emplace_back(setter.getParam(i), element);
    }
}

void ReadTrace::findObjects() {
    const auto pointersTo = [](const auto& objects) {
        return std::vector<const void*>(objects.begin(), objects.end());
    };
    const DeviceData& document = getDocument();
    // In the order of ParameterOwner.
    const std::vector<const void*> objects[] = {
            pointersTo(document.getDeviceTunings()),    pointersTo(document.getIeqPresets()),
            pointersTo(document.getGeqPresets()),       pointersTo(document.getProfiles()),
            pointersTo(document.getProfileEndpoints()), pointersTo(document.getTunings())};
    for (size_t i = 0; i < mSections.size(); ++i) {
        ReadSection& section = mSections[i];
        const auto& ofClass = objects[static_cast<size_t>(section.owner)];
        if (section.place < ofClass.size()) {
            section.object = ofClass[section.place];
            mSectionOfObject[section.object] = i;
        }
    }
}

const ReadSection* ReadTrace::sectionOf(const void* object) const {
    const auto found = mSectionOfObject.find(object);
    return found == mSectionOfObject.end() ? nullptr : &mSections[found->second];
}

long ReadTrace::lineOf(const void* object) const {
    const ReadSection* const section = sectionOf(object);
    return section == nullptr ? 0 : mXml.line(section->element);
}

long ReadTrace::lineOf(const ParameterValues& object, Parameter param) const {
    const size_t source = sourceOf(object, param);
    return source == ReadSection::kNoElement ? 0 : mXml.line(source);
}

size_t ReadTrace::sourceOf(const ParameterValues& object, Parameter param) const {
    const ReadSection* const section = sectionOf(&object);
    if (section == nullptr || object.getValues().count(param) == 0) {
        return ReadSection::kNoElement;
    }
    const VersionRule* const rule =
            findVersionRule(getDocument().getFormatVersion(), section->owner, param);
    if (rule != nullptr && rule->kind == VersionRuleKind::VALUE) {
        return ReadSection::kNoElement;
    }
    if (rule != nullptr) {
        // A processing instruction that reads as a profile has no section.
        return section->outer == ReadElement::kNoSection
                       ? ReadSection::kNoElement
                       : mSections[section->outer].sourceOf(param, section->element);
    }
    const size_t source = section->sourceOf(param);
    // An endpoint that says nothing of the one goes by the other.
    return source == ReadSection::kNoElement && param == MI_DIALOG_ENHANCER_STEERING_ENABLE
                   ? sourceOf(object, DIALOG_ENHANCER_ENABLE)
                   : source;
}

}  // namespace ormel::tools
