#include <ormel/EntryLayout.h>
#include <ormel/SpatializerParamArray.h>

#include <algorithm>
#include <map>
#include <set>
#include <string_view>
#include <tuple>

#include "CheckMeaning.h"
#include "CheckText.h"
#include "text/Text.h"

namespace ormel::tools {

namespace {

template <typename Setter>
bool appendNames(const ValueSetter* setter, std::vector<std::string>& names) {
    if (dynamic_cast<const Setter*>(setter) == nullptr) {
        return false;
    }
    names.assign(Setter::kAttrNames.begin(), Setter::kAttrNames.end());
    return true;
}

std::string quoted(std::string_view text) {
    constexpr size_t kLongest = 40;
    std::string quoted = "\"" + std::string(text.substr(0, kLongest));
    return quoted + (text.size() > kLongest ? "...\"" : "\"");
}

using As = ReadElement::As;

/** How the attributes of an element are read: the first, all, those of certain names, or none. */
struct Reading {
    enum class Kind { NONE, FIRST, ALL, NAMED };

    Kind kind = Kind::NONE;
    std::set<std::string> names;
};

/** What the elements of a document have for attributes, element by element. */
class AttributeCheck {
  public:
    explicit AttributeCheck(const CheckContext& context)
        : mContext(context), mDocument(context.document) {
        for (const IeqPreset* const preset : context.data.getIeqPresets()) {
            mIeqPresets.insert(preset->getPresetId());
        }
    }

    void run() {
        for (mElement = 1; mElement < mDocument.size(); ++mElement) {
            const ReadElement& record = mContext.read(mElement);
            if (record.as == As::NOTHING || isMisread(record)) {
                continue;
            }
            mAttributes = mDocument.attributes(mElement);
            checkUnread(record);
            checkTexts(record);
        }
        checkIncluded();
    }

  private:
    /**
     * What was read as a band or row in the place of another element: since one before it has no
     * children, or since bands lie deeper.
     */
    bool isMisread(const ReadElement& record) const {
        if (record.as != As::BAND && record.as != As::ROW) {
            return false;
        }
        const ReadElement& parent = mContext.read(mDocument.parent(mElement));
        const bool isColumns = dynamic_cast<const BandColumnsValueSetter*>(record.setter);
        const bool isContainer = mDocument.end(mElement) > mElement + 1;
        return mDocument.parent(mElement) == 0 || isContainer ||
               (isColumns && parent.setter != record.setter);
    }

    const std::string* find(std::string_view name) const {
        for (const DocumentAttribute& attribute : mAttributes) {
            if (attribute.name == name) {
                return &attribute.text;
            }
        }
        return nullptr;
    }

    void add(Rule rule, std::string_view attribute, std::string what) const {
        mContext.add(rule, mElement, std::move(what), std::string(attribute));
    }

    void checkUnread(const ReadElement& record) const {
        const Reading& reading = readingOf(record);
        if (reading.kind == Reading::Kind::NONE || reading.kind == Reading::Kind::ALL) {
            return;
        }
        for (size_t i = reading.kind == Reading::Kind::FIRST ? 1 : 0; i < mAttributes.size(); ++i) {
            const DocumentAttribute& attribute = mAttributes[i];
            // The schema's own references between elements need an attribute "type".
            const bool isAsked = reading.names.count(std::string(attribute.name)) != 0;
            if (!isAsked && !attribute.isQualified && attribute.name != "type") {
                add(Rule::UNKNOWN_ATTRIBUTE, attribute.name,
                    "is not looked at" + asked(attribute.name, record, reading));
            }
        }
    }

    static std::string asked(std::string_view name, const ReadElement& record,
                             const Reading& reading) {
        if (reading.kind == Reading::Kind::FIRST) {
            return "; of a row the first attribute counts";
        }
        const std::vector<std::string> names(reading.names.begin(), reading.names.end());
        const std::string similar = nearestOf(name, names);
        if (!similar.empty()) {
            return "; is " + similar + " meant?";
        }
        // Settings are picked from what there is, the others are asked for.
        return record.is(DocumentElement::GLOBAL_SETTING)
                       ? ""
                       : "; the reader asks for " + joined(names, ", ");
    }

    /** How the reader reads the attributes of such elements. */
    const Reading& readingOf(const ReadElement& record) const {
        const auto [found, isNew] =
                mReadings.try_emplace({record.as, record.kind, record.setter}, Reading());
        if (isNew) {
            found->second = makeReading(record);
        }
        return found->second;
    }

    Reading makeReading(const ReadElement& record) const {
        using Kind = Reading::Kind;
        const ValueSetter* const setter = record.setter;
        const std::vector<std::string> names = attributeNamesOf(setter);
        switch (record.as) {
            case As::SECTION:
                return sectionReading(record.kind);
            case As::BAND:
                return {Kind::NAMED, {names.begin(), names.end()}};
            case As::ROW:
                return {Kind::FIRST, {}};
            case As::PARAMETER:
                break;
            case As::NOTHING:
                return {Kind::NONE, {}};
        }
        if (dynamic_cast<const SimpleValueSetter*>(setter) != nullptr) {
            return {Kind::NAMED, {"value"}};
        }
        if (dynamic_cast<const VirtualBassValueSetter*>(setter) != nullptr) {
            return {Kind::NAMED, {names.begin(), names.end()}};
        }
        if (dynamic_cast<const VirtualBassSubgainValueSetter*>(setter) != nullptr) {
            return {Kind::ALL, {}};
        }
        const bool isRow = dynamic_cast<const RowDataValueSetter*>(setter) != nullptr;
        return {isRow ? Kind::FIRST : Kind::NONE, {}};
    }

    Reading sectionReading(DocumentElement kind) const {
        if (kind == DocumentElement::AUTHORIZED_TECHNOLOGIES) {
            return {Reading::Kind::NONE, {}};
        }
        if (kind == DocumentElement::INCLUDE) {
            return {Reading::Kind::NAMED, {presetAttribute()}};
        }
        Reading reading = {Reading::Kind::NAMED, {}};
        for (const char* const name : rowOf(kind).attributes) {
            if (name != nullptr) {
                reading.names.insert(name);
            }
        }
        return reading;
    }

    bool arePresetsNamed() const { return mContext.has(VersionRuleKind::IEQ_PRESETS_NAMED); }

    /** What an include chooses a preset by. */
    const char* presetAttribute() const {
        return rowOf(DocumentElement::INCLUDE).attributes[arePresetsNamed() ? 0 : 1];
    }

    void checkTexts(const ReadElement& record) {
        switch (record.as) {
            case As::PARAMETER:
                checkParameter(*record.setter);
                break;
            case As::BAND:
                checkBand(record);
                break;
            case As::ROW:
                checkRow();
                break;
            case As::SECTION:
                checkSection(record);
                break;
            case As::NOTHING:
                break;
        }
    }

    void checkSection(const ReadElement& record) {
        switch (record.kind) {
            case DocumentElement::PRESET:
                checkPresetId(record);
                break;
            case DocumentElement::PROFILE:
                checkNumber("id");
                break;
            case DocumentElement::ENDPOINT_TYPE:
                checkEndpoint("id", "other, which is never sent");
                break;
            case DocumentElement::TUNING:
                checkTuning();
                break;
            case DocumentElement::DEVICE_ID:
                checkDevice();
                break;
            case DocumentElement::INCLUDE:
                checkInclude();
                break;
            case DocumentElement::GLOBAL_SETTING:
                checkSetting(record);
                break;
            case DocumentElement::FORMAT_VERSION:
            case DocumentElement::TOOL_VERSION:
                for (const std::string& part : readingOf(record).names) {
                    checkGiven(part, "an empty part of the version");
                }
                break;
            default:
                break;
        }
    }

    /** The attribute's text; null, with a finding, where it is missing. */
    const std::string* checkGiven(std::string_view name, const std::string& reading) const {
        const std::string* const text = find(name);
        if (text == nullptr || text->empty()) {
            add(Rule::MISSING_ATTRIBUTE, name,
                (text == nullptr ? "is missing, which reads as " : "is empty, which reads as ") +
                        reading);
            return nullptr;
        }
        return text;
    }

    void report(TextFault fault, std::string_view name, const std::string& text,
                const std::string& reading) const {
        switch (fault) {
            case TextFault::NONE:
                break;
            case TextFault::EMPTY:
                add(Rule::MISSING_ATTRIBUTE, name, "is empty, which reads as " + reading);
                break;
            case TextFault::MISSPELT:
                add(Rule::MISSPELT_BOOLEAN, name,
                    quoted(text) + " reads as " + reading + "; write " +
                            (meansTrue(text) ? "true" : "false"));
                break;
            case TextFault::NOT_A_NUMBER:
                add(Rule::NOT_A_NUMBER, name,
                    quoted(text) + " reads as " + reading + "; write a whole number");
                break;
            case TextFault::OUT_OF_RANGE:
                add(Rule::OUT_OF_RANGE, name,
                    quoted(text) + " reads as " + reading + "; it does not fit 32 bits");
                break;
        }
    }

    void checkNumber(std::string_view name) const {
        if (const std::string* const text = checkGiven(name, "0")) {
            report(faultOfNumber(*text), name, *text, std::to_string(string2Int(*text)));
        }
    }

    void checkNumberIfGiven(std::string_view name) const {
        if (find(name) != nullptr) {
            checkNumber(name);
        }
    }

    void checkParameter(const ValueSetter& setter) {
        if (dynamic_cast<const SimpleValueSetter*>(&setter) != nullptr) {
            if (const std::string* const text = checkGiven("value", "0")) {
                report(faultOfSwitch(*text), "value", *text, std::to_string(string2Int(*text)));
            }
        } else if (dynamic_cast<const RowDataValueSetter*>(&setter) != nullptr) {
            checkRow();
        } else if (dynamic_cast<const VirtualBassValueSetter*>(&setter) != nullptr) {
            for (const std::string& name : attributeNamesOf(&setter)) {
                checkNumber(name);
            }
        } else if (dynamic_cast<const VirtualBassSubgainValueSetter*>(&setter) != nullptr) {
            checkSubgains();
        }
    }

    void checkSubgains() const {
        if (mAttributes.empty()) {
            mContext.add(Rule::MISSING_ATTRIBUTE, mElement, "has no attributes, so no values");
        }
        for (const DocumentAttribute& attribute : mAttributes) {
            checkNumber(attribute.name);
        }
    }

    void checkRow() const {
        if (mAttributes.empty()) {
            mContext.add(Rule::MISSING_ATTRIBUTE, mElement, "has no attribute, so no values");
            return;
        }
        const DocumentAttribute& row = mAttributes.front();
        const RowFault fault = faultOfRow(row.text);
        const std::string reading =
                "ends the row after " + countText(fault.read, "number", "numbers");
        switch (fault.fault) {
            case TextFault::EMPTY:
                add(Rule::MISSING_ATTRIBUTE, row.name, "is empty, so there are no values");
                break;
            case TextFault::OUT_OF_RANGE:
                add(Rule::OUT_OF_RANGE, row.name,
                    fault.at + " does not fit 32 bits and " + reading);
                break;
            case TextFault::NOT_A_NUMBER:
                add(Rule::ROW_CUT, row.name,
                    quoted(fault.at) + " " + reading +
                            "; write a comma and a number behind each number");
                break;
            default:
                break;
        }
    }

    void checkBand(const ReadElement& record) {
        if (dynamic_cast<const PresetBandsValueSetter*>(record.setter) != nullptr) {
            checkPresetBand(*record.setter);
        } else if (dynamic_cast<const RegulatorTuningValueSetter*>(record.setter) != nullptr) {
            const std::vector<std::string> names = attributeNamesOf(record.setter);
            std::for_each(names.begin(), names.end() - 1,
                          [this](const std::string& name) { checkNumber(name); });
            checkFlag(names.back());
        } else {
            checkOptimizerBand(record);
        }
    }

    /** Columns of presets are rows: what is no number ends them. */
    void checkPresetBand(const ValueSetter& setter) const {
        for (const std::string& name : attributeNamesOf(&setter)) {
            const std::string* const text = find(name);
            const TextFault fault = text == nullptr ? TextFault::EMPTY : faultOfBand(*text);
            if (fault == TextFault::EMPTY) {
                add(Rule::SHORT_COLUMN, name,
                    text == nullptr ? "is missing, which ends the column at this band"
                                    : "is empty, which ends the column at this band");
            } else if (fault != TextFault::NONE) {
                report(fault, name, *text, "a number too many or the end of the column");
            }
        }
    }

    /** The surrounds' gains go out with four channels only. */
    void checkOptimizerBand(const ReadElement& record) const {
        const std::vector<std::string> names = attributeNamesOf(record.setter);
        constexpr size_t kStereoNames = findEntryLayout(AOBS)->lists.size() + 2;
        const bool isQuad = firstOr0(mContext.valuesOf(record.section, OUTPUT_CHANNELS)) == 4;
        for (size_t i = 0; i < names.size(); ++i) {
            if (i < kStereoNames || isQuad) {
                checkNumber(names[i]);
            } else {
                checkNumberIfGiven(names[i]);
            }
        }
    }

    /** Attributes that are set by exactly "true". */
    void checkFlag(const std::string& name) const {
        const std::string* const text = find(name);
        if (text != nullptr && *text != "true" && meansTrue(*text)) {
            report(TextFault::MISSPELT, name, *text, "false");
        }
    }

    void checkPresetId(const ReadElement& record) {
        if (record.section == ReadElement::kNoSection) {
            return;
        }
        const bool isIeq = record.setter->getParams().front() == IEQ_FREQUENCY;
        if (isIeq && arePresetsNamed()) {
            checkPresetName("id");
        } else {
            checkNumber("id");
        }
    }

    bool checkPresetName(const char* name) const {
        const std::string* const text = checkGiven(name, kIeqPresetNames[0]);
        if (text == nullptr) {
            return false;
        }
        const bool isKnown = contains(kIeqPresetNames, *text);
        if (!isKnown) {
            add(Rule::UNKNOWN_PRESET, name,
                quoted(*text) + " is no preset's name and reads as " + kIeqPresetNames[0] +
                        suggested(*text, {std::begin(kIeqPresetNames), std::end(kIeqPresetNames)}));
        }
        return isKnown;
    }

    void checkInclude() {
        const char* const attribute = presetAttribute();
        int preset = 0;
        if (arePresetsNamed()) {
            if (!checkPresetName(attribute)) {
                return;
            }
            const auto* const known = std::find(std::begin(kIeqPresetNames),
                                                std::end(kIeqPresetNames), *find(attribute));
            preset = static_cast<int>(known - std::begin(kIeqPresetNames));
        } else {
            const std::string* const text = checkGiven(attribute, "preset 0");
            if (text == nullptr || faultOfNumber(*text) != TextFault::NONE) {
                report(text == nullptr ? TextFault::NONE : faultOfNumber(*text), attribute,
                       text == nullptr ? "" : *text,
                       text == nullptr ? "" : std::to_string(string2Int(*text)));
                return;
            }
            preset = string2Int(*text);
        }
        mIncludes[preset].push_back(mElement);
    }

    /** A preset that is lost or has another id: one finding for all who include it. */
    void checkIncluded() const {
        const size_t stranded = strandedPreset();
        for (const auto& [preset, includes] : mIncludes) {
            if (mIeqPresets.count(preset) != 0) {
                continue;
            }
            const std::string who = countText(includes.size(), "include", "includes");
            if (stranded != 0) {
                mContext.add(Rule::MISSING_PRESET, stranded,
                             "is included by nobody, and " + who + " a preset " +
                                     std::to_string(preset) + ", which is not there");
                return;
            }
            mContext.add(Rule::MISSING_PRESET, includes.front(),
                         "names preset " + std::to_string(preset) + ", which is not there, as " +
                                 who + "; each endpoint goes with the preset before it",
                         presetAttribute());
        }
    }

    /** A preset that nobody includes, its number being beyond those of the others; 0 for none. */
    size_t strandedPreset() const {
        for (const ReadSection& section : mContext.trace.getSections()) {
            if (section.owner == ParameterOwner::IEQ_PRESET && section.object != nullptr) {
                const int id = static_cast<const IeqPreset*>(section.object)->getPresetId();
                const bool isBeyond = id < 0 || id > static_cast<int>(mIeqPresets.size());
                if (isBeyond && mIncludes.count(id) == 0) {
                    return section.element;
                }
            }
        }
        return 0;
    }

    static std::string suggested(std::string_view text, const std::vector<std::string>& names) {
        const std::string similar = nearestOf(text, names);
        return similar.empty() ? "; there are " + joined(names, ", ")
                               : "; is " + similar + " meant?";
    }

    void checkEndpoint(std::string_view name, const std::string& reading) const {
        const std::string* const text = checkGiven(name, reading);
        if (text != nullptr && !contains(kEndpointNames, *text)) {
            add(Rule::UNKNOWN_ENDPOINT, name,
                quoted(*text) + " reads as " + reading +
                        suggested(*text, {std::begin(kEndpointNames), std::end(kEndpointNames)}));
        }
    }

    void checkTuning() {
        checkGiven("name", "no name");
        if (find("endpoint_type") != nullptr) {
            checkEndpoint("endpoint_type", kEndpointNames[ENDPOINT_SPEAKER]);
        }
        checkFlag("mono_device");
        checkNumberIfGiven("orientation");
        checkNumber("output_channels");
    }

    void checkDevice() {
        checkGiven("id", "no name");
        const std::string* const port = checkGiven("endpoint_port", "no port");
        if (port == nullptr) {
            return;
        }
        if (!contains(kPortNames, *port)) {
            add(Rule::UNKNOWN_PORT, "endpoint_port",
                quoted(*port) + " is no port" +
                        suggested(*port, {std::begin(kPortNames), std::end(kPortNames)}));
        } else if (kPortNameToAndroidDevice.count(*port) == 0) {
            add(Rule::UNSUPPORTED_PORT, "endpoint_port",
                *port + " has no output device to send the tuning to; " + supportedPorts() + " do");
        }
    }

    static std::string supportedPorts() {
        std::string names;
        for (const Port port : kSupportedPorts) {
            names.append(names.empty() ? "" : ", ").append(kPortNames[port]);
        }
        return names;
    }

    void checkSetting(const ReadElement& record) {
        for (const std::string& name : readingOf(record).names) {
            if (name != "device_name") {
                checkNumberIfGiven(name);
            }
        }
    }

    const CheckContext& mContext;
    const CheckDocument& mDocument;
    mutable std::map<std::tuple<As, DocumentElement, const ValueSetter*>, Reading> mReadings;
    size_t mElement = 0;
    std::vector<DocumentAttribute> mAttributes;
    std::set<int> mIeqPresets;
    /** Elements by the number of the preset that they choose. */
    std::map<int, std::vector<size_t>> mIncludes;
};

}  // namespace

std::vector<std::string> attributeNamesOf(const ValueSetter* setter) {
    std::vector<std::string> names;
    if (!appendNames<IeqValueSetter>(setter, names) &&
        !appendNames<GeqValueSetter>(setter, names) &&
        !appendNames<AudioOptimizerValueSetter>(setter, names) &&
        !appendNames<RegulatorTuningValueSetter>(setter, names)) {
        appendNames<VirtualBassValueSetter>(setter, names);
    }
    return names;
}

void checkAttributes(const CheckContext& context) {
    AttributeCheck(context).run();
}

}  // namespace ormel::tools
