// The front of the library: what the effect calls.
#pragma once

#include <ormel/IEffectOrm.h>
#include <ormel/Port.h>
#include <ormel/SpatializerProfile.h>

#include <cstdint>
#include <string>
#include <vector>

namespace ormel {

/**
 * Applies profiles, tunings and graphic-equalizer gains to an effect.
 *
 * A cache has no state: all caches work on the process's SpatializerParamArray. The first operation
 * other than isValidPort() creates that and reads the tuning document, which takes time: never call
 * it on a real-time thread.
 *
 * Threads. Operations may run concurrently with each other and with those of SpatializerParamArray.
 * The exceptions listed there hold here too: for the reference that getProfileGeqGains() returns,
 * for the last TagIterator, and for forked children. No operation is atomic as a whole: if one
 * effect is passed to several operations at once, it gets their calls interleaved, unless callers
 * serialise them.
 *
 * The effect is called back on the same thread, with no lock held, and must not throw. It may call
 * any operation, loads included: the outer operation goes on with the list that it began with. It
 * must not write to a list through a reference, because that list may be the one being read.
 *
 * If the effect is null, the first call to it fails. Everything before that call happens as
 * described (messages, current profile, stored gains and selection, a result of 0 where nothing is
 * pushed). The operation then ends with -22; setOrmelContentProfile() just ends.
 *
 * A list that a caller edited through a reference may lead back to words already read. An operation
 * pushes no more entries of a list than the list has words, then commits.
 *
 * Operations return 0, -22 for an invalid argument or list, or the status of the effect's commit.
 * The results of setEffectParam() are ignored. A failed allocation ends the process. Messages have
 * the tag "OrmSpatializerParamCache".
 */
class SpatializerParamCache {
  public:
    /**
     * Makes @p profile the current one, applies its list from the tuning document, and commits.
     *
     * Entries go to the effect unchanged and in order, except:
     * - virtual bass type (`vbon`) is dropped if the document gave no device tunings;
     * - graphic-equalizer bands (`gebs`) get the current profile's gains, and are dropped unless
     *   they have 41 values;
     * - with device tunings and more than two output channels, the speaker's output mode (`dom`)
     *   gets the mix matrix of the internal speaker's selected tuning device, if that has one. The
     *   matrix replaces all values after the first, cut or zero-filled to their number;
     * - for the maker's own content, other entries are dropped unless
     *   KivParamStore::isDeviceProcParamInProfile() is true for their code.
     *
     * @param isOrmelContent whether the content is the maker's own; then the built-in common list
     *                       and the profile's built-in list are applied too, each committed;
     *                       the results of these commits are dropped
     * @return 0 if the document has no list for the profile; the commit's status; or -22 with
     *         "setProfile() Invalid data for setting parameter values." (error) for a list that is
     *         broken or was inserted by a getter, and then no built-in list is applied
     */
    int32_t setProfile(OrmSpatializerProfileId profile, IEffectOrm* effect, bool isOrmelContent);

    /**
     * Applies a profile's built-in list and commits. An unknown profile is refused with
     * "setOrmelContentProfile() Invalid data for profile parameter values." (error).
     *
     * With device tunings and more than two output channels, the speaker's built-in output mode is
     * skipped ("setOrmelContentProfile(): Hardcoded dom parameter values skipped", debug). Instead,
     * the effect's own output mode is switched on, if it can be read and its first value is 0 or
     * missing.
     */
    void setOrmelContentProfile(OrmSpatializerProfileId profile, IEffectOrm* effect);

    /**
     * Applies the selected tuning device of every supported port, in ascending order of ports.
     *
     * @return the result of loadTuningDevice() for the last port, USB; the others are dropped
     */
    int32_t loadTuning(IEffectOrm* effect);

    /**
     * Applies a tuning device's list unchanged, and commits.
     *
     * @return the commit's status; -22 for an unknown device or a malformed list
     */
    int32_t loadTuningDevice(const std::string& device, IEffectOrm* effect);

    /**
     * Selects a tuning device for a port and applies it.
     *
     * On the internal speaker with more than two output channels, the effect's speaker output mode
     * is first read, and set to its own first value followed by the device's mix matrix. This is
     * skipped if the read fails or the device has no matrix.
     *
     * @return 0, with nothing done, if the device is already selected; -22 if there is no such port
     *         or the device is not available on it; else the result of loadTuningDevice()
     */
    int32_t setSelectedTuningDevice(int port, const std::string& device, IEffectOrm* effect);

    /**
     * Stores the current profile's graphic-equalizer gains and applies them. All are stored, and
     * the first 20 reach the effect. If there are fewer, the other bands keep the effect's gains;
     * setProfile() sends 0 for them.
     *
     * @param gains in the effect's own units; must not change on another thread meanwhile
     * @return the commit's status; or -22 with "setProfileGeqGains(): could not get proper GEQ
     *         parameters!" (error) if the effect's bands cannot be read or do not have 41 values;
     *         the gains stay stored
     */
    int32_t setProfileGeqGains(const std::vector<int32_t>& gains, IEffectOrm* effect);

    /**
     * The current profile's graphic-equalizer gains; empty if none were given or set. As with
     * SpatializerParamArray::getProfileGeqGains(), do not read them while another thread sets them;
     * SpatializerParamArray::copyProfileGeqGains() gives a copy.
     */
    std::vector<int32_t>& getProfileGeqGains();

    /** Whether the tuning document gave any device tunings. */
    bool isTuningAvailable();

    /** Whether a tuning device can be selected for the port. */
    bool isValidPort(int port);
};

}  // namespace ormel
