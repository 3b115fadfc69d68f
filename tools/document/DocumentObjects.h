// The objects of a tuning document under one roof.
#pragma once

#include <ormel/ParameterValues.h>

#include <string>
#include <vector>

#include "LoadedDocument.h"
#include "text/Json.h"

namespace ormel::tools {

/** An object of any class. */
struct DocumentObject {
    /** What it is, unique among the objects of a document: "profile 1, endpoint speaker". */
    std::string title;
    /** Line of its element; 0 for the document's header. */
    long line;
    /** What it says beside its parameters, by name. */
    Json fields;
    /** Its parameters; null for a class that has none. */
    const ParameterValues* values;
};

/** The header, then the objects by class, each class in document order. */
std::vector<DocumentObject> objectsOf(const LoadedDocument& document);

}  // namespace ormel::tools
