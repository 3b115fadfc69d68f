#include "OwnProcess.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "Measure.h"

// Has a fixed name for valgrind.
extern "C" [[gnu::noinline]] void ormel_bench_counted(const std::function<void()>& work) {
    work();
    // Prevents a tail call above, which would leave the counted function.
    benchmark::ClobberMemory();
}

namespace ormel::bench {

namespace {

std::string commandOf(const std::string& task, const std::string& argument) {
    return std::filesystem::read_symlink("/proc/self/exe").string() + ' ' + task + ' ' + argument;
}

}  // namespace

std::optional<std::string> outputOf(const std::string& command) {
    // NOLINTNEXTLINE(cert-env33-c): the commands consist of this program's own words and paths.
    std::FILE* const pipe = ::popen(command.c_str(), "r");
    check(pipe != nullptr, "starting a process");
    std::string output;
    std::array<char, 4096> part{};
    while (std::fgets(part.data(), part.size(), pipe) != nullptr) {
        output += part.data();
    }
    const bool hasFailed = ::pclose(pipe) != 0;
    return hasFailed ? std::nullopt : std::optional(output);
}

std::optional<double> numberAfter(const std::string& word, const std::string& text) {
    const size_t at = text.find(word);
    if (at == std::string::npos) {
        return std::nullopt;
    }
    return std::strtod(text.c_str() + at + word.size(), nullptr);
}

std::string outputOfTask(const std::string& task, const std::string& argument) {
    const auto output = outputOf(commandOf(task, argument));
    check(output.has_value(), "a fresh process");
    return *output;
}

void doCounted(const std::function<void()>& work) {
    ormel_bench_counted(work);
}

std::optional<double> instructionsOf(const std::string& task, const std::string& argument) {
    constexpr char kCounter[] =
            "valgrind --tool=callgrind --callgrind-out-file=/dev/null"
            " --toggle-collect=ormel_bench_counted ";
    const auto output = outputOf(kCounter + commandOf(task, argument) + " 2>&1");
    return output.has_value() ? numberAfter("Collected :", *output) : std::nullopt;
}

}  // namespace ormel::bench
