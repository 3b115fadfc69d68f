// Files that the commands read and write.
#pragma once

#include <string>

namespace ormel::tools {

/**
 * The bytes of a document: of a file, a pipe or a device, or of standard input by the name "-".
 * What can be read but once is kept for the next time. Throws std::runtime_error, which names it,
 * for a folder, for what cannot be read, for a pipe that nobody writes to and for more than a
 * document may have.
 */
std::string readDocument(const std::string& name);

/** Whether that is a file, which others can read by the name too. */
bool isFile(const std::string& name);

/** Writes a file anew. Throws std::runtime_error, which names it, where that fails. */
void writeFile(const std::string& path, const std::string& content);

/** The part of a path behind the last slash. */
inline std::string baseName(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

}  // namespace ormel::tools
