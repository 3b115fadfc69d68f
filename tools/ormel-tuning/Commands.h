// The tool's commands.
#pragma once

#include <CLI/CLI.hpp>

namespace ormel::tools {

// Each adds its command to the program. Where a command's exit status depends on what it finds, its
// callback leaves that in @p status. A callback throws std::runtime_error for what it cannot do.

/** Runs once per process: it works on the process's store. */
void addApply(CLI::App& app, int& status);
/** 0 without findings, 1 with some, 2 if a file cannot be read. */
void addCheck(CLI::App& app, int& status);
/** 1 if the documents differ. */
void addDiff(CLI::App& app, int& status);
void addPlot(CLI::App& app, int& status);
void addReport(CLI::App& app, int& status);
void addShow(CLI::App& app, int& status);

}  // namespace ormel::tools
