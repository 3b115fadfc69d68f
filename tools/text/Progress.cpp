#include "Progress.h"

#include <unistd.h>

#include <chrono>
#include <iostream>
#include <mutex>
#include <thread>
#include <utility>

#include "Text.h"

namespace ormel::tools {

namespace {

/** How long a run takes before it says what it does, and how often it does then. */
constexpr auto kPatience = std::chrono::milliseconds(700);
constexpr auto kPause = std::chrono::milliseconds(200);

/** Shows the current step on the terminal, from a thread of its own: the work has no time to. */
class Display {
  public:
    Display() {
        std::thread([this] { run(); }).detach();
    }

    /** Begins a step, or with an empty text ends all; returns what was going on. */
    std::string set(std::string what) {
        const std::lock_guard<std::mutex> lock(mMutex);
        if (what.empty() && mIsShown) {
            std::cerr << "\r\033[K" << std::flush;
            mIsShown = false;
        }
        std::swap(mStep, what);
        return what;
    }

  private:
    [[noreturn]] void run() {
        for (auto pause = kPatience;; pause = kPause) {
            std::this_thread::sleep_for(pause);
            const std::lock_guard<std::mutex> lock(mMutex);
            if (!mStep.empty()) {
                std::cerr << '\r' << printable(mStep) << " ...\033[K" << std::flush;
                mIsShown = true;
            }
        }
    }

    std::mutex mMutex;
    std::string mStep;
    bool mIsShown = false;
};

std::string setStep(std::string what) {
    static Display* const display = ::isatty(STDERR_FILENO) != 0 ? new Display : nullptr;
    return display == nullptr ? "" : display->set(std::move(what));
}

}  // namespace

ProgressStep::ProgressStep(const std::string& what) : mBefore(setStep(what)) {}

ProgressStep::~ProgressStep() {
    setStep(mBefore);
}

}  // namespace ormel::tools
