// The layer of `check` that holds documents to the schema.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "CheckDocument.h"

// libxml2's own name.
struct _xmlSchema;  // NOLINT(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)

namespace ormel::tools {

/** The text of schema/spatializer-tuning.xsd as it was when the tool was built. */
std::string embeddedSchema();

/** A schema, ready for use. */
class CheckSchema {
  public:
    /** @param file path of a schema; empty for the one built in. Throws std::runtime_error. */
    explicit CheckSchema(const std::string& file);

    /** Appends what the document does not keep to, an element's or attribute's first fault each. */
    void validate(const CheckDocument& document, Findings& findings) const;

  private:
    struct SchemaDeleter {
        void operator()(_xmlSchema* schema) const;
    };

    std::unique_ptr<_xmlSchema, SchemaDeleter> mSchema;
};

}  // namespace ormel::tools
