// What show has to say, for people.
#pragma once

#include <ostream>

#include "text/Json.h"

namespace ormel::tools {

/** Prints what `show --json` answers, laid out for a terminal. */
void printText(const Json& shown, std::ostream& out);

}  // namespace ormel::tools
