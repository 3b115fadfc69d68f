// The checking of one document.
#pragma once

#include <string>
#include <vector>

#include "CheckDocument.h"

namespace ormel::tools {

/**
 * What is wrong with a document, but for rules whose ids are @p disabled. Throws std::runtime_error
 * if it cannot be opened.
 */
Findings checkFile(const std::string& path, const CheckSchema& schema,
                   const std::vector<std::string>& disabled = {});

}  // namespace ormel::tools
