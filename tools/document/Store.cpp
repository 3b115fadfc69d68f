#include "Store.h"

#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>

#include "LibraryLog.h"
#include "RegularFile.h"

namespace ormel::tools {

namespace {

bool isLoaded(SpatializerParamArray& store) {
    return store.getLoadOutcome() == SpatializerParamArray::LoadOutcome::LOADED;
}

}  // namespace

SpatializerParamArray& processStore() {
    setLibraryLog(ANDROID_LOG_SILENT);
    SpatializerParamArray& store = SpatializerParamArray::getInstance();
    if (isLoaded(store)) {
        throw std::runtime_error(std::string(SpatializerParamArray::kDefaultTuningFile) +
                                 " is in use on this device and would mix with the document");
    }
    return store;
}

void load(const std::string& file, SpatializerParamArray& store, android_LogPriority lowest) {
    setLibraryLog(lowest);
    store.loadSpatializerXMLFile(regularFile(file));
    if (!isLoaded(store)) {
        throw std::runtime_error(file + ": cannot be loaded as a tuning document");
    }
}

}  // namespace ormel::tools
