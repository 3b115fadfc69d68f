// What show has to say, for people.
#pragma once

#include <ostream>

#include "document/PackedEntries.h"
#include "text/Json.h"

namespace ormel::tools {

/** Prints what `show --json` answers, laid out for a terminal. */
void printText(const Json& shown, std::ostream& out);

/** The parts of a value by name; those of bands under "bands", band by band. */
void to_json(Json& json, const Shape& shape);

/** Prints the parts of a value, named fields first and bands as a table below. */
void printStructure(const Json& structure, std::ostream& out);

}  // namespace ormel::tools
