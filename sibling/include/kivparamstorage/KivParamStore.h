// Host stand-in for the process-wide shared store of effect parameters.
#pragma once

#include <utils/Mutex.h>
#include <utils/Singleton.h>

#include <cstdint>
#include <map>
#include <set>
#include <utility>
#include <vector>

/** Android output device bits. Hosts have no header for them. */
using audio_devices_t = uint32_t;

namespace ormel {

/**
 * Holds the values of every parameter by device. Values set are staged; readers see them after the
 * commit. Every operation may be called from any thread.
 */
class KivParamStore : public android::Singleton<KivParamStore> {
  public:
    /** Device and parameter code. */
    using Key = std::pair<audio_devices_t, int>;

    KivParamStore();

    /**
     * Stages values, replacing those staged for the same device and code.
     *
     * @param values copied; may be null if @p count is not positive
     * @param count  number of values; a negative one counts as 0
     */
    void setParam(audio_devices_t device, int code, const int* values, int count);

    /** Publishes all staged values. */
    void commitChange();

    /**
     * Whether a parameter belongs to the current profile: setProfile() then applies it for the
     * maker's own content too.
     */
    bool isDeviceProcParamInProfile(int code);

    /**
     * Replaces the parameter codes for which isDeviceProcParamInProfile() is true. A device has its
     * own; this stand-in starts with its own choice: the codes of `aoon`, `aobs`, `aron`, `arbs`,
     * `arsa`, `ceon`, `ceqt`, `dom`, `gebs`, `geon` and `vbon`.
     */
    void setDeviceProcParams(std::set<int> codes);

    /** The published values, by device and code. */
    std::map<Key, std::vector<int>> getPublished();

    /** Number of commitChange() calls. */
    int getCommitCount();

  private:
    android::Mutex mLock;
    std::map<Key, std::vector<int>> mStaged;
    std::map<Key, std::vector<int>> mPublished;
    std::set<int> mDeviceProcParams;
    int mCommitCount = 0;
};

}  // namespace ormel
