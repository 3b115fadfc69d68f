// The command that shows what a tuning document makes an effect do.
#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace ormel::tools {

/** The command's arguments, as they stand on the command line. */
struct ApplyOptions {
    std::string file;
    std::string profile;
    bool ormelContent = false;
    /** "PORT=DEVICE" each. */
    std::vector<std::string> tunings;
    /** Whether all messages of the library are printed, not just warnings and errors. */
    bool verbose = false;
};

/**
 * Loads a document into the process's store, applies it to an effect and writes down every call
 * that the effect gets. Runs once per process. Unusable arguments or documents throw
 * std::runtime_error before anything is written.
 */
void runApply(const ApplyOptions& options, std::ostream& out);

}  // namespace ormel::tools
