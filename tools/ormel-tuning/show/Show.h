// The command that shows what becomes of a tuning document.
#pragma once

namespace CLI {
class App;
}

namespace ormel::tools {

void addShow(CLI::App& app, int& status);

}  // namespace ormel::tools
