// The process-wide shared store of effect parameters, as a host has it.
#pragma once

#include <utils/Mutex.h>
#include <utils/Singleton.h>

#include <cstdint>
#include <map>
#include <set>
#include <utility>
#include <vector>

/** Android output device bits, which hosts have no header for. */
using audio_devices_t = uint32_t;

namespace ormel {

/**
 * Keeps the values of every parameter of every device. What is set is staged, and seen by readers
 * once it is committed. Every operation may be called from any thread.
 */
class KivParamStore : public android::Singleton<KivParamStore> {
  public:
    /** Device and parameter code. */
    using Key = std::pair<audio_devices_t, int>;

    KivParamStore();

    /**
     * Stages values in place of those staged before for the same device and code.
     *
     * @param values copied; may be null when @p count is not positive
     * @param count  number of values; a negative one counts as 0
     */
    void setParam(audio_devices_t device, int code, const int* values, int count);

    /** Publishes all that is staged. */
    void commitChange();

    /**
     * Whether the device-processing part of the current profile holds a parameter, which the tuning
     * document then decides for content in the maker's own encoding too.
     */
    bool isDeviceProcParamInProfile(int code);

    /**
     * Replaces the parameter codes for which isDeviceProcParamInProfile() is true. A device has its
     * own; a host starts with a choice that is this stand-in's: the codes of `aoon`, `aobs`,
     * `aron`, `arbs`, `arsa`, `ceon`, `ceqt`, `dom`, `gebs`, `geon` and `vbon`.
     */
    void setDeviceProcParams(std::set<int> codes);

    /** The published values, by device and code. */
    std::map<Key, std::vector<int>> getPublished();

    /** How often commitChange() was called. */
    int getCommitCount();

  private:
    android::Mutex mLock;
    std::map<Key, std::vector<int>> mStaged;
    std::map<Key, std::vector<int>> mPublished;
    std::set<int> mDeviceProcParams;
    int mCommitCount = 0;
};

}  // namespace ormel
