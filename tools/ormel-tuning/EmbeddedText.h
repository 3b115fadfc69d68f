// Files of this project that the tool carries, as they were when it was built.
#pragma once

#include <string>

namespace ormel::tools {

/** schema/spatializer-tuning.xsd. */
std::string schemaText();

/** The template of a report's page. */
std::string pageText();

}  // namespace ormel::tools
