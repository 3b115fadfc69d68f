// Pictures drawn by the program gnuplot.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "Pictures.h"

namespace ormel::tools {

/** The span of all values of each kind, for one vertical scale. */
using Scales = std::map<const PictureKind*, std::pair<int64_t, int64_t>>;

Scales scalesOf(const std::vector<Picture>& pictures);

/** Lines that the legend of a picture takes. */
size_t legendLines(const Picture& picture);

/**
 * Draws a picture, above room for so many lines of a legend; on the scale of its kind, where there
 * is one.
 */
void writePicture(const Picture& picture, const Scales& scales, size_t legendLines,
                  std::ostream& script);

/** A text as a literal of a script, in which nothing of it is more than itself. */
std::string gnuplotLiteral(const std::string& text);

/**
 * What gnuplot draws on its standard output by a script. Throws std::runtime_error when it fails,
 * and when there is no gnuplot.
 */
std::string drawnByGnuplot(const std::string& script);

}  // namespace ormel::tools
