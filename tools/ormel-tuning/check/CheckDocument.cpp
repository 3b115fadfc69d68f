#include <algorithm>
#include <set>
#include <stdexcept>
#include <string_view>

#include "CheckFile.h"
#include "EmbeddedText.h"
#include "text/Text.h"

namespace ormel::tools {

namespace {

/** What files begin with that libxml2 may unpack, and who packs them. */
constexpr std::pair<std::string_view, const char*> kPackers[] = {
        {"\x1f\x8b", "gzip"}, {"\xfd\x37zXZ", "xz"}, {{"\x5d\0\0", 3}, "lzma"}};

/** What libxml2 reads however it was built. */
constexpr std::string_view kEncodings[] = {"utf-8",    "utf-16", "utf-16le",   "utf-16be",
                                           "us-ascii", "ascii",  "iso-8859-1", "iso-latin-1"};

/** The first line of what libxml2 says of an error. */
std::string_view messageOf(const xmlError& error) {
    const std::string_view message = error.message == nullptr ? "" : error.message;
    return message.substr(0, message.find('\n'));
}

/** The line that libxml2 names of a tag behind @p mark: "Start Tag band line 12"; else @p other. */
long lineIn(std::string_view message, std::string_view mark, long other) {
    const size_t found = message.find(mark);
    const size_t line = found == std::string::npos ? found : message.find(" line ", found);
    return line == std::string::npos ? other
                                     : std::stol("0" + std::string(message.substr(line + 6)));
}

/** "Element 'x', attribute 'y': ..." or "... The attribute 'y' is ...". */
std::string attributeIn(std::string_view message) {
    constexpr std::string_view kMark = "attribute '";
    const size_t found = message.find(kMark);
    if (found == std::string_view::npos) {
        return "";
    }
    const size_t begin = found + kMark.size();
    return std::string(message.substr(begin, message.find('\'', begin) - begin));
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
        xmlSchemaSetValidStructuredErrors(mValidator.get(), takeError, this);
        mListener.rootName = schema.rootName;
        mPlug.reset(xmlSchemaSAXPlug(mValidator.get(), &mListener.handlers, &mListener.context),
                    xmlSchemaSAXUnplug);
    }

    /** Gets what the parser comes across. */
    XmlListener& listener() { return mListener; }

  private:
    static void takeError(void* validation, XmlError* error) {
        static_cast<SchemaValidation*>(validation)->add(messageOf(*error));
    }

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

/** Adds what is not read everywhere. */
void findOddities(const XmlElements& document, Findings& findings) {
    const std::string& encoding = document.getEncoding();
    if (!encoding.empty() && !contains(kEncodings, lowered(encoding))) {
        findings.add({Rule::ENCODING, 1,
                      "the encoding " + encoding + " is not read everywhere; write UTF-8"});
    }
    for (const auto& [element, name] : document.getReferences()) {
        findings.add({Rule::ENTITY_REFERENCE, 0,
                      "what &" + name + "; stands for is not read; write it out", element});
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
        throw std::runtime_error((file.empty() ? "the schema built in" : file) +
                                 (errors.first().empty() ? ": no schema" : errors.first()));
    }
}

std::optional<XmlElements> parseForCheck(const std::string& text, const CheckSchema& schema,
                                         Findings& findings, Findings& faults) {
    for (const auto& [mark, packer] : kPackers) {
        if (text.compare(0, mark.size(), mark) == 0) {
            findings.add({Rule::COMPRESSED, 1,
                          std::string("the file is packed with ") + packer + "; ship it unpacked"});
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
    if (!document->isReadable() && !fault.has_value()) {
        fault = {Rule::NOT_WELL_FORMED, 1,
                 text.empty() ? "Document is empty" : "Document cannot be read"};
    }
    if (fault.has_value()) {
        findings.add(*fault);
    }
    if (!document->isReadable()) {
        return std::nullopt;
    }
    findOddities(*document, findings);
    return document;
}

}  // namespace ormel::tools
