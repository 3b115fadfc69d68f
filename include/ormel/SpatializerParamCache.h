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
 * A cache has no state, so any number may be made; they all work on the SpatializerParamArray of
 * the process. The first operation makes that, and so reads the tuning document, which takes its
 * time: never let it be on a real-time thread.
 *
 * Threads. Any operation may meet any other, and any of SpatializerParamArray, which says what the
 * exceptions are: they concern the reference that getProfileGeqGains() returns, and forked
 * children. No operation is atomic as a whole, so an effect that is given to several operations at
 * once gets their calls interleaved, unless their callers serialise them.
 *
 * The effect is called back on the same thread, with no lock held, and must not throw. It may call
 * any operation, loads included: an operation goes on with the list that it began with. But
 * it must not write to a list through a reference meanwhile: that may be the one that is read.
 *
 * A null effect makes the first call to it fail. All that comes before happens as described
 * (messages, current profile, stored gains and selection, a result of 0 where nothing is pushed);
 * there the operation ends with -22, or setOrmelContentProfile() without a word.
 *
 * A list that a caller edited through a reference may lead back to words that were read before. No
 * operation pushes more entries of a list than it has words; it commits then.
 *
 * Statuses are 0, -22 for an invalid argument or list, or what the effect's commit returned. Only
 * commits count: what setEffectParam() returns is not looked at. A failed allocation ends the
 * process. Messages bear the tag "OrmSpatializerParamCache".
 */
class SpatializerParamCache {
  public:
    /**
     * Makes @p profile the current one and applies its list from the tuning document, then commits.
     *
     * Entries go to the effect unchanged and in order, except these:
     * - virtual bass type (`vbon`) is left out when the document gave no device tunings;
     * - graphic-equalizer bands (`gebs`) get the current profile's gains, and are left out unless
     *   they are 20 bands;
     * - the speaker's output mode (`dom`) gets the mix matrix of the internal speaker's selected
     *   tuning device, when there are device tunings and more than two output channels;
     * - for the maker's own content, other entries are left out unless the shared store says that
     *   they belong to the device processing.
     *
     * @param isOrmelContent whether the content is the maker's own; the built-in common list and
     *                       the profile's built-in list are then applied as well, each committed
     * @return 0 when there is no list of the document for the profile; the commit's status; or -22
     *         with "setProfile() Invalid data for setting parameter values." (error) for a list
     *         that is broken or was inserted by a getter, and then nothing built-in is applied
     */
    int32_t setProfile(OrmSpatializerProfileId profile, IEffectOrm* effect, bool isOrmelContent);

    /**
     * Applies a profile's built-in list and commits; an unknown profile has none and is refused
     * with "setOrmelContentProfile() Invalid data for profile parameter values." (error).
     *
     * With device tunings and more than two output channels, the speaker's built-in output mode is
     * left out ("setOrmelContentProfile(): Hardcoded dom parameter values skipped", debug): the
     * effect's own is switched on instead, if it is readable and its first value is 0 or not given.
     */
    void setOrmelContentProfile(OrmSpatializerProfileId profile, IEffectOrm* effect);

    /**
     * Applies the selected tuning device of every supported port, in ascending order of ports.
     *
     * @return the status of the last port; those before it are not told
     */
    int32_t loadTuning(IEffectOrm* effect);

    /**
     * Applies a tuning device's list, every entry unchanged, and commits.
     *
     * @return the commit's status; -22 for an unknown device or a malformed list
     */
    int32_t loadTuningDevice(const std::string& device, IEffectOrm* effect);

    /**
     * Selects a tuning device for a port and applies it. On the internal speaker, with more than
     * two output channels, the effect's speaker output mode gets the device's mix matrix first.
     *
     * @return 0 when the device is selected already, and nothing is done; -22 for a number that is
     *         no port and for a device that is not available on the port; else the commit's status
     */
    int32_t setSelectedTuningDevice(int port, const std::string& device, IEffectOrm* effect);

    /**
     * Stores the current profile's graphic-equalizer gains and applies them. All of them are
     * stored; the first 20 reach the effect, in its own gain units.
     *
     * @param gains must not change meanwhile on another thread
     * @return the commit's status; or -22 with "setProfileGeqGains(): could not get proper GEQ
     *         parameters!" (error) when the effect does not have 20 bands to give; the gains stay
     *         stored
     */
    int32_t setProfileGeqGains(const std::vector<int32_t>& gains, IEffectOrm* effect);

    /**
     * The current profile's graphic-equalizer gains; empty when none were given or set. As
     * SpatializerParamArray::getProfileGeqGains(), and not to be read while another thread sets
     * them; SpatializerParamArray::copyProfileGeqGains() gives a copy.
     */
    std::vector<int32_t>& getProfileGeqGains();

    /** Whether the tuning document gave any device tunings. */
    bool isTuningAvailable();

    /** Whether a tuning device can be selected for the port. */
    bool isValidPort(int port);
};

}  // namespace ormel
