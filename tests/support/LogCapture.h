// Captures what the library logs.
#pragma once

#include <android/log.h>
#include <gmock/gmock.h>

#include <mutex>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace ormel::test {

/** Priority (3 debug to 6 error), tag, text. */
using LogLine = std::tuple<int, std::string, std::string>;

/** Keeps every message, including debug ones, while it exists. At most one may exist. */
class LogCapture {
  public:
    LogCapture() {
        take();
        mMinimumPriority = __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
        __android_log_set_logger([](const __android_logger_data* data, const char* message) {
            const std::lock_guard<std::mutex> lock(mutex());
            lines().emplace_back(data->priority, data->tag == nullptr ? "" : data->tag, message);
        });
    }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;
    ~LogCapture() {
        __android_log_set_logger(__android_log_stderr_logger);
        __android_log_set_minimum_priority(mMinimumPriority);
    }

    /** The messages since the last call. */
    std::vector<LogLine> take() {
        const std::lock_guard<std::mutex> lock(mutex());
        return std::exchange(lines(), {});
    }

  private:
    static std::vector<LogLine>& lines() {
        static std::vector<LogLine> all;
        return all;
    }

    static std::mutex& mutex() {
        static std::mutex instance;
        return instance;
    }

    int mMinimumPriority;
};

inline LogLine debug(const char* tag, const std::string& text) {
    return {ANDROID_LOG_DEBUG, tag, text};
}

inline LogLine info(const char* tag, const std::string& text) {
    return {ANDROID_LOG_INFO, tag, text};
}

inline LogLine error(const char* tag, const std::string& text) {
    return {ANDROID_LOG_ERROR, tag, text};
}

}  // namespace ormel::test
