// The tool's commands.
#pragma once

#include <CLI/CLI.hpp>

namespace ormel::tools {

// Each adds its command to the program. Where a command's exit status depends on what it finds, its
// callback leaves that in @p status. A callback throws std::runtime_error for what it cannot do.

/** Calls that an effect gets. Runs once per process: it works on the process's store. */
void addApply(CLI::App& app);

/** What is wrong with documents: 0 without findings, 1 with some, 2 if a file cannot be read. */
void addCheck(CLI::App& app, int& status);

/** What two documents differ in: 1 if they do. */
void addDiff(CLI::App& app, int& status);

/** Curves over frequency. */
void addPlot(CLI::App& app);

/** A page for the review of a document, which fails for what cannot be read. */
void addReport(CLI::App& app);

/** What a document becomes. */
void addShow(CLI::App& app);

}  // namespace ormel::tools
