// The checking of one document.
#pragma once

#include <string>

#include "CheckRules.h"
#include "CheckSchema.h"

namespace ormel::tools {

/** Everything that is wrong with a document. Throws std::runtime_error if it cannot be opened. */
Findings checkFile(const std::string& path, const CheckSchema& schema);

}  // namespace ormel::tools
