// The lines of a document as parts of a page.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "text/Json.h"

namespace ormel::tools {

/** A line and some around it: [{number, text, isPlace}]. Empty for no line of the text. */
Json excerptJson(const std::vector<std::string>& lines, long line);

/** [{number, text, finding}], the latter being what @p findingOfLine has for a line. */
Json sourceJson(const std::vector<std::string>& lines,
                const std::map<long, std::string>& findingOfLine);

}  // namespace ormel::tools
