// The layer of `check` that holds documents to the schema.
#pragma once

#include <libxml/xmlschemas.h>

#include <cstddef>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "CheckRules.h"
#include "document/XmlElements.h"

namespace ormel::tools {

struct SchemaDeleter {
    void operator()(xmlSchema* schema) const { xmlSchemaFree(schema); }
    void operator()(xmlSchemaParserCtxt* parser) const { xmlSchemaFreeParserCtxt(parser); }
    void operator()(xmlSchemaValidCtxt* validator) const { xmlSchemaFreeValidCtxt(validator); }
    void operator()(xmlSchemaSAXPlugStruct* plug) const { xmlSchemaSAXUnplug(plug); }
};

template <typename Handle>
using SchemaPointer = std::unique_ptr<Handle, SchemaDeleter>;

/** A schema, ready for use. */
class CheckSchema {
  public:
    /** @param file path of a schema; empty for the one built in. Throws std::runtime_error. */
    explicit CheckSchema(const std::string& file);

    xmlSchema* get() const { return mSchema.get(); }

    /** The root's name, whatever a document calls it; null where documents are held to it. */
    const char* rootName() const { return mIsBuiltIn ? "device_tuning_data" : nullptr; }

  private:
    const bool mIsBuiltIn;
    SchemaPointer<xmlSchema> mSchema;
};

/** Holds one document to a schema while it is parsed, so that no tree of it is needed. */
class SchemaValidation {
  public:
    explicit SchemaValidation(const CheckSchema& schema);

    /** Gets what the parser comes across. */
    XmlListener& listener() { return mListener; }

    /**
     * What the document does not keep to, an element's or attribute's first fault each. The line is
     * 0 where it is the element's.
     */
    const std::vector<Finding>& findings() const { return mFindings.all(); }

  private:
    static void takeError(void* self, XmlError* error);
    void add(std::string_view message);

    const SchemaPointer<xmlSchemaValidCtxt> mValidator;
    XmlListener mListener;
    SchemaPointer<xmlSchemaSAXPlugStruct> mPlug;
    std::set<std::pair<size_t, std::string>> mFaulty;
    Findings mFindings;
};

}  // namespace ormel::tools
