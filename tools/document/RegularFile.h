// Documents that are given by something else than a file of their own.
#pragma once

#include <string>

namespace ormel::tools {

/**
 * The path of a regular file that has what @p name stands for: the name itself, or a copy where
 * that is "-" for standard input, a pipe or a device. A copy lasts as long as the process and is
 * made once. Throws std::runtime_error, which names it, for a folder, for what cannot be read, for
 * a pipe that nobody writes to and for more than a document may have.
 */
std::string regularFile(const std::string& name);

}  // namespace ormel::tools
