// Drawing by the program gnuplot.
#pragma once

#include <string>

namespace ormel::tools {

/**
 * Has gnuplot work through a script, and writes what that draws to a file, which stays as it was
 * when something fails. Throws std::runtime_error then, and when there is no gnuplot.
 */
void drawWithGnuplot(const std::string& script, const std::string& file);

/** A text as a literal of a script, in which nothing of it is more than itself. */
std::string gnuplotLiteral(const std::string& text);

}  // namespace ormel::tools
