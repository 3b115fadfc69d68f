#include "Store.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <new>
#include <optional>
#include <stdexcept>
#include <system_error>

#include "LibraryLog.h"

namespace ormel::tools {

namespace {

/** Sends stderr nowhere while it lives. */
class MutedStderr {
  public:
    MutedStderr() : mStderr(::dup(STDERR_FILENO)) {
        const int nowhere = ::open("/dev/null", O_WRONLY);
        ::dup2(nowhere, STDERR_FILENO);
        ::close(nowhere);
    }
    MutedStderr(const MutedStderr&) = delete;
    MutedStderr& operator=(const MutedStderr&) = delete;
    ~MutedStderr() {
        ::dup2(mStderr, STDERR_FILENO);
        ::close(mStderr);
    }

  private:
    int mStderr;
};

template <typename Make>
auto makeEmpty(Make make) -> decltype(make()) {
    const char* const ownDocument = SpatializerParamArray::kDefaultTuningFile;
    // Where there is no such document, as on hosts, libxml2 complains on stderr.
    std::optional<MutedStderr> muted;
    if (::access(ownDocument, F_OK) != 0) {
        muted.emplace();
    }
    setLibraryLog(ANDROID_LOG_SILENT);
    decltype(make()) store = make();
    if (!hasLoadFailed()) {
        throw std::runtime_error(std::string(ownDocument) +
                                 " is in use on this device and would mix with the document");
    }
    return store;
}

}  // namespace

SpatializerParamArray& processStore() {
    return makeEmpty([]() -> SpatializerParamArray& {
        SpatializerParamArray& store = SpatializerParamArray::getInstance();
        store.~SpatializerParamArray();
        return *new (&store) SpatializerParamArray;
    });
}

std::unique_ptr<SpatializerParamArray> makeStore() {
    return makeEmpty([] { return std::make_unique<SpatializerParamArray>(); });
}

void requireReadable(const std::string& file) {
    if (::access(file.c_str(), R_OK) != 0) {
        throw std::runtime_error(file + ": " + std::generic_category().message(errno));
    }
}

void load(const std::string& file, SpatializerParamArray& store, android_LogPriority lowest) {
    setLibraryLog(lowest);
    requireReadable(file);
    store.loadSpatializerXMLFile(file);
    if (hasLoadFailed()) {
        throw std::runtime_error(file + ": cannot be loaded as a tuning document");
    }
}

}  // namespace ormel::tools
