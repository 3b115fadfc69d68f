#include "Files.h"

#include <fcntl.h>
#include <ormel/DocumentBudget.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <stdexcept>
#include <system_error>

namespace ormel::tools {

namespace {

constexpr char kStandardInput[] = "-";
/** How long a pipe is given for somebody to open its other end, in ms; standard input has one. */
constexpr int kPatience = 1000;
constexpr int kForEver = -1;

std::string readAll(int from, const std::string& name) {
    const int patience = from == STDIN_FILENO ? kForEver : kPatience;
    std::string text;
    for (char block[65536];;) {
        struct pollfd waiting = {from, POLLIN, 0};
        const bool isSilent = ::poll(&waiting, 1, patience) == 0;
        const ssize_t count = ::read(from, block, sizeof(block));
        if (count == 0 && isSilent) {
            throw std::runtime_error(name + ": nothing writes to this pipe");
        }
        if (count == 0) {
            return text;
        }
        if (count < 0 && errno != EAGAIN && errno != EINTR) {
            throw std::system_error(errno, std::generic_category(), name);
        }
        text.append(block, static_cast<size_t>(std::max<ssize_t>(count, 0)));
        if (text.size() > DocumentBudget::kMaxDocumentBytes) {
            throw std::runtime_error(name + ": larger than " +
                                     std::to_string(DocumentBudget::kMaxDocumentBytes) + " bytes");
        }
    }
}

std::string readByName(const std::string& name) {
    if (name == kStandardInput) {
        return readAll(STDIN_FILENO, "standard input");
    }
    // A pipe that nobody writes to must not be waited for.
    const int file = ::open(name.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (file < 0) {
        throw std::system_error(errno, std::generic_category(), name);
    }
    const std::shared_ptr<void> closer(nullptr, [file](void* /* none */) { ::close(file); });
    return readAll(file, name);
}

}  // namespace

std::string readDocument(const std::string& name) {
    if (isFile(name)) {
        return readByName(name);
    }
    static auto& kept = *new std::map<std::string, std::string>;
    const auto found = kept.find(name);
    return found != kept.end() ? found->second : kept.emplace(name, readByName(name)).first->second;
}

bool isFile(const std::string& name) {
    std::error_code error;
    return name != kStandardInput && std::filesystem::is_regular_file(name, error);
}

void writeFile(const std::string& path, const std::string& content) {
    std::ofstream target(path, std::ios::binary | std::ios::trunc);
    if (!target.write(content.data(), static_cast<std::streamsize>(content.size())).flush()) {
        throw std::system_error(errno, std::generic_category(), path);
    }
}

}  // namespace ormel::tools
