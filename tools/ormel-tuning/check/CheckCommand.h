// The command that finds what is wrong with tuning documents.
#pragma once

#include <CLI/CLI.hpp>

namespace ormel::tools {

/**
 * Adds the command to the program. Its callback sets @p status: 0 without findings, 1 with some, 2
 * when a file cannot be read, which is said on stderr.
 */
void addCheck(CLI::App& app, int& status);

}  // namespace ormel::tools
