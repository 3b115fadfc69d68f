#include "Gnuplot.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <system_error>

#include "text/Progress.h"
#include "text/Text.h"

namespace ormel::tools {

namespace {

[[noreturn]] void fail(const std::string& what, int error) {
    throw std::runtime_error(what + ": " + std::generic_category().message(error));
}

/** A file without a name. */
class ScratchFile {
  public:
    ScratchFile() : mFile(std::tmpfile()) {
        if (mFile == nullptr) {
            fail("no temporary file", errno);
        }
    }

    int descriptor() const { return ::fileno(mFile.get()); }

    void write(const std::string& text) {
        const size_t written = std::fwrite(text.data(), 1, text.size(), mFile.get());
        if (written != text.size() || std::fflush(mFile.get()) != 0) {
            fail("cannot write a temporary file", errno);
        }
        std::rewind(mFile.get());
    }

    std::string read() {
        std::rewind(mFile.get());
        std::string text;
        char block[4096];
        for (size_t size = 1; size != 0; text.append(block, size)) {
            size = std::fread(block, 1, sizeof(block), mFile.get());
        }
        return text;
    }

  private:
    struct Closer {
        void operator()(std::FILE* file) const { (void)std::fclose(file); }
    };

    std::unique_ptr<std::FILE, Closer> mFile;
};

/** The program's exit status. It reads and writes files, so neither side waits for the other. */
int runGnuplot(const ScratchFile& in, const ScratchFile& out, const ScratchFile& messages) {
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, in.descriptor(), STDIN_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, out.descriptor(), STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, messages.descriptor(), STDERR_FILENO);
    // Without the user's own settings, which would change the picture.
    char program[] = "gnuplot";
    char defaults[] = "-d";
    char* const arguments[] = {program, defaults, nullptr};
    pid_t child = 0;
    const int error = ::posix_spawnp(&child, program, &actions, nullptr, arguments, environ);
    ::posix_spawn_file_actions_destroy(&actions);
    if (error != 0 && error != ENOENT) {
        fail("gnuplot", error);
    }
    int status = 0;
    while (error == 0 && ::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    // A system may find out that there is no such program when the child has been made already.
    if (error == ENOENT || (WIFEXITED(status) && WEXITSTATUS(status) == 127)) {
        throw std::runtime_error(
                "drawing takes gnuplot, which is not installed; Debian has it in "
                "gnuplot-nox");
    }
    return status;
}

}  // namespace

std::string drawnByGnuplot(const std::string& script) {
    const ProgressStep step("drawing");
    ScratchFile in;
    ScratchFile out;
    ScratchFile messages;
    in.write(script);
    const int status = runGnuplot(in, out, messages);
    std::string picture = out.read();
    if (status != 0 || picture.empty()) {
        throw std::runtime_error("gnuplot failed: " + printable(messages.read()));
    }
    return picture;
}

std::string gnuplotLiteral(const std::string& text) {
    std::string literal = "'";
    for (const char character : printable(text)) {
        literal.append(character == '\'' ? 2 : 1, character);
    }
    return literal + "'";
}

}  // namespace ormel::tools
