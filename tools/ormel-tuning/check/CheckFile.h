// The checking of one document.
#pragma once

#include <libxml/xmlschemas.h>

#include <memory>
#include <string>
#include <vector>

#include "CheckRules.h"

namespace ormel::tools {

/** A schema, ready for use. */
struct CheckSchema {
    /** @param file path of a schema; empty for the one built in. Throws std::runtime_error. */
    explicit CheckSchema(const std::string& file);

    /** The root's name, whatever a document calls it; null where documents are held to it. */
    const char* rootName;
    std::shared_ptr<xmlSchema> schema;
};

/**
 * What is wrong with a document, but for rules whose ids are @p disabled. Throws std::runtime_error
 * if it cannot be opened.
 */
Findings checkFile(const std::string& path, const CheckSchema& schema,
                   const std::vector<std::string>& disabled = {});

}  // namespace ormel::tools
