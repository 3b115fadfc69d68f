// One document through all layers, and one finding for one mistake.
#include "CheckFile.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "CheckMeaning.h"
#include "EmbeddedText.h"
#include "text/Files.h"
#include "text/Text.h"

namespace ormel::tools {

namespace {

/** What compressed files begin with, and the name of their format. */
constexpr std::pair<std::string_view, const char*> kPackers[] = {
        {"\x1f\x8b", "gzip"}, {"\xfd\x37zXZ", "xz"}, {{"\x5d\0\0", 3}, "lzma"}};

/** Encodings that every build of libxml2 reads. */
constexpr std::string_view kEncodings[] = {"utf-8",    "utf-16", "utf-16le",   "utf-16be",
                                           "us-ascii", "ascii",  "iso-8859-1", "iso-latin-1"};

/** The first line of what libxml2 says of an error. */
std::string_view messageOf(const xmlError& error) {
    const std::string_view message = error.message == nullptr ? "" : error.message;
    return message.substr(0, message.find('\n'));
}

/** What follows the first @p mark in a text; empty where there is none. */
std::string_view behind(std::string_view text, std::string_view mark) {
    const size_t found = text.find(mark);
    return found == std::string_view::npos ? "" : text.substr(found + mark.size());
}

/** The line that libxml2 names of a tag behind @p mark: "Start Tag band line 12"; else @p other. */
long lineIn(std::string_view message, std::string_view mark, long other) {
    const std::string line(behind(behind(message, mark), " line "));
    return line.empty() ? other : std::stol("0" + line);
}

/** "Element 'x', attribute 'y': ..." or "... The attribute 'y' is ...". */
std::string attributeIn(std::string_view message) {
    const std::string_view name = behind(message, "attribute '");
    return std::string(name.substr(0, name.find('\'')));
}

/** The element's name goes in front of every finding anyway. */
std::string textOf(std::string_view message) {
    const size_t colon = message.find(": ");
    const bool isNamed = message.find("Element '") == 0 && colon != std::string_view::npos;
    return std::string(message.substr(isNamed ? colon + 2 : 0));
}

/**
 * The schema built in without what it demands of ids and references, which libxml2 compares each
 * with each. The layer of meaning has rules for all of that, and better words.
 */
XmlPointer<xmlDoc> parseEmbedded() {
    const std::string text = schemaText();
    XmlPointer<xmlDoc> document(xmlReadMemory(text.data(), static_cast<int>(text.size()),
                                              "spatializer-tuning.xsd", nullptr, 0));
    std::vector<xmlNode*> constraints;
    forEachElement(xmlDocGetRootElement(document.get()), [&constraints](xmlNode* node) {
        const std::string_view name = toText(node->name);
        if (name == "unique" || name == "key" || name == "keyref") {
            constraints.push_back(node);
        }
    });
    for (xmlNode* const constraint : constraints) {
        xmlUnlinkNode(constraint);
        xmlFreeNode(constraint);
    }
    return document;
}

/** Holds one document to a schema while it is parsed, so that no tree of it is needed. */
class SchemaValidation {
  public:
    SchemaValidation(const CheckSchema& schema, Findings& faults)
        : mFaults(faults),
          mValidator(xmlSchemaNewValidCtxt(schema.schema.get()), xmlSchemaFreeValidCtxt) {
        const auto take = [](void* self, XmlError* error) {
            static_cast<SchemaValidation*>(self)->add(messageOf(*error));
        };
        xmlSchemaSetValidStructuredErrors(mValidator.get(), take, this);
        mListener.rootName = schema.rootName;
        mPlug.reset(xmlSchemaSAXPlug(mValidator.get(), &mListener.handlers, &mListener.context),
                    xmlSchemaSAXUnplug);
    }

    /** Gets what the parser comes across. */
    XmlListener& listener() { return mListener; }

  private:
    void add(std::string_view message) {
        const size_t element = mListener.element;
        std::string attribute = attributeIn(message);
        if (!message.empty() && mFaulty.emplace(element, attribute).second) {
            const auto text = mListener.textLines.find(element);
            const bool isText = message.find("Character content") != std::string_view::npos;
            const long line = isText && text != mListener.textLines.end() ? text->second : 0;
            mFaults.add({Rule::SCHEMA, line, textOf(message), element, "", std::move(attribute)});
        }
    }

    Findings& mFaults;
    std::set<std::pair<size_t, std::string>> mFaulty;
    XmlListener mListener;
    const std::shared_ptr<xmlSchemaValidCtxt> mValidator;
    std::shared_ptr<xmlSchemaSAXPlugStruct> mPlug;
};

/** Adds encodings that not every device reads, and entity references, which the reader skips. */
void findOddities(const XmlElements& document, Findings& findings) {
    const std::string& encoding = document.getEncoding();
    if (!encoding.empty() && !contains(kEncodings, lowered(encoding))) {
        findings.add({Rule::ENCODING, 1,
                      "the encoding " + encoding + " cannot be read everywhere; write UTF-8"});
    }
    for (const auto& [element, name] : document.getReferences()) {
        findings.add({Rule::ENTITY_REFERENCE, 0,
                      "the content of &" + name + "; is not read; write it out", element});
    }
}

/**
 * Parses a document's bytes, and holds it to a schema meanwhile. None if it cannot be read.
 *
 * @param findings gets what keeps it from being read, here or on a device
 * @param faults   gets what it does not keep to of the schema, an element's or attribute's first
 *                 fault each
 */
std::optional<XmlElements> parseForCheck(const std::string& text, const CheckSchema& schema,
                                         Findings& findings, Findings& faults) {
    for (const auto& [mark, packer] : kPackers) {
        if (text.compare(0, mark.size(), mark) == 0) {
            findings.add(
                    {Rule::COMPRESSED, 1,
                     std::string("the file is compressed with ") + packer + "; ship it unpacked"});
            return std::nullopt;
        }
    }
    std::optional<Finding> fault;
    const XmlErrorScope errors([&fault](const xmlError& error) {
        const std::string message(messageOf(error));
        if (!fault.has_value()) {
            fault = {Rule::NOT_WELL_FORMED, lineIn(message, "tag mismatch: ", error.line), message};
        } else {
            // What follows comes of the first, but may tell where that tag begins.
            fault->line = std::min(fault->line, lineIn(message, "Start Tag ", fault->line));
        }
    });
    SchemaValidation validation(schema, faults);
    std::optional<XmlElements> document(std::in_place, text, &validation.listener());
    if (!document->isReadable()) {
        const char* const other = text.empty() ? "Document is empty" : "Document cannot be read";
        findings.add(fault.value_or(Finding{Rule::NOT_WELL_FORMED, 1, other}));
        return std::nullopt;
    }
    findOddities(*document, findings);
    return document;
}

/** The format version or what is spelt nearly so; the root where there is neither. */
size_t formatVersionOf(const XmlElements& document) {
    const char* const name = rowOf(DocumentElement::FORMAT_VERSION).name;
    size_t element = 1;
    while (element < document.size() && nearestOf(document.name(element), {name}).empty()) {
        element = document.end(element);
    }
    return element < document.size() ? element : 0;
}

/** The last element that is read as one of a kind; the root where there is none. */
size_t lastOf(const CheckContext& context, DocumentElement kind) {
    const auto all = context.below(0, [&](size_t i) { return context.read(i).is(kind); });
    return all.empty() ? 0 : all.back();
}

/** Whether most includes have an attribute that only another format reads. */
bool includesOtherwise(const CheckContext& context, const char* other) {
    const auto includes = context.below(
            0, [&](size_t i) { return context.isNamed(i, DocumentElement::INCLUDE); });
    const auto others = std::count_if(includes.begin(), includes.end(), [&](size_t i) {
        return context.document.attribute(i, other).has_value();
    });
    return 2 * static_cast<size_t>(others) > includes.size();
}

/** Whether the format overwrites several elements of one name. */
bool overwritesMany(const CheckContext& context) {
    constexpr size_t kMany = 3;
    std::map<std::string_view, size_t> counts;
    const auto& all = context.findings.all();
    return std::any_of(all.begin(), all.end(), [&](const Finding& each) {
        return each.rule == Rule::OVERWRITTEN &&
               ++counts[context.document.name(each.element)] == kMany;
    });
}

/** Whether the document is written for another format than it says. */
void checkFormat(const CheckContext& context) {
    const auto& sections = context.trace.getSections();
    const size_t version = formatVersionOf(context.document);
    const auto& attributes = rowOf(DocumentElement::INCLUDE).attributes;
    const bool isNamed = context.has(VersionRuleKind::IEQ_PRESETS_NAMED);
    const char* const other = attributes[isNamed ? 1 : 0];
    if (lastOf(context, DocumentElement::FORMAT_VERSION) == 0 && !sections.empty()) {
        context.add(Rule::OTHER_FORMAT, version,
                    "has no format_version, so it is read as a format below 3.4; add one");
    } else if (includesOtherwise(context, other)) {
        context.addWhole(Rule::OTHER_FORMAT, version, "most includes have ", other, ", but format ",
                         context.formatVersion, " reads ", attributes[isNamed ? 0 : 1],
                         "; correct the version");
    } else if (overwritesMany(context)) {
        context.addWhole(Rule::OTHER_FORMAT, version, context.formatVersion,
                         " compares as text below 3.4, but the document is written for a later "
                         "format; correct the version");
    }
    const auto isWithoutVirtualBass = [](const ReadSection& each) {
        return each.owner == ParameterOwner::PROFILE_ENDPOINT &&
               each.sourceOf(VIRTUAL_BASS_TYPE) == ReadSection::kNoElement;
    };
    if (!context.has(VersionRuleKind::SETTINGS_UNREAD) && !context.data.getTunings().empty() &&
        std::any_of(sections.begin(), sections.end(), isWithoutVirtualBass)) {
        context.add(Rule::ABSENT, lastOf(context, DocumentElement::AUTHORIZED_TECHNOLOGIES),
                    "gives no virtual_bass_process, so 1 is sent");
    }
}

using R = Rule;

/** A bit for each rule. */
using RuleSet = uint64_t;
static_assert(std::size(kRules) <= 64);

template <typename... Rules>
constexpr RuleSet setOf(Rules... rules) {
    return ((RuleSet{1} << static_cast<size_t>(rules)) | ...);
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
    RuleSet effects;
    /** No effect is its own cause. */
    RuleSet causes;
};

constexpr RuleSet kStructure =
        setOf(R::UNKNOWN_ELEMENT, R::UNREAD_ELEMENT, R::LOST_FIRST_CHILD, R::CHILDLESS,
              R::EMPTY_SECTION, R::TUNING_WITHOUT_DATA, R::BAND_DEPTH, R::IEQ_BAND_NAME,
              R::INCLUDE_POSITION, R::WRONG_SECTION, R::LATE_IEQ, R::ENTITY_REFERENCE);
constexpr RuleSet kTexts = setOf(R::UNKNOWN_ATTRIBUTE, R::MISSING_ATTRIBUTE, R::NOT_A_NUMBER,
                                 R::OUT_OF_RANGE, R::ROW_CUT, R::SHORT_COLUMN);
constexpr RuleSet kIds =
        setOf(R::REPEATED_PRESET, R::REPEATED_PROFILE, R::REPEATED_ENDPOINT, R::PROFILE_ID,
              R::UNKNOWN_PRESET, R::MISSING_PRESET, R::UNKNOWN_PRESET_TYPE, R::UNKNOWN_ENDPOINT,
              R::OTHER_BANDS, R::GEQ_BAND_COUNT, R::GEQ_PROFILE);

/** By scope. Of an element's findings only the one that says most stays anyway. */
constexpr Consequence kConsequences[] = {
        {Scope::ELEMENT, setOf(R::MISSING_ATTRIBUTE, R::SHORT_COLUMN, R::ROW_CUT),
         setOf(R::UNKNOWN_ATTRIBUTE)},
        {Scope::SECTION, setOf(R::SCHEMA, R::EMPTY_SECTION, R::FREQUENCY_UNLIKE, R::IMPLAUSIBLE),
         kStructure},
        {Scope::SECTION, setOf(R::ABSENT), kStructure | kTexts | kIds},
        {Scope::SECTION, setOf(R::UNEQUAL_COLUMNS, R::MIX_MATRIX_LENGTH),
         kStructure | kTexts | setOf(R::ROW_LENGTH, R::CHANNELS_NOT_SENT, R::ABSENT)},
        {Scope::SECTION, setOf(R::STRESS_AMOUNTS),
         setOf(R::CHANNELS_NOT_SENT, R::MISSING_ATTRIBUTE, R::UNKNOWN_ATTRIBUTE)},
        {Scope::SECTION, setOf(R::INCLUDE_POSITION, R::LATE_IEQ),
         setOf(R::LOST_FIRST_CHILD, R::LATE_IEQ)},
        {Scope::SECTION, setOf(R::REPEATED_ENDPOINT),
         setOf(R::UNKNOWN_ENDPOINT, R::UNKNOWN_ATTRIBUTE, R::MISSING_ATTRIBUTE)},
        {Scope::DOCUMENT,
         setOf(R::SCHEMA, R::UNKNOWN_ELEMENT, R::WRONG_SECTION, R::INCLUDE_POSITION,
               R::REPEATED_VALUE, R::REPEATED_ENDPOINT, R::OVERWRITTEN, R::LATE_IEQ,
               R::UNREAD_ELEMENT, R::UNKNOWN_ATTRIBUTE, R::ABSENT),
         setOf(R::CHILDLESS, R::EMPTY_SECTION, R::TUNING_WITHOUT_DATA)},
        {Scope::DOCUMENT, setOf(R::ABSENT), kStructure | kIds},
        {Scope::DOCUMENT, setOf(R::MISSING_DEFAULT_DEVICE),
         kStructure | setOf(R::UNKNOWN_PORT, R::UNSUPPORTED_PORT, R::REPEATED_DEVICE,
                            R::UNKNOWN_ATTRIBUTE, R::MISSING_ATTRIBUTE, R::SCHEMA)},
        {Scope::DOCUMENT, setOf(R::REPEATED_PRESET, R::REPEATED_PROFILE, R::MISSING_PRESET),
         setOf(R::UNKNOWN_PRESET, R::OTHER_BANDS, R::UNKNOWN_ATTRIBUTE, R::MISSING_ATTRIBUTE,
               R::NOT_A_NUMBER)},
        {Scope::DOCUMENT, setOf(R::MISSING_PRESET),
         kStructure | setOf(R::REPEATED_PRESET, R::UNKNOWN_PRESET_TYPE)},
        {Scope::DOCUMENT, setOf(R::GEQ_PROFILE),
         kStructure | kIds | setOf(R::MISSING_ATTRIBUTE, R::UNKNOWN_ATTRIBUTE, R::NOT_A_NUMBER)},
        {Scope::DOCUMENT,
         kTexts | kIds |
                 setOf(R::OVERWRITTEN, R::SCHEMA, R::ABSENT, R::INCLUDE_POSITION, R::LATE_IEQ,
                       R::WRONG_SECTION),
         setOf(R::OTHER_FORMAT)},
};

/** What has been found where so far. */
class Found {
  public:
    Found(const XmlElements& document, const Findings& findings) : mDocument(document) {
        for (const Finding& finding : findings.all()) {
            const size_t element = finding.element;
            if (element == Finding::kNoElement) {
                continue;
            }
            mRules[{Scope::ELEMENT, element}] |= setOf(finding.rule);
            mRules[{Scope::SECTION, sectionOf(element)}] |= setOf(finding.rule);
            // What is in the wrong section is missing from another.
            if (isOfSection(element) || finding.rule == Rule::WRONG_SECTION) {
                mRules[{Scope::DOCUMENT, 0}] |= setOf(finding.rule);
            }
            const auto best = mBest.try_emplace(element, weightOf(finding)).first;
            best->second = std::min(best->second, weightOf(finding));
        }
    }

    bool isConsequence(const Finding& finding) const {
        return finding.element != Finding::kNoElement &&
               (mBest.at(finding.element) != weightOf(finding) || isInWhole(finding.element) ||
                std::any_of(std::begin(kConsequences), std::end(kConsequences),
                            [&](const Consequence& each) { return isEffect(finding, each); }));
    }

    /** Whether it lies below an element that is affected as a whole. */
    bool isInWhole(size_t element) const {
        const size_t parent = mDocument.parent(element);
        const auto best = mBest.find(parent);
        const bool isWhole = best != mBest.end() && best->second.first == kWhole;
        return parent != 0 && (isWhole || isInWhole(parent));
    }

  private:
    /** How much a finding says of its element, and its rule: the lowest stands for the others. */
    using Weight = std::pair<int, Rule>;

    static constexpr int kWhole = 0;

    static Weight weightOf(const Finding& finding) {
        if (finding.isWhole) {
            return {kWhole, finding.rule};
        }
        // Attributes do not stand for one another.
        if (!finding.attribute.empty()) {
            return {1, Rule{}};
        }
        const bool isVague = rowOf(finding.rule).severity == Severity::NOTE ||
                             finding.rule == Rule::UNEQUAL_COLUMNS;
        return {isVague ? 3 : 2, finding.rule};
    }

    /** Whether it is one of those that sections are found by, and no parameter. */
    bool isOfSection(size_t element) const {
        const size_t parent = mDocument.parent(element);
        return parent == 0 || mDocument.name(parent) == rowOf(DocumentElement::TUNING).name ||
               std::any_of(std::begin(kDocumentElements), std::end(kDocumentElements),
                           [&](const auto& row) { return mDocument.name(element) == row.name; });
    }

    size_t sectionOf(size_t element) const {
        const size_t parent = mDocument.parent(element);
        return parent == 0 ? element : sectionOf(parent);
    }

    bool isEffect(const Finding& finding, const Consequence& row) const {
        const RuleSet effect = setOf(finding.rule);
        const size_t place = row.scope == Scope::ELEMENT   ? finding.element
                             : row.scope == Scope::SECTION ? sectionOf(finding.element)
                                                           : 0;
        const auto found = mRules.find({row.scope, place});
        return (row.effects & effect) != 0 && found != mRules.end() &&
               (found->second & row.causes & ~effect) != 0;
    }

    const XmlElements& mDocument;
    std::map<std::pair<Scope, size_t>, RuleSet> mRules;
    std::map<size_t, Weight> mBest;
};

/** Adds what the schema has against places that no other layer, with better words, knows of. */
void addFaults(const XmlElements& document, const Findings& faults, Findings& findings) {
    const Found found(document, findings);
    const std::vector<Finding> others = findings.all();
    for (const Finding& fault : faults.all()) {
        const auto covers = [&fault](const Finding& each) {
            return each.element == fault.element &&
                   (each.attribute.empty() || fault.attribute.empty() ||
                    each.attribute == fault.attribute);
        };
        if (!found.isInWhole(fault.element) && std::none_of(others.begin(), others.end(), covers)) {
            findings.add(fault);
        }
    }
}

}  // namespace

CheckSchema::CheckSchema(const std::string& file)
    : rootName(file.empty() ? "device_tuning_data" : nullptr) {
    const XmlPointer<xmlDoc> embedded = file.empty() ? parseEmbedded() : nullptr;
    const XmlErrorScope errors;
    const std::shared_ptr<xmlSchemaParserCtxt> parser(
            file.empty() ? xmlSchemaNewDocParserCtxt(embedded.get())
                         : xmlSchemaNewParserCtxt(file.c_str()),
            xmlSchemaFreeParserCtxt);
    schema.reset(xmlSchemaParse(parser.get()), xmlSchemaFree);
    if (schema == nullptr) {
        throw std::runtime_error((file.empty() ? "the built-in schema" : file) +
                                 (errors.first().empty() ? ": no schema" : errors.first()));
    }
}

Findings checkFile(const std::string& path, const CheckSchema& schema,
                   const std::vector<std::string>& disabled) {
    const std::string text = readDocument(path);
    Findings findings;
    Findings faults;
    const auto document = parseForCheck(text, schema, findings, faults);
    if (!document.has_value()) {
        return findings;
    }
    try {
        const ReadTrace trace(path, text, *document);
        const DeviceData& data = trace.getDocument();
        const CheckContext context = {*document, trace, data, data.getFormatVersion(), findings};
        for (const auto check :
             {checkStructure, checkAttributes, checkObjects, checkConsistency, checkFormat}) {
            check(context);
        }
    } catch (const RefusedDocument& refused) {
        findings.add({Rule::REFUSED, refused.line, "the library gives up here"});
    }
    addFaults(*document, faults, findings);
    findings.removeIf([&](const Finding& each) { return contains(disabled, rowOf(each.rule).id); });
    const Found found(*document, findings);
    findings.removeIf([&](const Finding& each) { return found.isConsequence(each); });
    findings.locate(*document);
    return findings;
}

}  // namespace ormel::tools
