#include "ReadTrace.h"

#include <ormel/ValueSetter.h>
#include <ormel/VersionRules.h>

#include <algorithm>

namespace ormel::tools {

using As = ReadElement::As;

size_t ReadSection::sourceOf(Parameter param, size_t end) const {
    const auto source = std::find_if(sources.rbegin(), sources.rend(), [&](const auto& each) {
        return each.first == param && each.second < end;
    });
    return source == sources.rend() ? kNoElement : source->second;
}

void ReadSection::addSources(const ValueSetter& setter, size_t element) {
    for (size_t i = 0; i < setter.getParamCount(); ++i) {
        sources.emplace_back(setter.getParam(i), element);
    }
}

ReadTrace::ReadTrace(const std::string& path, const std::string& text, const XmlElements& elements)
    : mXml(elements), mElements(elements.size()) {
    mParser.setObserver(this);
    if (mParser.setTuningFile(text, true) != 0) {
        throw RefusedDocument(path + ": " + mParser.getError(), mReached);
    }
    const auto find = [this](ParameterOwner owner, const auto& objects) {
        const std::vector<const void*> all(objects.begin(), objects.end());
        for (ReadSection& section : mSections) {
            if (section.owner == owner && section.place < all.size()) {
                section.object = all[section.place];
                mSectionOfObject[section.object] = &section;
            }
        }
    };
    find(ParameterOwner::NONE, getDocument().getDeviceTunings());
    find(ParameterOwner::IEQ_PRESET, getDocument().getIeqPresets());
    find(ParameterOwner::GEQ_PRESET, getDocument().getGeqPresets());
    find(ParameterOwner::PROFILE, getDocument().getProfiles());
    find(ParameterOwner::PROFILE_ENDPOINT, getDocument().getProfileEndpoints());
    find(ParameterOwner::TUNING, getDocument().getTunings());
}

/** The record of an element that the reader has come to; null for one without a number. */
ReadElement* ReadTrace::come(uint32_t element) {
    if (element >= mElements.size()) {
        return nullptr;
    }
    mReached = mXml.line(element);
    mElements[element].isNamed = true;
    return &mElements[element];
}

void ReadTrace::onSection(const DocumentSection& section) {
    ReadElement* const record = come(section.element);
    if (record == nullptr) {
        return;
    }
    const ParameterOwner owner = rowOf(section.kind).owner;
    const bool isData = section.kind == DocumentElement::DATA;
    // The data of a childless tuning is the tuning itself.
    if (!isData) {
        record->as = As::SECTION;
        record->kind = section.kind;
    }
    if (owner != ParameterOwner::NONE || section.kind == DocumentElement::DEVICE_ID) {
        beginSection(section, owner);
    }
    if (owner != ParameterOwner::NONE || isData ||
        section.kind == DocumentElement::AUTHORIZED_TECHNOLOGIES) {
        noteEntry(section.element);
    }
    if (section.kind == DocumentElement::GLOBAL_SETTING &&
        mXml.attribute(section.element, "virtual_bass_process").has_value()) {
        mSettings = {{VIRTUAL_BASS_TYPE, section.element}};
    }
}

void ReadTrace::noteEntry(size_t element) {
    const bool isChildless = mXml.nodes(element) == 0;
    (isChildless ? mElements[element].isChildless : mElements[element].isEntered) = true;
}

void ReadTrace::beginSection(const DocumentSection& section, ParameterOwner owner) {
    const auto index = static_cast<uint32_t>(mSections.size());
    mElements[section.element].section = index;
    mProfile = owner == ParameterOwner::PROFILE ? index : mProfile;
    mSections.push_back({section.kind, owner, section.element, section.object, mProfile});
    if (owner == ParameterOwner::PROFILE_ENDPOINT) {
        mSections.back().sources = mSettings;
    }
}

void ReadTrace::onPassedOver(uint32_t element, Reason reason) {
    if (come(element) != nullptr && reason == Reason::NO_DATA) {
        mStop = mElements[element].section;
    }
}

void ReadTrace::onParameter(const DocumentSection& section, ValueSetter& setter, uint32_t element) {
    ReadElement* const record = come(element);
    if (record == nullptr || section.element >= mElements.size()) {
        return;
    }
    record->setter = &setter;
    if (section.kind == DocumentElement::PRESET) {
        beginSection(section, kParameterOwners[setter.getParam(0)]);
    } else {
        record->as = As::PARAMETER;
        record->section = mElements[section.element].section;
        mSections[record->section].unexpectedChildren += section.isChildless ? 1 : 0;
        mSections[record->section].addSources(setter, element);
    }
    findBands(element, setter);
}

/** Finds the bands and rows of a parameter where its setter looks for them. */
void ReadTrace::findBands(size_t element, ValueSetter& setter) {
    const auto* const preset = dynamic_cast<const PresetBandsValueSetter*>(&setter);
    const bool isMatrix = dynamic_cast<const MixMatrixValueSetter*>(&setter) != nullptr;
    const bool isColumns = dynamic_cast<const BandColumnsValueSetter*>(&setter) != nullptr;
    const int depth = preset != nullptr ? 3 : isMatrix ? 2 : isColumns ? 1 : 0;
    XmlSiblings at = {element, mXml.end(mXml.parent(element)), true};
    for (int level = 0; level < depth; ++level) {
        if (isMatrix && level == 1 && (!at.isOnFirst || mXml.nodes(at.first) == 0)) {
            return;
        }
        if (at.isOnFirst) {
            noteEntry(at.first);
        }
        at = mXml.childrenNext(at);
    }
    const char* const name = preset == nullptr ? nullptr : preset->getBandName();
    const uint32_t section = mElements[element].section;
    for (size_t i = at.first; depth != 0 && i < at.end; i = mXml.end(i)) {
        mElements[i].isNamed = true;
        if (name != nullptr && mXml.name(i) != name) {
            return;
        }
        mElements[i].as = isMatrix ? As::ROW : As::BAND;
        mElements[i].setter = &setter;
        mElements[i].section = section;
        // A preset's parameters come from the element that its bands are in.
        if (i == at.first && mSections[section].kind == DocumentElement::PRESET) {
            mSections[section].addSources(setter, mXml.parent(i));
        }
    }
}

long ReadTrace::lineOf(const void* object) const {
    const auto section = mSectionOfObject.find(object);
    return section == mSectionOfObject.end() ? 0 : mXml.line(section->second->element);
}

long ReadTrace::lineOf(const ParameterValues& object, Parameter param) const {
    const size_t source = sourceOf(object, param);
    return source == ReadSection::kNoElement ? 0 : mXml.line(source);
}

size_t ReadTrace::sourceOf(const ParameterValues& object, Parameter param) const {
    const auto found = mSectionOfObject.find(&object);
    if (found == mSectionOfObject.end() || object.getValues().count(param) == 0) {
        return ReadSection::kNoElement;
    }
    const ReadSection& section = *found->second;
    const VersionRule* const rule =
            findVersionRule(getDocument().getFormatVersion(), section.owner, param);
    if (rule != nullptr) {
        // A processing instruction that reads as a profile has no section.
        const bool isProfiles = rule->kind == VersionRuleKind::PROFILES_VALUE &&
                                section.outer != ReadElement::kNoSection;
        return isProfiles ? mSections[section.outer].sourceOf(param, section.element)
                          : ReadSection::kNoElement;
    }
    const size_t source = section.sourceOf(param);
    // An endpoint that says nothing of the one goes by the other.
    return source == ReadSection::kNoElement && param == MI_DIALOG_ENHANCER_STEERING_ENABLE
                   ? sourceOf(object, DIALOG_ENHANCER_ENABLE)
                   : source;
}

}  // namespace ormel::tools
