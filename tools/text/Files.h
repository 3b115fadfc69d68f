// Files that the commands write.
#pragma once

#include <string>

namespace ormel::tools {

/** Writes a file anew. Throws std::runtime_error, which names it, where that fails. */
void writeFile(const std::string& path, const std::string& content);

/** The part of a path behind the last slash. */
std::string baseName(const std::string& path);

}  // namespace ormel::tools
