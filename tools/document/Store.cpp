#include "Store.h"

#include <ormel/SpatializerParamArray.h>

#include <algorithm>
#include <cstdio>
#include <stdexcept>

#include "text/Files.h"

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

void loadForProcess(const std::string& file, android_LogPriority lowest) {
    using Outcome = SpatializerParamArray::LoadOutcome;
    setLibraryLog(ANDROID_LOG_SILENT);
    SpatializerParamArray& store = SpatializerParamArray::getInstance();
    if (store.getLoadOutcome() == Outcome::LOADED) {
        throw std::runtime_error(std::string(SpatializerParamArray::kDefaultTuningFile) +
                                 " is in use on this device and would mix with the document");
    }
    setLibraryLog(lowest);
    const std::string text = readDocument(file);
    // The library's messages name a document by its path.
    if (isFile(file)) {
        store.loadSpatializerXMLFile(file);
    } else {
        store.loadSpatializerXMLText(text);
    }
    if (store.getLoadOutcome() != Outcome::LOADED) {
        throw std::runtime_error(file + ": cannot be loaded as a tuning document");
    }
}

}  // namespace ormel::tools
