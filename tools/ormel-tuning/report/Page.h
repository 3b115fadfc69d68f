// A page made from the template that the tool carries.
#pragma once

#include <string>

#include "text/Json.h"

namespace ormel::tools {

/**
 * Fills the template in. Every text stays text, whatever is in it; only what stands under "svg" and
 * "defs" is markup already.
 */
std::string pageOf(const Json& content);

}  // namespace ormel::tools
