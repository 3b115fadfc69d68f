// The command that compares two tuning documents.
#pragma once

namespace CLI {
class App;
}

namespace ormel::tools {

/** Adds the command; it leaves 1 in @p status when the documents differ. */
void addDiff(CLI::App& app, int& status);

}  // namespace ormel::tools
