// The command line.
#include <CLI/CLI.hpp>

#include <exception>
#include <iostream>
#include <stdexcept>

#include "Apply.h"

namespace {

using ormel::tools::ApplyOptions;

/** Exit status of a run that could not do its work, wrong usage included. */
constexpr int kFailed = 2;

constexpr char kExample[] = R"(Example:
  ormel-tuning apply examples/phone-multi-tuning.xml --profile music \
      --tuning bluetooth=bluetooth_car)";

void addApply(CLI::App& app, ApplyOptions& options) {
    CLI::App* const apply = app.add_subcommand(
            "apply", "Show every call that a tuning document makes an effect get");
    apply->add_option("FILE", options.file, "Tuning document")->required();
    apply->add_option("--profile", options.profile, "dynamic, movie, music, custom, or a number")
            ->required();
    apply->add_flag("--ormel-content", options.ormelContent,
                    "Apply the profile as for content in the maker's own encoding");
    apply->add_option("--tuning", options.tunings,
                      "Select a tuning device for a port first; may be repeated")
            ->type_name("PORT=DEVICE")
            ->allow_extra_args(false);
    apply->add_flag("--verbose", options.verbose, "Print all messages of the library to stderr");
    apply->footer(kExample);
}

int run(int argc, char** argv) {
    CLI::App app("Works with spatializer tuning documents.", "ormel-tuning");
    app.require_subcommand(1);
    app.footer(kExample);
    ApplyOptions options;
    addApply(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : kFailed;
    }
    ormel::tools::runApply(options, std::cout);
    if (!std::cout.flush()) {
        throw std::runtime_error("cannot write the output");
    }
    return 0;
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
