#include "Progress.h"

#include <unistd.h>

#include <chrono>
#include <condition_variable>
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
    /** Begins a step, or with an empty text ends all; returns what was going on. */
    std::string set(std::string what) {
        const std::lock_guard<std::mutex> lock(mMutex);
        if (::isatty(STDERR_FILENO) == 0) {
            return "";
        }
        if (!mIsStarted) {
            mIsStarted = true;
            std::thread([this] { run(); }).detach();
        }
        if (what.empty() && mIsShown) {
            std::cerr << "\r\033[K" << std::flush;
            mIsShown = false;
        }
        std::swap(mStep, what);
        mChanged.notify_one();
        return what;
    }

  private:
    [[noreturn]] void run() {
        std::this_thread::sleep_for(kPatience);
        std::unique_lock<std::mutex> lock(mMutex);
        for (;;) {
            mChanged.wait(lock, [this] { return !mStep.empty(); });
            std::cerr << '\r' << printable(mStep) << " ...\033[K" << std::flush;
            mIsShown = true;
            mChanged.wait_for(lock, kPause);
        }
    }

    std::mutex mMutex;
    std::condition_variable mChanged;
    std::string mStep;
    bool mIsStarted = false;
    bool mIsShown = false;
};

Display& display() {
    static auto& display = *new Display;
    return display;
}

}  // namespace

ProgressStep::ProgressStep(const std::string& what) : mBefore(display().set(what)) {}

ProgressStep::~ProgressStep() {
    display().set(mBefore);
}

}  // namespace ormel::tools
