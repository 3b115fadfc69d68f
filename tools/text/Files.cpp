#include "Files.h"

#include <cerrno>
#include <fstream>
#include <stdexcept>
#include <system_error>

namespace ormel::tools {

void writeFile(const std::string& path, const std::string& content) {
    std::ofstream target(path, std::ios::binary | std::ios::trunc);
    if (!target.write(content.data(), static_cast<std::streamsize>(content.size())).flush()) {
        throw std::runtime_error(path + ": " + std::generic_category().message(errno));
    }
}

std::string baseName(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

}  // namespace ormel::tools
