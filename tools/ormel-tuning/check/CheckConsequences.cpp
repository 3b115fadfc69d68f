// One finding for one mistake: whether the format is a mistake, and what comes of which mistake.
#include <algorithm>
#include <bitset>
#include <initializer_list>
#include <map>
#include <tuple>
#include <unordered_map>
#include <vector>

#include "CheckMeaning.h"
#include "CheckText.h"
#include "text/Text.h"

namespace ormel::tools {

namespace {

using RuleBits = std::bitset<std::size(kRules)>;

RuleBits bitsOf(std::initializer_list<Rule> rules) {
    RuleBits bits;
    for (const Rule rule : rules) {
        bits.set(static_cast<size_t>(rule));
    }
    return bits;
}

/** Where a mistake has its consequences. */
enum class Scope {
    ELEMENT,
    /** In the same child of the root. */
    SECTION,
    /** Anywhere, if the mistake is in what sections are found by. */
    DOCUMENT,
};

struct Consequence {
    Scope scope;
    RuleBits effects;
    RuleBits causes;
};

using R = Rule;

/** By cause. Of an element's findings only the one that says most stays anyway. */
const std::vector<Consequence>& consequences() {
    static const RuleBits structure =
            bitsOf({R::UNKNOWN_ELEMENT, R::UNREAD_ELEMENT, R::LOST_FIRST_CHILD, R::CHILDLESS,
                    R::EMPTY_SECTION, R::TUNING_WITHOUT_DATA, R::BAND_DEPTH, R::IEQ_BAND_NAME,
                    R::INCLUDE_POSITION, R::WRONG_SECTION, R::LATE_IEQ, R::ENTITY_REFERENCE});
    static const RuleBits texts =
            bitsOf({R::UNKNOWN_ATTRIBUTE, R::MISSING_ATTRIBUTE, R::NOT_A_NUMBER, R::OUT_OF_RANGE,
                    R::ROW_CUT, R::SHORT_COLUMN});
    static const RuleBits ids =
            bitsOf({R::REPEATED_PRESET, R::REPEATED_PROFILE, R::REPEATED_ENDPOINT, R::PROFILE_ID,
                    R::UNKNOWN_PRESET, R::MISSING_PRESET, R::UNKNOWN_PRESET_TYPE,
                    R::UNKNOWN_ENDPOINT, R::OTHER_BANDS, R::GEQ_BAND_COUNT, R::GEQ_PROFILE});
    static const std::vector<Consequence> all = {
            {Scope::ELEMENT, bitsOf({R::MISSING_ATTRIBUTE, R::SHORT_COLUMN, R::ROW_CUT}),
             bitsOf({R::UNKNOWN_ATTRIBUTE})},
            {Scope::SECTION, bitsOf({R::SCHEMA}), structure},
            {Scope::SECTION, bitsOf({R::UNEQUAL_COLUMNS, R::MIX_MATRIX_LENGTH}),
             structure | texts | bitsOf({R::ROW_LENGTH, R::CHANNELS_NOT_SENT, R::ABSENT})},
            {Scope::SECTION, bitsOf({R::STRESS_AMOUNTS}),
             bitsOf({R::CHANNELS_NOT_SENT, R::MISSING_ATTRIBUTE, R::UNKNOWN_ATTRIBUTE})},
            {Scope::SECTION, bitsOf({R::ABSENT}), structure | texts | ids},
            {Scope::SECTION, bitsOf({R::EMPTY_SECTION, R::FREQUENCY_UNLIKE, R::IMPLAUSIBLE}),
             structure},
            {Scope::SECTION, bitsOf({R::INCLUDE_POSITION, R::LATE_IEQ}),
             bitsOf({R::LOST_FIRST_CHILD})},
            {Scope::SECTION, bitsOf({R::INCLUDE_POSITION}), bitsOf({R::LATE_IEQ})},
            {Scope::DOCUMENT,
             bitsOf({R::SCHEMA, R::UNKNOWN_ELEMENT, R::WRONG_SECTION, R::INCLUDE_POSITION,
                     R::REPEATED_VALUE, R::REPEATED_ENDPOINT, R::OVERWRITTEN, R::LATE_IEQ,
                     R::UNREAD_ELEMENT, R::UNKNOWN_ATTRIBUTE, R::ABSENT}),
             bitsOf({R::CHILDLESS, R::EMPTY_SECTION, R::TUNING_WITHOUT_DATA})},
            {Scope::DOCUMENT, bitsOf({R::MISSING_DEFAULT_DEVICE}),
             structure | bitsOf({R::UNKNOWN_PORT, R::UNSUPPORTED_PORT, R::REPEATED_DEVICE,
                                 R::UNKNOWN_ATTRIBUTE, R::MISSING_ATTRIBUTE, R::SCHEMA})},
            {Scope::SECTION, bitsOf({R::REPEATED_ENDPOINT}),
             bitsOf({R::UNKNOWN_ENDPOINT, R::UNKNOWN_ATTRIBUTE, R::MISSING_ATTRIBUTE})},
            {Scope::DOCUMENT, bitsOf({R::REPEATED_PRESET, R::REPEATED_PROFILE, R::MISSING_PRESET}),
             bitsOf({R::UNKNOWN_PRESET, R::OTHER_BANDS, R::UNKNOWN_ATTRIBUTE, R::MISSING_ATTRIBUTE,
                     R::NOT_A_NUMBER})},
            {Scope::DOCUMENT, bitsOf({R::MISSING_PRESET}),
             structure | bitsOf({R::REPEATED_PRESET, R::UNKNOWN_PRESET_TYPE})},
            {Scope::DOCUMENT, bitsOf({R::GEQ_PROFILE}),
             structure | ids |
                     bitsOf({R::MISSING_ATTRIBUTE, R::UNKNOWN_ATTRIBUTE, R::NOT_A_NUMBER})},
            {Scope::DOCUMENT, bitsOf({R::ABSENT}), structure | ids},
            {Scope::DOCUMENT,
             texts | ids |
                     bitsOf({R::OVERWRITTEN, R::SCHEMA, R::ABSENT, R::INCLUDE_POSITION, R::LATE_IEQ,
                             R::WRONG_SECTION}),
             bitsOf({R::OTHER_FORMAT})},
    };
    return all;
}

/** Which findings of an element stand for the others: the lowest, with those of its attributes. */
int rankOf(const Finding& finding) {
    const bool isNote = rowOf(finding.rule).severity == Severity::NOTE;
    const bool isVague = isNote || finding.rule == Rule::UNEQUAL_COLUMNS;
    return finding.isWhole ? 0 : !finding.attribute.empty() ? 1 : isVague ? 3 : 2;
}

/** What was found where, before anything is dropped. */
class Found {
  public:
    Found(const CheckDocument& document, const Findings& findings) : mDocument(document) {
        for (const Finding& finding : findings.all()) {
            const auto rule = static_cast<size_t>(finding.rule);
            if (finding.element == Finding::kNoElement) {
                continue;
            }
            // What is in the wrong section is missing from another.
            mOfDocument.set(rule, mOfDocument[rule] || isOfSection(finding.element) ||
                                          finding.rule == R::WRONG_SECTION);
            mOfElement[finding.element].set(rule);
            mOfSection[sectionOf(finding.element)].set(rule);
            const auto [best, isNew] = mBest.try_emplace(finding.element, keyOf(finding));
            best->second = std::min(best->second, keyOf(finding));
            if (finding.isWhole && finding.element != 0) {
                mWholes.push_back(finding.element);
            }
        }
        std::sort(mWholes.begin(), mWholes.end());
    }

    bool isConsequence(const Finding& finding) const {
        if (finding.element == Finding::kNoElement) {
            return false;
        }
        const auto& best = mBest.at(finding.element);
        const bool isPassed = best != keyOf(finding) && !(best.first == 1 && rankOf(finding) == 1);
        return isPassed || isInWhole(finding.element) ||
               std::any_of(consequences().begin(), consequences().end(),
                           [&](const Consequence& each) { return isEffect(finding, each); });
    }

  private:
    using Key = std::pair<int, Rule>;

    static Key keyOf(const Finding& finding) { return {rankOf(finding), finding.rule}; }

    /** Whether it is one of those that sections are found by, and no parameter. */
    bool isOfSection(size_t element) const {
        const size_t parent = mDocument.parent(element);
        const auto isNamed = [name = mDocument.name(element)](const DocumentElementRow& row) {
            return name == row.name;
        };
        return parent == 0 || mDocument.name(parent) == rowOf(DocumentElement::TUNING).name ||
               std::any_of(std::begin(kDocumentElements), std::end(kDocumentElements), isNamed);
    }

    size_t sectionOf(size_t element) const {
        while (mDocument.parent(element) != 0) {
            element = mDocument.parent(element);
        }
        return element;
    }

    /** Whether it lies below an element that is affected as a whole. */
    bool isInWhole(size_t element) const {
        while (element != 0) {
            element = mDocument.parent(element);
            if (std::binary_search(mWholes.begin(), mWholes.end(), element)) {
                return true;
            }
        }
        return false;
    }

    bool isEffect(const Finding& finding, const Consequence& row) const {
        const auto rule = static_cast<size_t>(finding.rule);
        if (!row.effects[rule]) {
            return false;
        }
        RuleBits causes = row.causes;
        causes.reset(rule);
        const RuleBits& found = row.scope == Scope::ELEMENT ? mOfElement.at(finding.element)
                                : row.scope == Scope::SECTION
                                        ? mOfSection.at(sectionOf(finding.element))
                                        : mOfDocument;
        return (found & causes).any();
    }

    const CheckDocument& mDocument;
    RuleBits mOfDocument;
    std::unordered_map<size_t, RuleBits> mOfElement;
    std::unordered_map<size_t, RuleBits> mOfSection;
    std::unordered_map<size_t, Key> mBest;
    std::vector<size_t> mWholes;
};

}  // namespace

void checkFormat(const CheckContext& context) {
    const bool isNamed = context.has(VersionRuleKind::IEQ_PRESETS_NAMED);
    bool isGiven = false;
    size_t version = 0;
    size_t settings = 0;
    size_t others = 0;
    size_t known = 0;
    std::map<std::string, size_t> overwritten;
    for (size_t i = 1; i < context.document.size(); ++i) {
        const ReadElement& record = context.read(i);
        isGiven = isGiven || record.is(DocumentElement::FORMAT_VERSION);
        settings = record.is(DocumentElement::AUTHORIZED_TECHNOLOGIES) ? i : settings;
        if (context.document.name(i) == rowOf(DocumentElement::INCLUDE).name) {
            const bool isOther =
                    context.document.attribute(i, isNamed ? "ieq_preset" : "preset").has_value();
            ++(isOther ? others : known);
        }
        if (version == 0 && context.document.parent(i) == 0 &&
            !nearestOf(context.document.name(i), {rowOf(DocumentElement::FORMAT_VERSION).name})
                     .empty()) {
            version = i;
        }
    }
    size_t most = 0;
    for (const Finding& finding : context.findings.all()) {
        if (finding.rule == Rule::OVERWRITTEN) {
            most = std::max(most, ++overwritten[finding.elementName]);
        }
    }
    constexpr size_t kMany = 3;
    const bool isOther = others > known || most >= kMany;
    const auto& sections = context.trace.getSections();
    if (!isGiven && !sections.empty()) {
        context.add(Rule::OTHER_FORMAT, version, "has no format_version");
    } else if (isOther) {
        context.addWhole(Rule::OTHER_FORMAT, version,
                         "is not of the format that the document is written for");
    }
    const auto isWithoutVirtualBass = [](const ReadSection& each) {
        return each.owner == ParameterOwner::PROFILE_ENDPOINT &&
               each.sourceOf(VIRTUAL_BASS_TYPE) == ReadSection::kNoElement;
    };
    if (!context.has(VersionRuleKind::SETTINGS_UNREAD) && !context.data.getTunings().empty() &&
        std::any_of(sections.begin(), sections.end(), isWithoutVirtualBass)) {
        context.add(Rule::ABSENT, settings,
                    "gives no virtual_bass_process ahead of the profiles, so 1 is sent");
    }
}

void dropConsequences(const CheckDocument& document, Findings& findings) {
    const Found found(document, findings);
    findings.removeIf([&](const Finding& each) { return found.isConsequence(each); });
}

}  // namespace ormel::tools
