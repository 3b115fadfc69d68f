// Hands packed parameter lists to the process-wide shared parameter store.
#pragma once

#include <utils/String16.h>

#include <cstdint>
#include <vector>

namespace ormel {

/** Passes the lists of SetParamCommand on. Has no state and takes no locks. */
class KivEffect {
  public:
    /** Both arguments are ignored. */
    KivEffect(int id, const android::String16& name);

    /**
     * Hands a packed list to the shared store.
     *
     * @param id   ignored
     * @param list the list, header included
     * @return always -22, whether or not the store took the list; callers do not treat it as an
     *         error
     */
    int send(int id, const std::vector<int32_t>& list);

    /**
     * Stages every entry of a packed list in the shared store, in list order, and commits.
     *
     * A list that fails EffectParamParser::validate() is refused with the error "sendSharedStore()
     * Invalid data for setting parameter values." (tag "KivEffect"), and nothing reaches the store.
     * A list cut short in its last entry passes, without that entry.
     *
     * Pass only lists from this library's own commands: another list may announce 2^31 entries and
     * lead back to the same one each time, and every one is read.
     *
     * @param data first word of the list, aligned for int32; only read
     * @param size size of the list in bytes
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
