// The bridge that hands packed parameter lists to the process-wide shared parameter store.
#pragma once

#include <utils/String16.h>

#include <cstdint>
#include <vector>

namespace ormel {

/** Stands for the effect towards SetParamCommand. Has no state, takes no locks. */
class KivEffect {
  public:
    /** Both arguments are there for the callers' sake only. */
    KivEffect(int id, const android::String16& name);

    /**
     * Hands a packed list to the shared store.
     *
     * @param id   not used
     * @param list the list, header included
     * @return -22, whatever the store made of it; callers take it for no error
     */
    int send(int id, const std::vector<int32_t>& list);

    /**
     * Stages every entry of a packed list in the shared store, in list order, and commits.
     *
     * A list that does not hold what its header announces is refused with the error
     * "sendSharedStore() Invalid data for setting parameter values." (tag "KivEffect"); nothing
     * reaches the store then. One that is cut short in its last entry passes without that entry.
     *
     * A list may announce 2^31 entries and lead backwards to the same one each time, which is read
     * that often: take lists from this library's own commands only.
     *
     * @param data first word of the list, aligned as one; only read
     * @param size its size in bytes
     */
    void sendSharedStore(const void* data, unsigned int size);

    /** Does nothing. @return 0 */
    int receive(int id, std::vector<int32_t>& list);

    /** @return true */
    bool hasControl();

    /** Does nothing. @return 0 */
    int setEnabled(bool enabled);
};

}  // namespace ormel
