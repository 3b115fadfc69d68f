#include <ormel/SpatializerParamArray.h>
#include <ormel/TagIterator.h>

#include <algorithm>
#include <array>
#include <map>
#include <optional>

#include "CheckMeaning.h"
#include "text/Text.h"

namespace ormel::tools {

namespace {

using As = ReadElement::As;

/** The rule that a text breaks, MISSING_ATTRIBUTE if it has nothing but whitespace; or none. */
using Fault = std::optional<Rule>;

/** Length of the number that a text begins with, sign included; 0 if it begins with none. */
size_t numberLength(std::string_view text) {
    const bool isSigned = !text.empty() && (text.front() == '+' || text.front() == '-');
    const size_t begin = isSigned ? 1 : 0;
    const size_t end = std::min(text.find_first_not_of("0123456789", begin), text.size());
    return end == begin ? 0 : end;
}

/** What a word for true or false means, however it is spelt; none for any other text. */
std::optional<bool> meaningOf(std::string_view text) {
    static constexpr std::pair<std::string_view, bool> kWords[] = {
            {"true", true},   {"yes", true}, {"on", true},   {"1", true},  {"enabled", true},
            {"false", false}, {"no", false}, {"off", false}, {"0", false}, {"disabled", false}};
    const std::string word = lowered(trimmed(text));
    for (const auto& [known, meaning] : kWords) {
        const bool isBegun = word.size() != 2 && known.size() > 3 && known.find(word) == 0;
        if (word == known || (!word.empty() && isBegun)) {
            return meaning;
        }
    }
    const std::string nearest = nearestOf(word, {"true", "false"});
    return nearest.empty() ? std::nullopt : std::optional<bool>(nearest == "true");
}

/** Whether a text means true, however it is spelt. */
bool meansTrue(std::string_view text) {
    return meaningOf(text).value_or(false);
}

/** What is wrong with a text that should be a whole number. */
Fault faultOfNumber(std::string_view text) {
    const std::string_view number = trimmed(text);
    if (integerOf(number).has_value()) {
        return std::nullopt;
    }
    return number.empty()                          ? Rule::MISSING_ATTRIBUTE
           : numberLength(number) != number.size() ? Rule::NOT_A_NUMBER
                                                   : Rule::OUT_OF_RANGE;
}

/** The same of a band in a preset, read as a row: a blank behind the number ends it. */
Fault faultOfBand(std::string_view text) {
    const Fault fault = faultOfNumber(text);
    std::vector<int> numbers;
    string2IntVector(std::string(text) + ",0", numbers);
    return !fault.has_value() && numbers.size() != 2 ? Rule::NOT_A_NUMBER : fault;
}

/** The same of one that may be true or false as well. */
Fault faultOfSwitch(std::string_view text) {
    if (text == "true" || text == "false") {
        return std::nullopt;
    }
    const Fault fault = faultOfNumber(text);
    const bool isWord = fault == Rule::NOT_A_NUMBER && meaningOf(text).has_value();
    return isWord ? Rule::MISSPELT_BOOLEAN : fault;
}

/** What may stand between the numbers of a row. */
constexpr std::string_view kSeparators = ", \t\n\v\f\r";

/** What follows the numbers that the reader gets out of a row; empty where it reads all of it. */
std::string_view unreadOf(std::string_view row, size_t numbers) {
    std::string_view rest = trimmed(row);
    for (size_t i = 0; i < numbers; ++i) {
        rest.remove_prefix(numberLength(rest));
        const bool isParted = !rest.empty() && rest.front() == ',';
        rest = trimmed(rest.substr(isParted ? 1 : 0));
    }
    return rest.find_first_not_of(kSeparators) == std::string_view::npos ? "" : rest;
}

Fault faultOfName(std::string_view text) {
    return text.empty() ? Fault(Rule::MISSING_ATTRIBUTE) : std::nullopt;
}

/** Flags are set by exactly "true". */
Fault faultOfFlag(std::string_view text) {
    return text != "true" && meansTrue(text) ? Fault(Rule::MISSPELT_BOOLEAN) : std::nullopt;
}

/** What an attribute holds; told apart by address. */
struct Holds {
    Fault (*faultOf)(std::string_view text);
    /** What comes of an empty one, and of a missing one unless it may be missing. */
    const char* empty;
    bool isOptional = false;
    /** What comes of a faulty one; null if it reads as the number that it begins with. */
    const char* faulty = nullptr;
    /** The names that are known, and what is found of any other; null where any will do. */
    const char* const* names = nullptr;
    size_t nameCount = 0;
    Rule unknownRule = {};
    const char* unknown = nullptr;
};

// clang-format off
constexpr Holds kName           = {faultOfName,   "reads as no name"};
constexpr Holds kVersionPart    = {faultOfName,   "reads as an empty part of the version"};
constexpr Holds kNumber         = {faultOfNumber, "reads as 0"};
constexpr Holds kOptionalNumber = {faultOfNumber, "reads as 0", true};
constexpr Holds kSurroundGain   = {faultOfNumber, "reads as 0"};
constexpr Holds kPresetNumber   = {faultOfNumber, "reads as preset 0"};
constexpr Holds kSwitch         = {faultOfSwitch, "reads as 0"};
constexpr Holds kFlag           = {faultOfFlag,   "reads as false", true, "reads as false"};
constexpr Holds kColumn         = {faultOfBand,   "ends the column at this band", false, "ends the column at this band or adds a number to it"};
constexpr Holds kPresetName     = {faultOfName,   "reads as off", false, nullptr, kIeqPresetNames, kIeqPresetCount, Rule::UNKNOWN_PRESET, "is not the name of a preset and reads as off"};
constexpr Holds kEndpoint       = {faultOfName,   "reads as other, which is never sent", false, nullptr, kEndpointNames, kEndpointCount, Rule::UNKNOWN_ENDPOINT, "reads as other, which is never sent"};
constexpr Holds kTuningEndpoint = {faultOfName,   "reads as speaker", true, nullptr, kEndpointNames, kEndpointCount, Rule::UNKNOWN_ENDPOINT, "reads as speaker"};
constexpr Holds kPort           = {faultOfName,   "reads as no port", false, nullptr, kPortNames, kPortCount, Rule::UNKNOWN_PORT, "is not a port"};

/** By DocumentElement and the places of its attributes; null where any text will do. */
constexpr std::array<const Holds*, 5> kSectionHolds[] = {
    /* format_version */          {&kVersionPart, &kVersionPart, &kVersionPart},
    /* tool_version */            {&kVersionPart, &kVersionPart, &kVersionPart},
    /* authorized_technologies */ {},
    /* global_setting */          {nullptr, &kOptionalNumber, &kOptionalNumber, &kOptionalNumber, &kOptionalNumber},
    /* preset */                  {},
    /* profile */                 {&kNumber},
    /* endpoint_type */           {&kEndpoint},
    /* include */                 {&kPresetName, &kPresetNumber},
    /* tuning */                  {&kName, &kTuningEndpoint, &kFlag, &kOptionalNumber, &kNumber},
    /* device_id */               {&kName, &kPort},
    /* data */                    {},
};
// clang-format on
static_assert(std::size(kSectionHolds) == std::size(kDocumentElements));

/** How the attributes of an element are read: the first, all, those of certain names, or none. */
struct Reading {
    enum class Kind { NONE, FIRST, ALL, NAMED };

    Kind kind = Kind::NONE;
    std::vector<std::string> names = {};
    /** What those hold, by their places. */
    std::vector<const Holds*> holds = {};
};

/** A class of setters, the elements whose attributes it reads, and how. */
struct SetterReading {
    bool (*isOf)(const ValueSetter* setter);
    As as;
    Reading reading;
};

template <typename Setter>
bool isOf(const ValueSetter* setter) {
    return dynamic_cast<const Setter*>(setter) != nullptr;
}

template <typename Setter>
SetterReading named(As as, std::vector<const Holds*> holds) {
    const auto& names = Setter::kAttrNames;
    return {isOf<Setter>,
            as,
            {Reading::Kind::NAMED, {names.begin(), names.end()}, std::move(holds)}};
}

/** How the attributes of a parameter, band or row are read. */
Reading setterReading(const ReadElement& record) {
    using Kind = Reading::Kind;
    // clang-format off
    static const std::vector<SetterReading> readings = {
        {isOf<SimpleValueSetter>,             As::PARAMETER, {Kind::NAMED, {"value"}, {&kSwitch}}},
        {isOf<RowDataValueSetter>,            As::PARAMETER, {Kind::FIRST}},
        {isOf<MixMatrixValueSetter>,          As::ROW,       {Kind::FIRST}},
        {isOf<VirtualBassSubgainValueSetter>, As::PARAMETER, {Kind::ALL}},
        named<VirtualBassValueSetter>(As::PARAMETER, {&kNumber, &kNumber}),
        named<IeqValueSetter>(As::BAND, {&kColumn, &kColumn}),
        named<GeqValueSetter>(As::BAND, {&kColumn, &kColumn}),
        named<AudioOptimizerValueSetter>(As::BAND, {&kNumber, &kNumber, &kNumber, &kSurroundGain, &kSurroundGain}),
        named<RegulatorTuningValueSetter>(As::BAND, {&kNumber, &kNumber, &kNumber, &kFlag}),
    };
    // clang-format on
    const auto found = std::find_if(readings.begin(), readings.end(), [&](const auto& each) {
        return each.as == record.as && each.isOf(record.setter);
    });
    return found == readings.end() ? Reading() : found->reading;
}

std::string quoted(std::string_view text) {
    constexpr size_t kLongest = 40;
    return concat('"', text.substr(0, kLongest), text.size() > kLongest ? "..." : "", '"');
}

/** The name that is meant, else all names behind @p otherwise if that is not empty. */
std::string suggested(std::string_view text, const std::vector<std::string>& names,
                      const std::string& otherwise) {
    const std::string similar = nearestOf(text, names);
    return !similar.empty()    ? "; did you mean " + similar + "?"
           : otherwise.empty() ? ""
                               : "; " + otherwise + " " + joined(names, ", ");
}

/** What the elements of a document have for attributes, element by element. */
class AttributeCheck {
  public:
    explicit AttributeCheck(const CheckContext& context) : mContext(context) {}

    void run() {
        for (mElement = 1; mElement < mContext.document.size(); ++mElement) {
            const ReadElement& record = mContext.read(mElement);
            if (record.as != As::NOTHING && !isMisread(record)) {
                mAttributes = mContext.document.attributes(mElement);
                check(record,
                      record.as == As::SECTION ? sectionReading(record) : setterReading(record));
            }
        }
        checkIncluded();
    }

  private:
    /**
     * What was read as a band or row in the place of another element: since one before it has no
     * children, or since bands lie deeper.
     */
    bool isMisread(const ReadElement& record) const {
        const bool isBand = record.as == As::BAND || record.as == As::ROW;
        const size_t parent = mContext.document.parent(mElement);
        const bool isContainer = mContext.document.end(mElement) > mElement + 1;
        const bool isDeeper = isOf<BandColumnsValueSetter>(record.setter) &&
                              mContext.read(parent).setter != record.setter;
        return isBand && (parent == 0 || isContainer || isDeeper);
    }

    Reading sectionReading(const ReadElement& record) const {
        if (record.kind == DocumentElement::AUTHORIZED_TECHNOLOGIES) {
            return {};
        }
        const auto& names = rowOf(record.kind).attributes;
        const auto& holds = kSectionHolds[static_cast<size_t>(record.kind)];
        Reading reading = {Reading::Kind::NAMED,
                           {names.begin(), std::find(names.begin(), names.end(), nullptr)},
                           {holds.begin(), holds.end()}};
        if (record.kind == DocumentElement::INCLUDE) {
            const size_t chosen = arePresetsNamed() ? 0 : 1;
            reading.names = {reading.names[chosen]};
            reading.holds = {reading.holds[chosen]};
        } else if (record.kind == DocumentElement::PRESET && record.setter != nullptr) {
            const bool isNamed = isOf<IeqValueSetter>(record.setter) && arePresetsNamed();
            reading.holds.front() = isNamed ? &kPresetName : &kNumber;
        }
        return reading;
    }

    bool arePresetsNamed() const { return mContext.has(VersionRuleKind::IEQ_PRESETS_NAMED); }

    template <typename... Parts>
    void add(Rule rule, std::string_view attribute, const Parts&... what) const {
        mContext.addAttribute(rule, mElement, attribute, what...);
    }

    void check(const ReadElement& record, const Reading& reading) {
        const bool isRow = reading.kind == Reading::Kind::FIRST;
        const bool isAll = reading.kind == Reading::Kind::ALL;
        if (isRow || reading.kind == Reading::Kind::NAMED) {
            checkUnread(record, reading);
        }
        if ((isRow || isAll) && mAttributes.empty()) {
            add(Rule::MISSING_ATTRIBUTE, "",
                isRow ? "has no attribute, so no values; add one that holds them all"
                      : "has no attributes, so no values; add one for each value");
        } else if (isRow) {
            checkRow(mAttributes.front());
        }
        for (size_t i = 0; i < mAttributes.size() && isAll; ++i) {
            checkText(mAttributes[i].name, kNumber);
        }
        for (size_t i = 0; i < reading.names.size(); ++i) {
            const Holds* const holds = reading.holds[i];
            // The surrounds' gains go out with four channels only.
            const bool isSpare =
                    holds == &kSurroundGain &&
                    firstOr0(mContext.valuesOf(mContext.section(mElement), OUTPUT_CHANNELS)) != 4;
            if (holds != nullptr) {
                checkText(reading.names[i], isSpare ? kOptionalNumber : *holds);
            }
        }
    }

    void checkUnread(const ReadElement& record, const Reading& reading) const {
        const bool isRow = reading.kind == Reading::Kind::FIRST;
        for (size_t i = isRow ? 1 : 0; i < mAttributes.size(); ++i) {
            const DocumentAttribute& attribute = mAttributes[i];
            // The schema's own references between elements need an attribute "type".
            if (contains(reading.names, attribute.name) || attribute.isQualified ||
                attribute.name == "type") {
                continue;
            }
            std::vector<std::string> names = reading.names;
            std::sort(names.begin(), names.end());
            // Settings are picked from what there is, the others are asked for.
            const bool isSetting = record.is(DocumentElement::GLOBAL_SETTING);
            add(Rule::UNKNOWN_ATTRIBUTE, attribute.name, "is ignored",
                outcomeWithout(nearestOf(attribute.name, names), reading),
                isRow ? "; a row is read from its first attribute only"
                      : suggested(attribute.name, names, isSetting ? "" : "the reader looks for"));
        }
    }

    /** ", and value reads as 0" if the element lacks that attribute and should have it. */
    std::string outcomeWithout(const std::string& name, const Reading& reading) const {
        const auto found = std::find(reading.names.begin(), reading.names.end(), name);
        if (found == reading.names.end() || mContext.document.attribute(mElement, name)) {
            return "";
        }
        const Holds* const holds =
                reading.holds[static_cast<size_t>(found - reading.names.begin())];
        const bool isNeeded = holds != nullptr && !holds->isOptional;
        return isNeeded ? concat(", and ", name, " ", holds->empty) : "";
    }

    void checkText(std::string_view name, const Holds& holds) {
        const auto found = std::find_if(mAttributes.begin(), mAttributes.end(),
                                        [name](const auto& each) { return each.name == name; });
        const bool isMissing = found == mAttributes.end();
        const Fault fault = isMissing ? Rule::MISSING_ATTRIBUTE : holds.faultOf(found->text);
        if (isMissing && holds.isOptional) {
            return;
        }
        if (fault == Rule::MISSING_ATTRIBUTE) {
            add(&holds == &kColumn ? Rule::SHORT_COLUMN : Rule::MISSING_ATTRIBUTE, name,
                isMissing ? "is missing and " : "is empty and ", holds.empty, "; write ", name,
                "=\"...\"");
        } else if (fault.has_value()) {
            addFaulty(*fault, *found, holds);
        } else if (holds.names != nullptr) {
            checkName(*found, holds);
        } else if (&holds == &kPresetNumber) {
            mIncludes[string2Int(found->text)].push_back(mElement);
        }
    }

    void addFaulty(Rule fault, const DocumentAttribute& attribute, const Holds& holds) const {
        const std::string& text = attribute.text;
        const char* const word = meansTrue(text) ? "; write true" : "; write false";
        add(fault, attribute.name, quoted(text), " ",
            holds.faulty != nullptr ? holds.faulty : concat("reads as ", string2Int(text)),
            fault == Rule::MISSPELT_BOOLEAN ? word
            : fault == Rule::NOT_A_NUMBER   ? "; write a whole number"
                                            : "; it does not fit 32 bits");
    }

    void checkName(const DocumentAttribute& attribute, const Holds& holds) {
        const std::string& text = attribute.text;
        const auto* const end = holds.names + holds.nameCount;
        const auto* const known = std::find(holds.names, end, text);
        if (known == end) {
            add(holds.unknownRule, attribute.name, quoted(text), " ", holds.unknown,
                suggested(text, {holds.names, end}, "the names are"));
        } else if (&holds == &kPort && kPortNameToAndroidDevice.count(text) == 0) {
            std::string supported;
            for (const Port port : kSupportedPorts) {
                supported += concat(supported.empty() ? "" : ", ", kPortNames[port]);
            }
            add(Rule::UNSUPPORTED_PORT, attribute.name, text,
                " has no output device to send the tuning to; write one of ", supported);
        } else if (mContext.read(mElement).is(DocumentElement::INCLUDE)) {
            mIncludes[static_cast<int>(known - holds.names)].push_back(mElement);
        }
    }

    void checkRow(const DocumentAttribute& row) const {
        std::vector<int> numbers;
        string2IntVector(row.text, numbers);
        const std::string_view rest = unreadOf(row.text, numbers.size());
        const size_t length = numberLength(rest);
        const std::string ends =
                " ends the row after " + countText(numbers.size(), "number", "numbers");
        if (trimmed(row.text).empty()) {
            add(Rule::MISSING_ATTRIBUTE, row.name, "is empty, so there are no values; write ",
                row.name, "=\"...\"");
        } else if (length != 0) {
            add(Rule::OUT_OF_RANGE, row.name, rest.substr(0, length), " does not fit 32 bits and",
                ends);
        } else if (!rest.empty()) {
            const size_t end = std::max(rest.find_first_of(kSeparators), size_t{1});
            add(Rule::ROW_CUT, row.name, quoted(rest.substr(0, end)), ends,
                rest.front() == ',' ? "; write each comma right after a number, without a blank"
                                    : "; write whole numbers, with commas between them");
        }
    }

    /** A preset that is lost or has another id: one finding for all that include it. */
    void checkIncluded() const {
        std::map<int, size_t> presets;
        for (const ReadSection& section : mContext.trace.getSections()) {
            if (section.owner == ParameterOwner::IEQ_PRESET && section.object != nullptr) {
                const auto* const preset = static_cast<const IeqPreset*>(section.object);
                presets.try_emplace(preset->getPresetId(), section.element);
            }
        }
        // A preset that is never included and whose number is out of line with the others.
        const auto count = static_cast<int>(presets.size());
        const auto stranded = std::find_if(presets.begin(), presets.end(), [&](const auto& each) {
            return (each.first < 0 || each.first > count) && mIncludes.count(each.first) == 0;
        });
        for (const auto& [preset, includes] : mIncludes) {
            if (presets.count(preset) != 0) {
                continue;
            }
            const std::string who = countText(includes.size(), "include names", "includes name");
            const std::string which =
                    arePresetsNamed() ? kIeqPresetNames[preset] : std::to_string(preset);
            if (stranded != presets.end()) {
                mContext.add(Rule::MISSING_PRESET, stranded->second, "is never included, but ", who,
                             " preset ", which, ", which the document lacks");
                return;
            }
            mContext.addAttribute(
                    Rule::MISSING_PRESET, includes.front(),
                    rowOf(DocumentElement::INCLUDE).attributes[arePresetsNamed() ? 0 : 1],
                    "there is no preset ", which, " (", who,
                    " it); an endpoint with it uses "
                    "the preset of the one before it, or none; include a preset that exists");
        }
    }

    const CheckContext& mContext;
    size_t mElement = 0;
    std::vector<DocumentAttribute> mAttributes;
    /** Elements by the number of the preset that they choose. */
    std::map<int, std::vector<size_t>> mIncludes;
};

}  // namespace

void checkAttributes(const CheckContext& context) {
    AttributeCheck(context).run();
}

}  // namespace ormel::tools
