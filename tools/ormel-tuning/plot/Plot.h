// The command that draws a tuning document's curves.
#pragma once

namespace CLI {
class App;
}

namespace ormel::tools {

void addPlot(CLI::App& app, int& status);

}  // namespace ormel::tools
