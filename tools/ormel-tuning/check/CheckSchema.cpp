#include "CheckSchema.h"

#include <libxml/parser.h>
#include <libxml/xmlschemas.h>

#include <algorithm>
#include <cstddef>
#include <set>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace ormel::tools {

/** Made at build time, in pieces since compilers limit the length of a literal. */
extern const std::string_view kSchemaPieces[];
extern const size_t kSchemaPieceCount;

namespace {

struct ParserDeleter {
    void operator()(xmlSchemaParserCtxt* parser) const { xmlSchemaFreeParserCtxt(parser); }
};

struct ValidatorDeleter {
    void operator()(xmlSchemaValidCtxt* validator) const { xmlSchemaFreeValidCtxt(validator); }
};

struct TreeDeleter {
    void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
};

/**
 * The schema built in without what it demands of ids and references, which libxml2 compares each
 * with each. The layer of meaning has rules for all of that, and better words.
 */
xmlDoc* parseEmbedded() {
    const std::string text = embeddedSchema();
    xmlDoc* const document = xmlReadMemory(text.data(), static_cast<int>(text.size()),
                                           "spatializer-tuning.xsd", nullptr, 0);
    std::vector<xmlNode*> constraints;
    forEachElement(xmlDocGetRootElement(document), [&constraints](xmlNode* node) {
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

void keepFirst(void* text, XmlError* error) {
    auto& first = *static_cast<std::string*>(text);
    if (first.empty() && error->message != nullptr) {
        first = ":" + std::to_string(error->line) + ": " + error->message;
        first.erase(first.find_last_not_of('\n') + 1);
    }
}

/** Turns libxml2's complaints of one document into findings. */
class Complaints {
  public:
    Complaints(const CheckDocument& document, Findings& findings)
        : mDocument(document), mFindings(findings) {}

    static void take(void* self, XmlError* error) { static_cast<Complaints*>(self)->add(*error); }

  private:
    void add(const xmlError& error) {
        const auto* const node = static_cast<const xmlNode*>(error.node);
        // What is not the document's fault, as that entities are not looked into, has no node.
        if (node == nullptr || error.message == nullptr) {
            return;
        }
        const size_t element = mDocument.placeOf(node);
        std::string attribute = attributeIn(error.message);
        if (mKnown.insert({element, attribute}).second) {
            mFindings.add(mDocument.finding(Rule::SCHEMA, element, textOf(error.message),
                                            std::move(attribute)));
        }
    }

    /** "Element 'x', attribute 'y': ..." or "... The attribute 'y' is ...". */
    static std::string attributeIn(std::string_view message) {
        constexpr std::string_view kMark = "attribute '";
        const size_t found = message.find(kMark);
        if (found == std::string_view::npos) {
            return "";
        }
        const size_t begin = found + kMark.size();
        return std::string(message.substr(begin, message.find('\'', begin) - begin));
    }

    /** The element's name goes in front of every finding anyway. */
    static std::string textOf(std::string_view message) {
        message = message.substr(0, message.find('\n'));
        const size_t colon = message.find(": ");
        const bool isNamed = message.compare(0, 9, "Element '") == 0;
        return std::string(isNamed && colon != std::string_view::npos ? message.substr(colon + 2)
                                                                      : message);
    }

    const CheckDocument& mDocument;
    Findings& mFindings;
    std::set<std::pair<size_t, std::string>> mKnown;
};

}  // namespace

std::string embeddedSchema() {
    std::string text;
    for (size_t i = 0; i < kSchemaPieceCount; ++i) {
        text += kSchemaPieces[i];
    }
    return text;
}

void CheckSchema::SchemaDeleter::operator()(_xmlSchema* schema) const {
    xmlSchemaFree(schema);
}

CheckSchema::CheckSchema(const std::string& file) {
    const std::unique_ptr<xmlDoc, TreeDeleter> embedded(file.empty() ? parseEmbedded() : nullptr);
    const std::unique_ptr<xmlSchemaParserCtxt, ParserDeleter> parser(
            file.empty() ? xmlSchemaNewDocParserCtxt(embedded.get())
                         : xmlSchemaNewParserCtxt(file.c_str()));
    std::string error;
    xmlSetStructuredErrorFunc(&error, keepFirst);
    xmlSchemaSetParserStructuredErrors(parser.get(), keepFirst, &error);
    mSchema.reset(xmlSchemaParse(parser.get()));
    xmlSetStructuredErrorFunc(nullptr, nullptr);
    if (mSchema == nullptr) {
        throw std::runtime_error((file.empty() ? "the schema built in" : file) +
                                 (error.empty() ? ": no schema" : error));
    }
}

void CheckSchema::validate(const CheckDocument& document, Findings& findings) const {
    const std::unique_ptr<xmlSchemaValidCtxt, ValidatorDeleter> validator(
            xmlSchemaNewValidCtxt(mSchema.get()));
    Complaints complaints(document, findings);
    xmlSchemaSetValidStructuredErrors(validator.get(), Complaints::take, &complaints);
    // With a name at hand libxml2 does not look through all that precedes each fault for another.
    xmlSchemaValidateSetFilename(validator.get(), "noname.xml");
    xmlSchemaValidateDoc(validator.get(), document.getTree());
}

}  // namespace ormel::tools
