// The command line: a list of commands, each in a file of its own.
#include <CLI/CLI.hpp>

#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>

#include "Commands.h"

namespace {

/** Exit status of a run that could not do its work, wrong usage included. */
constexpr int kFailed = 2;

constexpr char kFooter[] =
        R"(Exit status: 0 fine, 1 findings or differences, 2 could not do the work.

Example:
  ormel-tuning show examples/tablet-quad.xml --profile movie --device speaker)";

int run(int argc, char** argv) {
    CLI::App app("Works with spatializer tuning documents.", "ormel-tuning");
    app.require_subcommand(1);
    app.footer(kFooter);
    int status = 0;
    ormel::tools::addCheck(app, status);
    ormel::tools::addShow(app);
    ormel::tools::addApply(app);
    ormel::tools::addDiff(app, status);
    ormel::tools::addPlot(app);
    ormel::tools::addReport(app);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0) {
            return app.exit(error);
        }
        throw std::runtime_error(std::string(error.what()) + "; see --help");
    }
    if (!std::cout.flush()) {
        throw std::runtime_error("cannot write the output");
    }
    return status;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        std::cerr << "ormel-tuning: " << error.what() << '\n';
        return kFailed;
    }
}
