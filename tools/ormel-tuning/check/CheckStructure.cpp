#include <ormel/SpatializerParamArray.h>

#include <algorithm>
#include <array>
#include <string_view>

#include "CheckMeaning.h"
#include "CheckText.h"
#include "text/Text.h"

namespace ormel::tools {

namespace {

using As = ReadElement::As;
using Element = DocumentElement;

/** A parameter's or section's name that is like an unknown one; empty where none is. */
std::string similarName(std::string_view name) {
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
    const std::string similar = nearestOf(name, names);
    return similar == name ? "" : similar;
}

/** What is below a preset. */
struct PresetBands {
    /** Number of the elements that were read as bands, and of those of them that look like one. */
    size_t read = 0;
    size_t valid = 0;
    /** Number of those with what bands of the other type have and these have not. */
    size_t other = 0;
    /** Places of those that look like a band and were not read. */
    std::vector<size_t> lost;
    /** Places; 0 for none. */
    size_t lostFirst = 0;
    size_t foreign = 0;
};

/** Goes through a document for what its reader left unread. */
class StructureCheck {
  public:
    explicit StructureCheck(const CheckContext& context)
        : mContext(context), mDocument(context.document) {}

    void run() {
        const size_t stop = checkStop();
        for (size_t i = 1; i < mDocument.size() && (mDocument.parent(i) != 0 || i <= stop);) {
            i = checkElement(i);
        }
        checkSections();
        checkStrayBands();
    }

  private:
    /** Place of the tuning that the reader stopped at; behind everything if it did not. */
    size_t checkStop() const {
        const uint32_t section = mContext.trace.getStop();
        if (section == ReadElement::kNoSection) {
            return mDocument.size();
        }
        const size_t tuning = mContext.trace.getSections()[section].element;
        std::vector<size_t> unread;
        for (size_t i = mDocument.end(tuning); i < mDocument.size(); i = mDocument.end(i)) {
            if (mContext.isNamed(i, Element::PROFILE) || mContext.isNamed(i, Element::PRESET) ||
                mContext.isNamed(i, Element::TUNING)) {
                unread.push_back(i);
            }
        }
        const std::string what =
                unread.empty()
                        ? "nothing follows"
                        : concat(countText(unread.size(), "section", "sections"), " from line ",
                                 mDocument.line(unread.front()),
                                 unread.size() == 1 ? " is left unread" : " are left unread");
        mContext.addWhole(Rule::TUNING_WITHOUT_DATA, tuning,
                          "has no data element, so it is dropped and the reader stops; ", what);
        return tuning;
    }

    /** The place to go on from. */
    size_t checkElement(size_t element) const {
        const ReadElement& parent = mContext.read(mDocument.parent(element));
        const bool isTop = mDocument.parent(element) == 0;
        if (isTop && mContext.isNamed(element, Element::PRESET)) {
            checkPreset(element);
        } else if (mContext.isUsed(element)) {
            return checkUsed(element, parent);
        } else if (mContext.isLostFirst(element)) {
            addLostFirst(element);
        } else if (mContext.isNamed(element, Element::INCLUDE) &&
                   (parent.is(Element::PROFILE) || parent.is(Element::ENDPOINT_TYPE))) {
            addInclude(element, parent.is(Element::PROFILE));
        } else if (isTop && mContext.isNamed(element, Element::AUTHORIZED_TECHNOLOGIES)) {
            checkUnreadSettings(element);
        } else if (mContext.read(element).isNamed || !parent.isEntered) {
            addUnknown(element);
        } else {
            mContext.addWhole(Rule::UNREAD_ELEMENT, element,
                              "stands where the reader does not come to it");
        }
        return mDocument.end(element);
    }

    size_t checkUsed(size_t element, const ReadElement& parent) const {
        const As as = mContext.read(element).as;
        const bool isWrapper = as == As::BAND && mDocument.end(element) > element + 1;
        if (isWrapper && mDocument.parent(element) != 0 && !parent.isStray) {
            mContext.addWhole(Rule::BAND_DEPTH, element,
                              "is taken for a band, and what is in it is lost");
        }
        // The first element in a tuning that is no device_id is taken for its data.
        const std::string device = rowOf(Element::DEVICE_ID).name;
        if (parent.is(Element::TUNING) && as == As::NOTHING &&
            nearestOf(mDocument.name(element), {device, "data"}) == device) {
            addUnknown(element);
            return mDocument.end(mDocument.parent(element));
        }
        return element + 1;
    }

    void addLostFirst(size_t element) const {
        mContext.addWhole(Rule::LOST_FIRST_CHILD, element, "is lost, since nothing parts it from <",
                          mDocument.name(mDocument.parent(element)),
                          ">; put a line break in front of it");
    }

    void addUnknown(size_t element) const {
        const bool isHeard =
                mContext.findings.countOf(Rule::UNKNOWN_ELEMENT) < Findings::kMaxPerRule;
        const std::string similar = isHeard ? similarName(mDocument.name(element)) : "";
        mContext.addWhole(Rule::UNKNOWN_ELEMENT, element, "is not known here and is passed over",
                          similar.empty() ? "" : "; is <" + similar + "> meant?");
    }

    void addInclude(size_t element, bool isInProfile) const {
        const bool wantsProfile = mContext.has(VersionRuleKind::INCLUDE_IN_PROFILE);
        const char* const remedy =
                wantsProfile == isInProfile
                        ? (isInProfile ? "make it the second thing in the profile, comments counted"
                                       : "make it the first thing in the endpoint_type, ahead of "
                                         "comments")
                        : (wantsProfile
                                   ? "in this format it has to be the second element of the profile"
                                   : "in this format it has to be the first element of an "
                                     "endpoint_type");
        mContext.addWhole(Rule::INCLUDE_POSITION, element, "chooses no preset here; ", remedy);
    }

    /** Some formats do not look into the settings, of which one would count. */
    void checkUnreadSettings(size_t settings) const {
        const VersionRule* const rule =
                findVersionRule(mContext.formatVersion, VersionRuleKind::SETTINGS_UNREAD);
        if (rule == nullptr || mContext.data.getProfileEndpoints().empty()) {
            return;
        }
        for (size_t i = settings + 1; i < mDocument.end(settings); ++i) {
            const auto text = mDocument.attribute(i, "virtual_bass_process");
            if (text && string2Int(*text) != rule->value) {
                mContext.addAttribute(Rule::OVERWRITTEN, i, "virtual_bass_process",
                                      "is not read in this format, which makes it ", rule->value);
            }
        }
    }

    void checkPreset(size_t preset) const {
        const ReadElement& record = mContext.read(preset);
        if (record.isStray) {
            mContext.addWhole(Rule::CHILDLESS, preset,
                              "has no children; the reader takes what follows it for its bands");
            return;
        }
        if (record.section == ReadElement::kNoSection) {
            mContext.addWhole(Rule::UNKNOWN_PRESET_TYPE, preset,
                              "is neither of type ieq nor of type geq, and is passed over");
            return;
        }
        const PresetBands bands = bandsOf(preset);
        const size_t lost = bands.lost.size();
        if (bands.lostFirst != 0) {
            addLostFirst(bands.lostFirst);
        } else if (bands.other != 0 && bands.other == bands.valid + lost) {
            mContext.addWhole(Rule::OTHER_BANDS, preset, "has the bands of the other type");
        } else if (bands.valid == 0 && lost != 0 && bands.foreign != bands.lost.front()) {
            mContext.addWhole(
                    Rule::BAND_DEPTH, misplacedAbove(bands.lost.front()),
                    "has its bands where the reader does not look, so it gets none; write "
                    "preset, data, bands and bands' elements, with nothing but whitespace "
                    "between the start tags");
        } else if (bands.foreign != 0) {
            mContext.addWhole(Rule::IEQ_BAND_NAME, bands.foreign,
                              "is no band_ieq and ends the bands: ",
                              countText(lost, "band is", "bands are"), " lost");
        } else if (isGeq(preset) && bands.read != kGeqBands) {
            addBandCount(preset, bands.read);
        }
    }

    bool isGeq(size_t preset) const {
        return mContext.section(preset).owner == ParameterOwner::GEQ_PRESET;
    }

    PresetBands bandsOf(size_t preset) const {
        const auto& ieq = IeqValueSetter::kAttrNames;
        const auto& geq = GeqValueSetter::kAttrNames;
        const auto& names = isGeq(preset) ? geq : ieq;
        const char* const otherValue = (isGeq(preset) ? ieq : geq).back();
        PresetBands bands;
        for (size_t i = preset + 1; i < mDocument.end(preset); ++i) {
            const auto hasAttribute = [&](const char* name) {
                return mDocument.attribute(i, name).has_value();
            };
            const bool isRead = mContext.read(i).as == As::BAND;
            const bool looksLikeOne = std::any_of(names.begin(), names.end(), hasAttribute);
            bands.read += isRead ? 1 : 0;
            bands.valid += isRead && looksLikeOne ? 1 : 0;
            bands.other += hasAttribute(otherValue) ? 1 : 0;
            if (!isRead && looksLikeOne) {
                bands.lost.push_back(i);
            }
            if (bands.lostFirst == 0 && mContext.isLostFirst(i)) {
                bands.lostFirst = i;
            }
            if (bands.foreign == 0 && mContext.read(i).isNamed && !isRead) {
                bands.foreign = i;
            }
        }
        return bands;
    }

    /** The element that keeps a band from its place: one too many, or behind a comment. */
    size_t misplacedAbove(size_t band) const {
        size_t element = mDocument.parent(band);
        while (mDocument.parent(element) != 0 && mDocument.elements().nodesBefore(element) < 2) {
            element = mDocument.parent(element);
        }
        return mDocument.parent(element) != 0 ? element : mDocument.parent(band);
    }

    /** A preset has to have as many bands as a profile's list of the graphic equalizer. */
    void addBandCount(size_t preset, size_t read) const {
        const size_t container = read < 2 ? std::min(preset + 2, mDocument.end(preset) - 1)
                                          : mContext.section(preset).sourceOf(GEQ_FREQUENCY);
        mContext.addWhole(Rule::GEQ_BAND_COUNT, container, "has ", countText(read, "band", "bands"),
                          ", so the preset is dropped when its profile is applied; write ",
                          kGeqBands);
    }

    /** Whether there is nothing in it, nor in its data. */
    bool isEmpty(const ReadSection& section) const {
        const size_t end = mDocument.end(section.element);
        for (size_t i = section.element + 1; i < end; ++i) {
            const ReadElement& record = mContext.read(i);
            const bool isEmptyData =
                    mDocument.end(i) == i + 1 && record.isEntered && record.as == As::NOTHING;
            if (!isEmptyData && !record.is(Element::DEVICE_ID)) {
                return false;
            }
        }
        return section.kind != Element::DEVICE_ID;
    }

    void checkSections() const {
        for (const ReadSection& section : mContext.trace.getSections()) {
            if (section.strays != 0 && section.kind != Element::PRESET) {
                mContext.add(
                        Rule::CHILDLESS, section.element,
                        "has no children where the reader looks for some; it takes ",
                        countText(section.strays, "element that follows", "elements that follow"),
                        " for them");
            } else if (section.object != nullptr && isEmpty(section)) {
                mContext.add(Rule::EMPTY_SECTION, section.element,
                             "has nothing in it that is read");
            }
        }
    }

    void checkStrayBands() const {
        for (size_t i = 1; i < mDocument.size(); ++i) {
            const ReadElement& record = mContext.read(i);
            if (record.isStray && dynamic_cast<const BandColumnsValueSetter*>(record.setter) &&
                record.setter->getNodeName() == mDocument.name(i)) {
                mContext.addWhole(
                        Rule::CHILDLESS, i,
                        "has no bands; the reader takes itself and what follows for them");
            }
        }
    }

    const CheckContext& mContext;
    const CheckDocument& mDocument;
};

}  // namespace

void checkStructure(const CheckContext& context) {
    StructureCheck(context).run();
}

}  // namespace ormel::tools
