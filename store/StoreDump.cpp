// The store's state as text.
#include <ormel/SetParamCommand.h>
#include <ormel/SpatializerParamArray.h>

#include <algorithm>
#include <chrono>
#include <iterator>
#include <mutex>
#include <thread>

namespace ormel {

const char SpatializerParamArray::kVersion[] = "libspatializerparamstorage " ORMEL_VERSION;

namespace {

using List = std::vector<int32_t>;

constexpr int kMaxIndent = 80;

constexpr auto kLockPatience = std::chrono::seconds(1);
constexpr auto kLockPause = std::chrono::milliseconds(5);

constexpr const char* kOutcomeNames[] = {"loaded", "not read", "over a bound"};

template <size_t kCount>
std::string named(const char* const (&names)[kCount], int32_t value) {
    const bool known = value >= 0 && value < static_cast<int32_t>(kCount);
    return std::string(known ? names[value] : "unknown") + " (" + std::to_string(value) + ")";
}

std::string printable(std::string text) {
    for (char& c : text) {
        const auto byte = static_cast<unsigned char>(c);
        c = byte < ' ' || byte == 0x7f ? '?' : c;
    }
    return text;
}

std::string entriesOf(const List& list) {
    // A list inserted by a lookup has no header.
    const bool hasHeader = list.size() >= SetParamCommand::kListHeaderWords;
    return std::to_string(hasHeader ? list[SetParamCommand::LIST_COUNT] : 0) + " entries";
}

std::string gainsText(const List& gains) {
    std::string text = std::to_string(gains.size()) + " gains";
    const char* separator = ": ";
    for (size_t i = 0; i < std::min(gains.size(), kGeqBands); ++i) {
        text += separator + std::to_string(gains[i]);
        separator = " ";
    }
    return text + (gains.size() > kGeqBands ? " ..." : "");
}

/** Mutex::timedLock() exists only on Android. */
bool lockInTime(android::Mutex& mutex) {
    const auto deadline = std::chrono::steady_clock::now() + kLockPatience;
    while (mutex.tryLock() != 0) {
        if (std::chrono::steady_clock::now() >= deadline) {
            return false;
        }
        std::this_thread::sleep_for(kLockPause);
    }
    return true;
}

}  // namespace

/** Dumps a store, whose lock the caller holds. */
class StoreDump {
  public:
    StoreDump(const SpatializerParamArray& array, std::string& out, size_t indent)
        : mArray(array), mOut(out), mIndent(indent) {}

    void putState() {
        const auto outcome = static_cast<int32_t>(mArray.mLoadOutcome);
        const std::string reason = mArray.mLoadError.empty() ? "" : ": " + mArray.mLoadError;
        put(0, "document: " + printable(mArray.mLoadPath) + ", " + named(kOutcomeNames, outcome) +
                       printable(reason));
        put(0, "current profile: " + named(kProfileNames, mArray.mCurrentProfile));
        put(0, "output channels: " + std::to_string(mArray.mOutputChannelCount));
        putProfiles();
        putTunings();
        putPorts();
    }

    void put(size_t depth, const std::string& line) {
        mOut.append(mIndent + 2 * depth, ' ').append(line).append("\n");
    }

  private:
    void putProfiles() {
        put(0, "document profiles: " + std::to_string(mArray.mTuningProfileCount));
        for (const auto& [profile, list] : mArray.mXMLProfileParams) {
            put(1, named(kProfileNames, profile) + ": " + entriesOf(list));
        }
        put(0, "graphic equalizers:");
        for (const auto& [profile, gains] : mArray.mProfileGeqGains) {
            put(1, named(kProfileNames, profile) + ": " + gainsText(gains));
        }
    }

    void putTunings() {
        put(0, "device tunings: " + std::to_string(mArray.mTuningCount));
        for (const auto& [device, list] : mArray.mXMLTuningParams) {
            std::string line = printable(device) + ": " + entriesOf(list.words);
            const auto port = mArray.mAvailableTuningDevices.find(device);
            if (port != mArray.mAvailableTuningDevices.end()) {
                line += ", port " + printable(port->second);
            }
            const auto matrix = mArray.mMixMatrices.find(device);
            if (matrix != mArray.mMixMatrices.end()) {
                line += ", mix matrix of " + std::to_string(matrix->second.words.size());
            }
            put(1, line);
        }
    }

    void putPorts() {
        put(0, "ports:");
        for (int32_t port = 0; port < static_cast<int32_t>(kPortCount); ++port) {
            put(1, named(kPortNames, port));
            const auto found = mArray.mSelectedTuningDevices.find(port);
            const bool hasSelection = found != mArray.mSelectedTuningDevices.end();
            const std::string selected = hasSelection ? found->second : "";
            for (const std::string& device : mArray.devicesOf(port)) {
                put(2, (device == selected ? "* " : "  ") + printable(device));
            }
            if (!selected.empty() && !mArray.isValidTuningDevice(port, selected)) {
                put(2, "* " + printable(selected) + ", not available");
            }
        }
    }

    const SpatializerParamArray& mArray;
    std::string& mOut;
    const size_t mIndent;
};

void SpatializerParamArray::dump(std::string& out, int indent) {
    StoreDump dump(*this, out, static_cast<size_t>(std::clamp(indent, 0, kMaxIndent)));
    dump.put(0, kVersion);
    if (!lockInTime(mLock)) {
        dump.put(0, "could not lock");
        return;
    }
    const std::lock_guard<android::Mutex> lock(mLock, std::adopt_lock);
    dump.putState();
}

}  // namespace ormel
