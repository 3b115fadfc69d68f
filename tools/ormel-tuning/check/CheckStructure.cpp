#include <ormel/SpatializerParamArray.h>

#include <algorithm>
#include <string_view>

#include "CheckMeaning.h"
#include "CheckText.h"
#include "text/Text.h"

namespace ormel::tools {

namespace {

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

/** Goes through a document for what its reader left unread. */
class StructureCheck {
  public:
    explicit StructureCheck(const CheckContext& context)
        : mContext(context), mDocument(context.document) {}

    void run() {
        const size_t stop = checkStop();
        for (size_t i = 1; i < mDocument.size();) {
            if (mDocument.parent(i) == 0 && i > stop) {
                break;
            }
            i = checkElement(i);
        }
        checkSections();
    }

  private:
    /** Place of the tuning that the reader stopped at; behind everything if it did not. */
    size_t checkStop() {
        const uint32_t section = mContext.trace.getStop();
        if (section == ReadElement::kNoSection) {
            return mDocument.size();
        }
        const size_t tuning = mContext.trace.getSections()[section].element;
        size_t unread = 0;
        size_t first = 0;
        for (size_t i = mDocument.end(tuning); i < mDocument.size(); i = mDocument.end(i)) {
            if (isNamed(i, DocumentElement::PROFILE) || isNamed(i, DocumentElement::PRESET) ||
                isNamed(i, DocumentElement::TUNING)) {
                first = unread++ == 0 ? i : first;
            }
        }
        std::string what = "has no data element, so it is dropped and the reader stops; ";
        what += unread == 0 ? "nothing follows"
                            : countText(unread, "section", "sections") + " from line " +
                                      std::to_string(mDocument.line(first)) +
                                      (unread == 1 ? " is" : " are") + " left unread";
        mContext.addWhole(Rule::TUNING_WITHOUT_DATA, tuning, what);
        return tuning;
    }

    /** The place to go on from. */
    size_t checkElement(size_t element) {
        const ReadElement& record = mContext.read(element);
        const size_t parent = mDocument.parent(element);
        const bool isTop = parent == 0;
        if (isTop && isNamed(element, DocumentElement::PRESET)) {
            checkPreset(element);
            return mDocument.end(element);
        }
        if (mContext.isUsed(element)) {
            const bool isWrapper = record.as == ReadElement::As::BAND && !isTop &&
                                   mDocument.end(element) > element + 1;
            if (isWrapper && !mContext.read(mDocument.parent(element)).isStray) {
                mContext.addWhole(Rule::BAND_DEPTH, element,
                                  "is taken for a band, and what is in it is lost");
            }
            // The first element in a tuning that is no device_id is taken for its data.
            if (mContext.read(parent).is(DocumentElement::TUNING) &&
                record.as == ReadElement::As::NOTHING && isLikeDevice(element)) {
                addUnknown(element);
                return mDocument.end(parent);
            }
            return element + 1;
        }
        if (mContext.isLostFirst(element)) {
            addLostFirst(element);
        } else if (isNamed(element, DocumentElement::INCLUDE) && isInSection(element)) {
            addInclude(element);
        } else if (isTop && isNamed(element, DocumentElement::AUTHORIZED_TECHNOLOGIES)) {
            checkUnreadSettings(element);
        } else if (record.isNamed || !mContext.read(mDocument.parent(element)).isEntered) {
            addUnknown(element);
        } else {
            mContext.addWhole(Rule::UNREAD_ELEMENT, element,
                              "stands where the reader does not come to it");
        }
        return mDocument.end(element);
    }

    bool isLikeDevice(size_t element) const {
        const std::string device = rowOf(DocumentElement::DEVICE_ID).name;
        return nearestOf(mDocument.name(element), {device, "data"}) == device;
    }

    bool isInSection(size_t element) const {
        const ReadElement& parent = mContext.read(mDocument.parent(element));
        return parent.is(DocumentElement::PROFILE) || parent.is(DocumentElement::ENDPOINT_TYPE);
    }

    bool isNamed(size_t element, DocumentElement kind) const {
        return mDocument.name(element) == rowOf(kind).name;
    }

    void addLostFirst(size_t element) {
        mContext.addWhole(Rule::LOST_FIRST_CHILD, element,
                          "is lost, since nothing parts it from <" +
                                  std::string(mDocument.name(mDocument.parent(element))) +
                                  ">; put a line break in front of it");
    }

    void addUnknown(size_t element) {
        const bool isHeard =
                mContext.findings.countOf(Rule::UNKNOWN_ELEMENT) < Findings::kMaxPerRule;
        const std::string similar = isHeard ? similarName(mDocument.name(element)) : "";
        mContext.addWhole(Rule::UNKNOWN_ELEMENT, element,
                          "is not known here and is passed over" +
                                  (similar.empty() ? "" : "; is <" + similar + "> meant?"));
    }

    void addInclude(size_t element) {
        const bool isProfile =
                mContext.read(mDocument.parent(element)).is(DocumentElement::PROFILE);
        const bool wantsProfile = mContext.has(VersionRuleKind::INCLUDE_IN_PROFILE);
        std::string what = "chooses no preset here; ";
        if (wantsProfile) {
            what += isProfile ? "make it the second thing in the profile, comments counted"
                              : "in this format it has to be the second element of the profile";
        } else {
            what += isProfile ? "in this format it has to be the first element of an endpoint_type"
                              : "make it the first thing in the endpoint_type, ahead of comments";
        }
        mContext.addWhole(Rule::INCLUDE_POSITION, element, what);
    }

    /** Formats 3.2. do not look into the settings, of which one would count. */
    void checkUnreadSettings(size_t settings) {
        const auto& endpoints = mContext.data.getProfileEndpoints();
        if (endpoints.empty()) {
            return;
        }
        const auto& given = (*endpoints.begin())->getValues();
        const auto fixed = given.find(VIRTUAL_BASS_TYPE);
        for (size_t i = settings + 1; i < mDocument.end(settings); ++i) {
            const auto text = mDocument.attribute(i, "virtual_bass_process");
            if (text && fixed != given.end() && string2Int(*text) != firstOr0(fixed->second)) {
                mContext.add(Rule::OVERWRITTEN, i,
                             "is not read in this format, which makes it " +
                                     std::to_string(firstOr0(fixed->second)),
                             "virtual_bass_process");
            }
        }
    }

    void checkPreset(size_t preset) {
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
        if (bands.lostFirst != 0) {
            addLostFirst(bands.lostFirst);
        } else if (bands.other != 0 && bands.other == bands.valid + bands.lost) {
            mContext.addWhole(Rule::OTHER_BANDS, preset, "has the bands of the other type");
        } else if (bands.valid == 0 && bands.lost != 0 && bands.foreign != bands.firstLost) {
            mContext.addWhole(
                    Rule::BAND_DEPTH, misplacedAbove(bands.firstLost),
                    "has its bands where the reader does not look, so it gets none; write "
                    "preset, data, bands and bands' elements, with nothing but whitespace "
                    "between the start tags");
        } else if (bands.foreign != 0) {
            mContext.addWhole(
                    Rule::IEQ_BAND_NAME, bands.foreign,
                    "is no band_ieq and ends the bands: " + countText(bands.lost, "band", "bands") +
                            (bands.lost == 1 ? " is lost" : " are lost"));
        } else {
            checkBandCount(preset, bands.read);
        }
    }

    struct PresetBands {
        /** Elements that were read as bands, and those of them that look like one. */
        size_t read = 0;
        size_t valid = 0;
        /** Elements that look like one and were not read. */
        size_t lost = 0;
        /** Elements with what bands of the other type have and these have not. */
        size_t other = 0;
        /** Places; 0 for none. */
        size_t lostFirst = 0;
        size_t firstLost = 0;
        size_t foreign = 0;
    };

    PresetBands bandsOf(size_t preset) const {
        PresetBands bands;
        const bool isGeq = mContext.read(preset).setter->getParams().front() == GEQ_FREQUENCY;
        const char* const otherValue =
                isGeq ? IeqValueSetter::kAttrNames.back() : GeqValueSetter::kAttrNames.back();
        for (size_t i = preset + 1; i < mDocument.end(preset); ++i) {
            const ReadElement& record = mContext.read(i);
            const bool isRead = record.as == ReadElement::As::BAND;
            const bool looksLikeOne = hasBandAttribute(i, mContext.read(preset).setter);
            bands.read += isRead ? 1 : 0;
            bands.valid += isRead && looksLikeOne ? 1 : 0;
            bands.lost += !isRead && looksLikeOne ? 1 : 0;
            bands.firstLost = bands.firstLost == 0 && !isRead && looksLikeOne ? i : bands.firstLost;
            bands.other += hasAttribute(i, otherValue) ? 1 : 0;
            if (bands.lostFirst == 0 && mContext.isLostFirst(i)) {
                bands.lostFirst = i;
            }
            if (bands.foreign == 0 && record.isNamed && !isRead) {
                bands.foreign = i;
            }
        }
        return bands;
    }

    /** The element that keeps a band from lying where it should: one too many, or behind a comment.
     */
    size_t misplacedAbove(size_t band) const {
        size_t element = mDocument.parent(band);
        while (mDocument.parent(element) != 0 &&
               mContext.document.elements().nodesBefore(element) < 2) {
            element = mDocument.parent(element);
        }
        return mDocument.parent(element) != 0 ? element : mDocument.parent(band);
    }

    bool hasAttribute(size_t element, std::string_view name) const {
        return mDocument.attribute(element, name).has_value();
    }

    bool hasBandAttribute(size_t element, const ValueSetter* setter) const {
        const std::vector<std::string> names = attributeNamesOf(setter);
        return std::any_of(names.begin(), names.end(),
                           [&](const std::string& name) { return hasAttribute(element, name); });
    }

    void checkBandCount(size_t preset, size_t read) {
        // As many as a profile's list of the graphic equalizer has to have to be sent.
        if (mContext.read(preset).setter->getParams().front() != GEQ_FREQUENCY ||
            read == kGeqBands) {
            return;
        }
        size_t container = mContext.section(preset).sourceOf(GEQ_FREQUENCY);
        if (read < 2) {
            container = std::min(preset + 2, mDocument.end(preset) - 1);
        }
        mContext.addWhole(Rule::GEQ_BAND_COUNT, container,
                          "has " + countText(read, "band", "bands") +
                                  ", so the preset is dropped when its profile is applied; write " +
                                  std::to_string(kGeqBands));
    }

    /** Whether there is nothing in it, nor in its data. */
    bool isEmpty(const ReadSection& section) const {
        size_t i = section.element + 1;
        while (i < mDocument.end(section.element) &&
               (mContext.read(i).is(DocumentElement::DEVICE_ID) || isEmptyData(i))) {
            ++i;
        }
        return i == mDocument.end(section.element) && section.kind != DocumentElement::DEVICE_ID;
    }

    bool isEmptyData(size_t element) const {
        const ReadElement& record = mContext.read(element);
        return mDocument.end(element) == element + 1 && record.isEntered &&
               record.as == ReadElement::As::NOTHING;
    }

    void checkSections() {
        for (const ReadSection& section : mContext.trace.getSections()) {
            if (section.strays != 0 && section.kind != DocumentElement::PRESET) {
                mContext.add(Rule::CHILDLESS, section.element,
                             "has no children where the reader looks for some; it takes " +
                                     countText(section.strays, "element", "elements") + " that " +
                                     (section.strays == 1 ? "follows" : "follow") + " for them");
            } else if (section.object != nullptr && isEmpty(section)) {
                mContext.add(Rule::EMPTY_SECTION, section.element,
                             "has nothing in it that is read");
            }
        }
        for (size_t i = 1; i < mDocument.size(); ++i) {
            const ReadElement& record = mContext.read(i);
            const bool isColumns = dynamic_cast<const BandColumnsValueSetter*>(record.setter);
            if (record.isStray && isColumns && record.setter->getNodeName() == mDocument.name(i)) {
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
