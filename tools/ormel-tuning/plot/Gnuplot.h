// Drawing by the program gnuplot.
#pragma once

#include <string>

namespace ormel::tools {

/**
 * What gnuplot draws on its standard output by a script. Throws std::runtime_error when it fails,
 * and when there is no gnuplot.
 */
std::string drawnByGnuplot(const std::string& script);

/** A text as a literal of a script, in which nothing of it is more than itself. */
std::string gnuplotLiteral(const std::string& text);

}  // namespace ormel::tools
