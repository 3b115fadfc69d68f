// The command line: a list of commands, each in a file of its own.
#include <CLI/CLI.hpp>

#include <cerrno>
#include <csignal>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "Commands.h"
#include "EmbeddedText.h"
#include "text/Text.h"

namespace {

/** Exit status of a run that could not do its work, wrong usage included. */
constexpr int kFailed = 2;

constexpr char kFooter[] =
        R"(Documents may be files, pipes, or - for standard input.

Exit status: 0 success, 1 findings or differences, 2 failure.

Example:
  ormel-tuning show examples/tablet-quad.xml --profile movie --device speaker)";

/** In the order of the help. */
constexpr void (*kCommands[])(CLI::App& app, int& status) = {
        ormel::tools::addCheck, ormel::tools::addShow, ormel::tools::addApply,
        ormel::tools::addDiff,  ormel::tools::addPlot, ormel::tools::addReport};

/** The command of a name. Throws std::runtime_error, which says one near it, for no command. */
CLI::App& commandOf(CLI::App& app, const std::string& name) {
    std::vector<std::string> names;
    for (CLI::App* const command : app.get_subcommands({})) {
        names.push_back(command->get_name());
        if (names.back() == name) {
            return *command;
        }
    }
    const std::string nearest = ormel::tools::nearestOf(name, names);
    throw std::runtime_error("unknown command '" + name + "'; " +
                             (nearest.empty() ? "see --help" : "the nearest is '" + nearest + "'"));
}

void addCommands(CLI::App& app, int& status) {
    for (const auto add : kCommands) {
        add(app, status);
    }
    app.require_subcommand(1);
    app.set_version_flag("--version", "ormel-tuning " ORMEL_VERSION);
    app.add_subcommand("schema", "Print the schema of tuning documents, for editors and builds")
            ->footer("Example:\n  ormel-tuning schema > spatializer-tuning.xsd")
            ->callback([] { std::cout << ormel::tools::schemaText(); });
    CLI::App* const help = app.add_subcommand("help", "Print the help of a command");
    help->add_option("COMMAND");
    help->callback([&app, help] {
        const std::string name = help->get_option("COMMAND")->as<std::string>();
        // The program's own help would be that of its command help.
        std::cout << (name.empty() ? app.get_formatter()->make_help(&app, app.get_name(),
                                                                    CLI::AppFormatMode::Normal)
                                   : commandOf(app, name).help(app.get_name()));
    });
    // Last, since a command that is added gets the footer that there is.
    app.footer(kFooter);
}

int run(int argc, char** argv) {
    CLI::App app("Works with spatializer tuning documents.", "ormel-tuning");
    int status = 0;
    addCommands(app, status);
    if (argc > 1 && *argv[1] != '-') {
        commandOf(app, argv[1]);
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& request) {
        app.exit(request);
    } catch (const CLI::ConfigError& error) {
        // The last word is "check.failon", or "chek.++" for the start of a section.
        const std::string what = error.what();
        const std::string setting = what.substr(what.rfind(' ') + 1);
        throw std::runtime_error(app.get_option("--config")->as<std::string>() +
                                 ": unknown setting " + setting.substr(0, setting.rfind(".++")) +
                                 "; the section [check] has fail-on and disable");
    } catch (const CLI::ParseError& error) {
        const bool isBare = app.get_subcommands().empty() && error.get_name() == "RequiredError";
        throw std::runtime_error((isBare ? "a command is required" : std::string(error.what())) +
                                 "; see --help");
    }
    return status;
}

}  // namespace

int main(int argc, char** argv) {
    // If the reader of a pipe has gone, a write fails; the signal must not end the process.
    (void)std::signal(SIGPIPE, SIG_IGN);
    try {
        const int status = run(argc, argv);
        // Whoever stops reading, as head does, needs no message.
        if (!std::cout.flush() && errno != EPIPE) {
            throw std::runtime_error("cannot write the output");
        }
        return std::cout ? status : kFailed;
    } catch (const std::exception& error) {
        std::cerr << "ormel-tuning: " << ormel::tools::printable(error.what()) << '\n';
        return kFailed;
    }
}
