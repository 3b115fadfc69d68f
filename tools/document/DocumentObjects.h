// The objects of a tuning document under one roof.
#pragma once

#include "LoadedDocument.h"
#include "text/Json.h"

namespace ormel::tools {

/**
 * The header, then the objects by class, each class in document order. Of each its title "object",
 * which no other one has; the "line" of its element, but for the header; what it says beside its
 * parameters, by name; and, if its class has parameters, their "values" by name.
 */
Json objectsOf(const LoadedDocument& document);

}  // namespace ormel::tools
