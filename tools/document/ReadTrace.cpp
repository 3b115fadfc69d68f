#include "ReadTrace.h"

#include <ormel/ValueSetter.h>
#include <ormel/VersionRules.h>

namespace ormel::tools {

using As = ReadElement::As;

/** A node among its siblings. */
struct ReadTrace::Position {
    /** Number of nodes before it. */
    size_t node;
    /** The first element that is not before it, at @p end if there is none. */
    size_t element;
    size_t end;
};

ParameterOwner ownerOf(DocumentElement section) {
    switch (section) {
        case DocumentElement::PROFILE:
            return ParameterOwner::PROFILE;
        case DocumentElement::ENDPOINT_TYPE:
            return ParameterOwner::PROFILE_ENDPOINT;
        case DocumentElement::TUNING:
            return ParameterOwner::TUNING;
        default:
            return ParameterOwner::NONE;
    }
}

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
    const DeviceData& document = getDocument();
    match(document.getIeqPresets(), DocumentElement::PRESET, ParameterOwner::IEQ_PRESET);
    match(document.getGeqPresets(), DocumentElement::PRESET, ParameterOwner::GEQ_PRESET);
    match(document.getProfiles(), DocumentElement::PROFILE, ParameterOwner::NONE);
    match(document.getProfileEndpoints(), DocumentElement::ENDPOINT_TYPE, ParameterOwner::NONE);
    match(document.getTunings(), DocumentElement::TUNING, ParameterOwner::NONE);
    match(document.getDeviceTunings(), DocumentElement::DEVICE_ID, ParameterOwner::NONE);
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
    const bool isData = section.kind == DocumentElement::DATA;
    if (record == nullptr) {
        return;
    }
    if (!isData) {
        record->as = As::SECTION;
        record->kind = section.kind;
    }
    switch (section.kind) {
        case DocumentElement::PROFILE:
        case DocumentElement::ENDPOINT_TYPE:
        case DocumentElement::TUNING:
            beginSection(section);
            [[fallthrough]];
        case DocumentElement::AUTHORIZED_TECHNOLOGIES:
        case DocumentElement::DATA:
            (mXml.nodes(section.element) == 0 ? record->isStray : record->isEntered) = true;
            break;
        case DocumentElement::DEVICE_ID:
            beginSection(section);
            break;
        default:
            break;
    }
}

void ReadTrace::beginSection(const DocumentSection& section) {
    const auto index = static_cast<uint32_t>(mSections.size());
    mElements[section.element].section = index;
    ReadSection& added =
            mSections.emplace_back(ReadSection{section.kind, section.element, section.object});
    if (section.kind == DocumentElement::PROFILE) {
        mProfile = index;
    } else if (section.kind == DocumentElement::ENDPOINT_TYPE) {
        added.outer = mProfile;
        if (mVirtualBass != ReadSection::kNoElement) {
            added.sources.emplace_back(VIRTUAL_BASS_TYPE, mVirtualBass);
        }
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
        beginSection(section);
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

bool ReadTrace::isAt(const Position& position) const {
    return position.element < position.end && mXml.nodesBefore(position.element) == position.node;
}

/** Does as TagIterator::childrenNext() does. */
ReadTrace::Position ReadTrace::enter(const Position& position) {
    const size_t element = position.element;
    if (!isAt(position)) {
        return position;
    }
    const bool isChildless = mXml.nodes(element) == 0;
    (isChildless ? mElements[element].isStray : mElements[element].isEntered) = true;
    if (isChildless) {
        return position;
    }
    const size_t child = element + 1;
    const bool isLost = child < mXml.end(element) && mXml.nodesBefore(child) == 0;
    return {1, isLost ? mXml.end(child) : child, mXml.end(element)};
}

/** Takes the elements from a position on for bands or rows, all of a name if there is one. */
void ReadTrace::addBands(const Position& position, As as, const char* name,
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
    const size_t end = element == 0 ? mXml.size() : mXml.end(mXml.parent(element));
    const Position position = {mXml.nodesBefore(element), element, end};
    const ValueSetter* const setter = parameter.setter;
    if (const auto* const preset = dynamic_cast<const PresetBandsValueSetter*>(setter)) {
        addBands(enter(enter(enter(position))), As::BAND, preset->getBandName(), parameter);
    } else if (dynamic_cast<const BandColumnsValueSetter*>(setter) != nullptr) {
        addBands(enter(position), As::BAND, nullptr, parameter);
    } else if (dynamic_cast<const MixMatrixValueSetter*>(setter) != nullptr) {
        const Position matrix = enter(position);
        if (isAt(matrix) && mXml.nodes(matrix.element) != 0) {
            addBands(enter(matrix), As::ROW, nullptr, parameter);
        }
    }
}

void ReadTrace::addSources(ReadSection& section, const ValueSetter& setter, size_t element) {
    for (size_t i = 0; i < setter.getParamCount(); ++i) {
        section.sources.emplace_back(setter.getParam(i), element);
    }
}

/** @param owner of presets, the class of the objects */
template <typename Objects>
void ReadTrace::match(const Objects& objects, DocumentElement kind, ParameterOwner owner) {
    const std::vector<const void*> places(objects.begin(), objects.end());
    for (size_t i = 0; i < mSections.size(); ++i) {
        ReadSection& section = mSections[i];
        const bool isTheirs =
                section.kind == kind &&
                (owner == ParameterOwner::NONE ||
                 kParameterOwners[mElements[section.element].setter->getParam(0)] == owner);
        if (isTheirs && section.place < places.size()) {
            section.object = places[section.place];
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
            findVersionRule(getDocument().getFormatVersion(), ownerOf(section->kind), param);
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
