#include "CheckSchema.h"

#include <stdexcept>

#include "EmbeddedText.h"

namespace ormel::tools {

namespace {

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
    message = message.substr(0, message.find('\n'));
    const size_t colon = message.find(": ");
    const bool isNamed = message.compare(0, 9, "Element '") == 0;
    return std::string(isNamed && colon != std::string_view::npos ? message.substr(colon + 2)
                                                                  : message);
}

}  // namespace

CheckSchema::CheckSchema(const std::string& file) : mIsBuiltIn(file.empty()) {
    const XmlPointer<xmlDoc> embedded = file.empty() ? parseEmbedded() : nullptr;
    const XmlErrorScope errors;
    const SchemaPointer<xmlSchemaParserCtxt> parser(
            file.empty() ? xmlSchemaNewDocParserCtxt(embedded.get())
                         : xmlSchemaNewParserCtxt(file.c_str()));
    mSchema.reset(xmlSchemaParse(parser.get()));
    if (mSchema == nullptr) {
        throw std::runtime_error((file.empty() ? "the schema built in" : file) +
                                 (errors.first().empty() ? ": no schema" : errors.first()));
    }
}

SchemaValidation::SchemaValidation(const CheckSchema& schema)
    : mValidator(xmlSchemaNewValidCtxt(schema.get())) {
    xmlSchemaSetValidStructuredErrors(mValidator.get(), takeError, this);
    mListener.rootName = schema.rootName();
    mPlug.reset(xmlSchemaSAXPlug(mValidator.get(), &mListener.handlers, &mListener.context));
}

void SchemaValidation::takeError(void* self, XmlError* error) {
    if (error->message != nullptr) {
        static_cast<SchemaValidation*>(self)->add(error->message);
    }
}

void SchemaValidation::add(std::string_view message) {
    std::string attribute = attributeIn(message);
    if (mFaulty.insert({mListener.element, attribute}).second) {
        const auto text = mListener.textLines.find(mListener.element);
        const bool isText = message.find("Character content") != std::string_view::npos;
        const long line = isText && text != mListener.textLines.end() ? text->second : 0;
        mFindings.add(
                {Rule::SCHEMA, line, textOf(message), mListener.element, "", std::move(attribute)});
    }
}

}  // namespace ormel::tools
