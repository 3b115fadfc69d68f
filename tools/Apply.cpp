#include "Apply.h"

#include <fcntl.h>
#include <ormel/SpatializerParamArray.h>
#include <ormel/SpatializerParamCache.h>
#include <unistd.h>

#include <cerrno>
#include <iomanip>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>

#include "LibraryLog.h"
#include "Names.h"
#include "RecordingEffect.h"

namespace ormel::tools {

namespace {

constexpr size_t kColumns = 100;
/** Where lists of values begin, and the meanings of parameters. */
constexpr size_t kListColumn = 32;
constexpr size_t kMeaningColumn = 40;

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

/**
 * The process's store. Making it tries to load the device's own document, and where there is none,
 * as on hosts, libxml2 complains on stderr.
 */
SpatializerParamArray& makeEmptyStore() {
    const char* const ownDocument = SpatializerParamArray::kDefaultTuningFile;
    std::optional<MutedStderr> muted;
    if (::access(ownDocument, F_OK) != 0) {
        muted.emplace();
    }
    setLibraryLog(ANDROID_LOG_SILENT);
    SpatializerParamArray& store = SpatializerParamArray::getInstance();
    if (!hasLoadFailed()) {
        throw std::runtime_error(std::string(ownDocument) +
                                 " is in use on this device and would mix with the document");
    }
    return store;
}

void load(const ApplyOptions& options, SpatializerParamArray& store) {
    setLibraryLog(options.verbose ? ANDROID_LOG_VERBOSE : ANDROID_LOG_WARN);
    if (::access(options.file.c_str(), R_OK) != 0) {
        throw std::runtime_error(options.file + ": " + std::generic_category().message(errno));
    }
    store.loadSpatializerXMLFile(options.file);
    if (hasLoadFailed()) {
        throw std::runtime_error(options.file + ": cannot be loaded as a tuning document");
    }
}

using TuningChoice = std::pair<Port, std::string>;

TuningChoice choiceOf(const std::string& text, SpatializerParamArray& store) {
    const size_t equals = text.find('=');
    if (equals == std::string::npos) {
        throw std::runtime_error("'" + text + "' is not PORT=DEVICE");
    }
    const Port port = portOf(text.substr(0, equals));
    const std::string device = text.substr(equals + 1);
    if (!store.isValidTuningDevice(port, device)) {
        const std::string available = store.getAvailableTuningDevices(port);
        throw std::runtime_error("unknown tuning device '" + device + "' for port " +
                                 kPortNames[port] + "; there " +
                                 (available.empty() ? "is none" : "are " + available));
    }
    return {port, device};
}

/** Breaks a text at blanks, so that it fits between @p indent and the last column. */
std::string wrapped(std::string_view text, size_t indent) {
    const size_t width = kColumns - indent;
    std::string lines;
    while (text.size() > width) {
        const size_t blank = text.rfind(' ', width);
        if (blank == std::string_view::npos) {
            break;
        }
        lines.append(text.substr(0, blank)).append("\n").append(indent, ' ');
        text.remove_prefix(blank + 1);
    }
    return lines.append(text);
}

std::string listText(const std::vector<int32_t>& values) {
    std::string text;
    for (const int32_t value : values) {
        text.append(text.empty() ? "" : ", ").append(std::to_string(value));
    }
    return text;
}

/** A single value stands before its meaning; a list below, and its length in its place. */
void print(const EffectCall& call, std::ostream& out) {
    const std::string device = deviceText(call.device);
    if (call.kind == EffectCall::Kind::COMMIT) {
        out << "  commit " << device << '\n';
        return;
    }
    auto [letters, meaning] = codeText(call.code);
    if (call.status != 0) {
        meaning += "; failed with status " + std::to_string(call.status);
    }
    const bool single = call.values.size() == 1;
    const std::string list = listText(call.values);
    const std::string value = single ? list : '[' + std::to_string(call.values.size()) + ']';
    out << (call.kind == EffectCall::Kind::SET ? "  set    " : "  read   ") << std::left
        << std::setw(17) << device << std::setw(5) << letters << std::right << std::setw(7) << value
        << "  " << wrapped(meaning, kMeaningColumn) << '\n';
    if (call.values.size() > 1) {
        out << std::string(kListColumn, ' ') << wrapped(list, kListColumn) << '\n';
    }
}

void print(const std::string& operation, int32_t status, RecordingEffect& effect,
           std::ostream& out) {
    out << operation << '\n';
    const std::vector<EffectCall> calls = effect.takeCalls();
    for (const EffectCall& call : calls) {
        print(call, out);
    }
    out << (calls.empty() ? "  no calls\n" : "");
    out << "  returned " << std::to_string(status) << '\n';
}

}  // namespace

void runApply(const ApplyOptions& options, std::ostream& out) {
    const OrmSpatializerProfileId profile = profileOf(options.profile);
    SpatializerParamArray& store = makeEmptyStore();
    load(options, store);
    std::vector<TuningChoice> choices;
    for (const std::string& tuning : options.tunings) {
        choices.push_back(choiceOf(tuning, store));
    }

    SpatializerParamCache cache;
    RecordingEffect effect;
    for (const auto& [port, device] : choices) {
        const int32_t status = cache.setSelectedTuningDevice(port, device, &effect);
        print(std::string("setSelectedTuningDevice(") + kPortNames[port] + ", " + device + ")",
              status, effect, out);
    }
    const char* const content = options.ormelContent ? "true" : "false";
    const int32_t profileStatus = cache.setProfile(profile, &effect, options.ormelContent);
    print("setProfile(" + profileText(profile) + ", isOrmelContent=" + content + ")", profileStatus,
          effect, out);
    const int32_t tuningStatus = cache.loadTuning(&effect);
    print("loadTuning()", tuningStatus, effect, out);
}

}  // namespace ormel::tools
