// The command that shows what a tuning document makes an effect do.
#pragma once

namespace CLI {
class App;
}

namespace ormel::tools {

/** Adds the command, which runs once per process: it works on the process's store. */
void addApply(CLI::App& app, int& status);

}  // namespace ormel::tools
