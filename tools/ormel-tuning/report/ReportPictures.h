// Pictures as parts of a page.
#pragma once

#include <vector>

#include "plot/Pictures.h"
#include "text/Json.h"

namespace ormel::tools {

/**
 * {pictures: [{id, title, flags, svg, curves: [{name, values}]}], defs, flat, notDrawn}: pictures
 * whose values are all 0 are named only, those that
 * change come first, and where gnuplot fails, notDrawn says why.
 */
Json picturesJson(std::vector<Picture> pictures);

}  // namespace ormel::tools
