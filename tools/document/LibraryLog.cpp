#include "LibraryLog.h"

#include <algorithm>
#include <cstdio>

namespace ormel::tools {

namespace {

/** By priority. */
constexpr const char* kLevels[] = {"unknown", "default", "verbose", "debug",
                                   "info",    "warning", "error",   "fatal"};

int32_t sLowestPriority = ANDROID_LOG_SILENT;

void logMessage(const __android_logger_data* data, const char* message) {
    if (data->priority >= sLowestPriority) {
        const char* const level =
                kLevels[std::clamp<int32_t>(data->priority, 0, ANDROID_LOG_FATAL)];
        // Where standard error is gone, there is nobody left to tell.
        (void)std::fprintf(stderr, "%s %s: %s\n", level, data->tag == nullptr ? "" : data->tag,
                           message);
    }
}

}  // namespace

void setLibraryLog(android_LogPriority lowest) {
    sLowestPriority = lowest;
    __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
    __android_log_set_logger(logMessage);
}

}  // namespace ormel::tools
