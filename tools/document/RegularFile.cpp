#include "RegularFile.h"

#include <fcntl.h>
#include <ormel/DocumentBudget.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <map>
#include <stdexcept>
#include <system_error>

namespace ormel::tools {

namespace {

constexpr char kStandardInput[] = "-";
/** How long a pipe is given for somebody to open its other end, in ms; standard input has one. */
constexpr int kPatience = 1000;
constexpr int kForEver = -1;

[[noreturn]] void fail(const std::string& name, int error) {
    throw std::runtime_error(name + ": " + std::generic_category().message(error));
}

[[noreturn]] void failTooLarge(const std::string& name) {
    throw std::runtime_error(name + ": larger than " +
                             std::to_string(DocumentBudget::kMaxDocumentBytes) + " bytes");
}

/** Reads some of what there is, as soon as there is some; 0 at the end. */
size_t readSome(int from, const std::string& name, char* out, size_t room) {
    const int patience = from == STDIN_FILENO ? kForEver : kPatience;
    for (;;) {
        struct pollfd waiting = {from, POLLIN, 0};
        const bool isSilent = ::poll(&waiting, 1, patience) == 0;
        const ssize_t count = ::read(from, out, room);
        if (count == 0 && isSilent) {
            throw std::runtime_error(name + ": nobody writes to this pipe");
        }
        if (count >= 0) {
            return static_cast<size_t>(count);
        }
        if (errno != EAGAIN && errno != EINTR) {
            fail(name, errno);
        }
    }
}

/** The path of a copy of what is read. Nobody closes the copy, which has no name of its own. */
std::string copyOf(const std::string& name, int from) {
    std::FILE* const copy = std::tmpfile();
    if (copy == nullptr) {
        fail("no temporary file", errno);
    }
    char block[65536];
    size_t total = 0;
    for (size_t size = 1; size != 0; total += size) {
        size = readSome(from, name, block, sizeof(block));
        if (total + size > DocumentBudget::kMaxDocumentBytes) {
            failTooLarge(name);
        }
        if (std::fwrite(block, 1, size, copy) != size) {
            fail("cannot write a temporary file", errno);
        }
    }
    if (std::fflush(copy) != 0) {
        fail("cannot write a temporary file", errno);
    }
    return "/dev/fd/" + std::to_string(::fileno(copy));
}

std::string findFile(const std::string& name) {
    if (name == kStandardInput) {
        return copyOf("standard input", STDIN_FILENO);
    }
    // A pipe that nobody writes to must not be waited for.
    const int file = ::open(name.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    struct stat status = {};
    if (file < 0 || ::fstat(file, &status) != 0) {
        fail(name, errno);
    }
    if (S_ISDIR(status.st_mode)) {
        fail(name, EISDIR);
    }
    // Some files of the system's say that they are empty, or fail when they are read.
    const bool isPlain = S_ISREG(status.st_mode) && status.st_size > 0;
    if (isPlain && static_cast<size_t>(status.st_size) > DocumentBudget::kMaxDocumentBytes) {
        failTooLarge(name);
    }
    std::string path = isPlain ? name : copyOf(name, file);
    ::close(file);
    return path;
}

}  // namespace

std::string regularFile(const std::string& name) {
    static auto& known = *new std::map<std::string, std::string>;
    const auto found = known.find(name);
    return found != known.end() ? found->second : known.emplace(name, findFile(name)).first->second;
}

}  // namespace ormel::tools
