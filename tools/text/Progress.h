// How far long work has come.
#pragma once

#include <string>

namespace ormel::tools {

/**
 * A step of the work. If it takes long, a terminal on stderr shows what it is until it ends; one
 * inside another takes the line meanwhile.
 */
class ProgressStep {
  public:
    explicit ProgressStep(const std::string& what);
    ProgressStep(const ProgressStep&) = delete;
    ProgressStep& operator=(const ProgressStep&) = delete;
    ~ProgressStep();

  private:
    std::string mBefore;
};

}  // namespace ormel::tools
