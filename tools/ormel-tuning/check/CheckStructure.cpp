#include <ormel/SpatializerParamArray.h>

#include "CheckMeaning.h"
#include "text/Text.h"

namespace ormel::tools {

namespace {

using As = ReadElement::As;
using Element = DocumentElement;

void addLostFirst(const CheckContext& context, size_t element) {
    context.addWhole(Rule::LOST_FIRST_CHILD, element, "is lost: no whitespace between it and <",
                     context.document.name(context.document.parent(element)),
                     ">; insert a line break");
}

void addUnknown(const CheckContext& context, size_t element) {
    static const auto& names = *[] {
        auto* const all = new std::vector<std::string>;
        for (ValueSetter* const setter : SetterCollection::kAllValueSetters) {
            all->push_back(setter->getNodeName());
        }
        for (const DocumentElementRow& known : kDocumentElements) {
            all->emplace_back(known.name);
        }
        return all;
    }();
    const bool isHeard = context.findings.countOf(Rule::UNKNOWN_ELEMENT) < Findings::kMaxPerRule;
    const std::string similar = isHeard ? nearestOf(context.document.name(element), names) : "";
    const bool isMisspelt = !similar.empty() && similar != context.document.name(element);
    context.addWhole(Rule::UNKNOWN_ELEMENT, element, "is unknown here and is skipped",
                     isMisspelt ? "; did you mean <" + similar + ">?" : "");
}

void addInclude(const CheckContext& context, size_t element, bool isInProfile) {
    const bool wantsProfile = context.has(VersionRuleKind::INCLUDE_IN_PROFILE);
    // By whether it stands in a profile, and whether the format wants it there.
    static constexpr const char* kRemedies[2][2] = {
            {"make it the first element of the endpoint_type; a comment counts as one",
             "in this format it has to be the second element of the profile"},
            {"in this format it has to be the first element of an endpoint_type",
             "make it the second element of the profile; a comment counts as one"}};
    context.addWhole(Rule::INCLUDE_POSITION, element, "chooses no preset here; ",
                     kRemedies[isInProfile ? 1 : 0][wantsProfile ? 1 : 0]);
}

/** Some formats do not read the settings, one of which would reach the effect. */
void checkUnreadSettings(const CheckContext& context, size_t settings) {
    const VersionRule* const rule =
            findVersionRule(context.formatVersion, VersionRuleKind::SETTINGS_UNREAD);
    if (rule == nullptr || context.data.getProfileEndpoints().empty()) {
        return;
    }
    for (size_t i = settings + 1; i < context.document.end(settings); ++i) {
        const auto text = context.document.attribute(i, "virtual_bass_process");
        if (text && string2Int(*text) != rule->value) {
            context.addAttribute(Rule::OVERWRITTEN, i, "virtual_bass_process",
                                 "is not read in this format, which sets it to ", rule->value);
        }
    }
}

/** The element that keeps a band from its place: one level too many, or after a comment. */
size_t misplacedAbove(const CheckContext& context, size_t band) {
    size_t element = context.document.parent(band);
    while (context.document.parent(element) != 0 && context.document.nodesBefore(element) < 2) {
        element = context.document.parent(element);
    }
    return context.document.parent(element) != 0 ? element : context.document.parent(band);
}

/** A preset has to have as many bands as a profile's list of the graphic equalizer. */
void addBandCount(const CheckContext& context, size_t preset, size_t read) {
    const size_t container = read < 2 ? std::min(preset + 2, context.document.end(preset) - 1)
                                      : context.section(preset).sourceOf(GEQ_FREQUENCY);
    context.addWhole(Rule::GEQ_BAND_COUNT, container, "has ", countText(read, "band", "bands"),
                     ", so the preset is dropped when its profile is applied; write ", kGeqBands);
}

void checkBands(const CheckContext& context, size_t preset) {
    const bool isGeq = context.section(preset).owner == ParameterOwner::GEQ_PRESET;
    const auto& names = isGeq ? GeqValueSetter::kAttrNames : IeqValueSetter::kAttrNames;
    const auto& otherNames = isGeq ? IeqValueSetter::kAttrNames : GeqValueSetter::kAttrNames;
    const auto has = [&](size_t i, const char* name) {
        return context.document.attribute(i, name).has_value();
    };
    const auto isRead = [&](size_t i) { return context.read(i).as == As::BAND; };
    const auto isLike = [&](size_t i) { return has(i, names[0]) || has(i, names[1]); };
    const auto below = [&](const auto& condition) { return context.below(preset, condition); };
    const auto lostFirst = below([&](size_t i) { return context.isLostFirst(i); });
    // Bands that were read and that were not, those of the other type, and what ended the bands.
    const auto valid = below([&](size_t i) { return isRead(i) && isLike(i); });
    const auto lost = below([&](size_t i) { return !isRead(i) && isLike(i); });
    const auto other = below([&](size_t i) { return has(i, otherNames[1]); });
    const auto foreign = below([&](size_t i) { return !isRead(i) && context.read(i).isNamed; });
    const size_t read = below(isRead).size();
    if (!lostFirst.empty()) {
        addLostFirst(context, lostFirst.front());
    } else if (!other.empty() && other.size() == valid.size() + lost.size()) {
        context.addWhole(Rule::OTHER_BANDS, preset, "has the bands of the other type");
    } else if (valid.empty() && !lost.empty() &&
               (foreign.empty() || foreign.front() != lost.front())) {
        context.addWhole(Rule::BAND_DEPTH, misplacedAbove(context, lost.front()),
                         "has its bands where the reader does not look, so it reads none; write "
                         "preset, data, ieq-bands or geq-bands, and the bands in that, with only "
                         "whitespace between the start tags");
    } else if (!foreign.empty()) {
        context.addWhole(Rule::IEQ_BAND_NAME, foreign.front(),
                         "is not named band_ieq and ends the bands: ",
                         countText(lost.size(), "band is", "bands are"), " lost");
    } else if (isGeq && read != kGeqBands) {
        addBandCount(context, preset, read);
    }
}

void checkPreset(const CheckContext& context, size_t preset) {
    const ReadElement& record = context.read(preset);
    if (record.isChildless) {
        context.addWhole(Rule::CHILDLESS, preset,
                         "has no children; the reader takes what follows for its bands");
    } else if (record.section == ReadElement::kNoSection) {
        context.addWhole(Rule::UNKNOWN_PRESET_TYPE, preset,
                         "has neither type ieq nor type geq, so it is skipped");
    } else {
        checkBands(context, preset);
    }
}

/** Checks an element that the reader was at. Returns the place to go on from. */
size_t checkUsed(const CheckContext& context, size_t element, const ReadElement& parent) {
    const ReadElement& record = context.read(element);
    const bool isWrapper = record.as == As::BAND && context.document.end(element) > element + 1;
    const auto* const columns = dynamic_cast<const BandColumnsValueSetter*>(record.setter);
    if (isWrapper && context.document.parent(element) != 0 && !parent.isChildless) {
        context.addWhole(Rule::BAND_DEPTH, element, "is taken for a band, and its content is lost");
    } else if (record.isChildless && columns != nullptr &&
               record.setter->getNodeName() == context.document.name(element)) {
        context.addWhole(
                Rule::CHILDLESS, element,
                "has no bands; the reader takes the element itself and what follows for bands");
    }
    // The first element in a tuning that is no device_id is taken for its data.
    const std::string device = rowOf(Element::DEVICE_ID).name;
    if (parent.is(Element::TUNING) && record.as == As::NOTHING &&
        nearestOf(context.document.name(element), {device, "data"}) == device) {
        addUnknown(context, element);
        return context.document.end(context.document.parent(element));
    }
    return element + 1;
}

/** Returns the place to go on from. */
size_t checkElement(const CheckContext& context, size_t element) {
    const ReadElement& parent = context.read(context.document.parent(element));
    const bool isTop = context.document.parent(element) == 0;
    if (isTop && context.isNamed(element, Element::PRESET)) {
        checkPreset(context, element);
    } else if (context.isUsed(element)) {
        return checkUsed(context, element, parent);
    } else if (context.isLostFirst(element)) {
        addLostFirst(context, element);
    } else if (context.isNamed(element, Element::INCLUDE) &&
               (parent.is(Element::PROFILE) || parent.is(Element::ENDPOINT_TYPE))) {
        addInclude(context, element, parent.is(Element::PROFILE));
    } else if (isTop && context.isNamed(element, Element::AUTHORIZED_TECHNOLOGIES)) {
        checkUnreadSettings(context, element);
    } else if (context.read(element).isNamed || !parent.isEntered) {
        addUnknown(context, element);
    } else {
        context.addWhole(Rule::UNREAD_ELEMENT, element, "is never reached by the reader");
    }
    return context.document.end(element);
}

/** Place of the tuning that the reader stopped at; behind everything if it did not. */
size_t checkStop(const CheckContext& context) {
    const uint32_t section = context.trace.getStop();
    if (section == ReadElement::kNoSection) {
        return context.document.size();
    }
    const size_t tuning = context.trace.getSections()[section].element;
    const auto unread = context.below(0, [&](size_t i) {
        return i > tuning && context.document.parent(i) == 0 &&
               (context.isNamed(i, Element::PROFILE) || context.isNamed(i, Element::PRESET) ||
                context.isNamed(i, Element::TUNING));
    });
    const std::string what =
            unread.empty() ? "nothing follows"
                           : concat(countText(unread.size(), "section", "sections"), " from line ",
                                    context.document.line(unread.front()),
                                    unread.size() == 1 ? " is left unread" : " are left unread");
    context.addWhole(Rule::TUNING_WITHOUT_DATA, tuning,
                     "has no data element, so it is dropped and the reader stops; ", what);
    return tuning;
}

/** Whether there is nothing in it, nor in its data. */
bool isEmpty(const CheckContext& context, const ReadSection& section) {
    const auto isRead = [&](size_t i) {
        const ReadElement& record = context.read(i);
        const bool isEmptyData =
                context.document.end(i) == i + 1 && record.isEntered && record.as == As::NOTHING;
        return !isEmptyData && !record.is(Element::DEVICE_ID);
    };
    return section.kind != Element::DEVICE_ID && context.below(section.element, isRead).empty();
}

void checkSections(const CheckContext& context) {
    for (const ReadSection& section : context.trace.getSections()) {
        if (section.unexpectedChildren != 0 && section.kind != Element::PRESET) {
            context.add(Rule::CHILDLESS, section.element,
                        "has no children where the reader looks for some; it takes ",
                        countText(section.unexpectedChildren, "later element", "later elements"),
                        " for them");
        } else if (section.object != nullptr && isEmpty(context, section)) {
            context.add(Rule::EMPTY_SECTION, section.element, "contains nothing that is read");
        }
    }
}

}  // namespace

void checkStructure(const CheckContext& context) {
    const size_t stop = checkStop(context);
    for (size_t i = 1;
         i < context.document.size() && (context.document.parent(i) != 0 || i <= stop);) {
        i = checkElement(context, i);
    }
    checkSections(context);
}

}  // namespace ormel::tools
