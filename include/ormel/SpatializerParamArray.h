// The process-wide store of all parameter lists.
#pragma once

#include <ormel/DocumentBudget.h>
#include <ormel/Parameter.h>
#include <ormel/SpatializerProfile.h>
#include <utils/KeyedVector.h>
#include <utils/Mutex.h>
#include <utils/Singleton.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace ormel {

class DocumentLoad;
class StoreDump;

/**
 * Holds the built-in lists, what the tuning document became, and the choices made since: current
 * profile, tuning device per port, graphic-equalizer gains per profile.
 *
 * The process's instance is getInstance()'s, made on first use, never destroyed.
 *
 * Getters of lists insert: asking for an unknown key leaves an empty list behind. For gains and mix
 * matrices it stands for nothing to apply; an empty parameter list counts as one that the document
 * gave, and is refused when it is to be applied. Lists are packed parameter lists
 * (SpatializerParamParser.h). Messages bear the tag "OrmSpatializerParamArray".
 *
 * Threads. Every operation but isValidTuningDevice() and getMixMatrixCapacity() holds the
 * instance's lock for its whole body and calls none that locks meanwhile. So any operation may meet
 * any other, loads and front operations (SpatializerParamCache.h) included, on any number of
 * threads. The exceptions:
 * - isValidTuningDevice() takes no lock, and must not meet loadSpatializerXMLFile().
 * - A returned reference is used after the lock is released. Parameter lists and mix matrices may
 *   be read through it at any time. Gains may be read unless setProfileGeqGains() sets the same
 *   profile's on another thread. Whoever writes through a reference keeps all other threads out of
 *   the store, and does not do so from within an effect's operation. copyProfileGeqGains() needs
 *   none of this.
 * - A child that is forked while another thread is inside an operation, such as a load, must not
 *   use the store: nobody in the child will release the lock.
 *
 * Lifetimes. A returned reference is to the store's own list and stays valid as long as the store.
 * Parameter lists and mix matrices that another load replaces keep their place and values if a
 * reference to them was returned, and are freed otherwise; ask again for the new ones. Gains are
 * replaced in place: a reference to them shows those set last, and iterators into them are invalid
 * once others are set.
 *
 * A failed allocation ends the process. The first load of the process sets libxml2 up.
 */
class SpatializerParamArray : public android::Singleton<SpatializerParamArray> {
  public:
    static constexpr size_t kProfileWords = 117;
    static constexpr size_t kCommonWords = 456;

    /** The built-in lists. They never change. */
    static const std::array<int32_t, kProfileWords> mDynamicProfileParams;
    static const std::array<int32_t, kProfileWords> mMovieProfileParams;
    static const std::array<int32_t, kProfileWords> mMusicProfileParams;
    static const std::array<int32_t, kProfileWords> mCustomProfileParams;
    static const std::array<int32_t, kCommonWords> mCommonParams;

    /** What a profile's speaker endpoint gets when the internal speaker's tuning has no matrix. */
    static const std::array<int32_t, 58> kDefaultMixMatrix;

    /** Name and version of the library, which tell what a shipped file or a dump is of. */
    static const char kVersion[];

    /** Where a device keeps its tuning document. */
    static constexpr char kDefaultTuningFile[] = "/vendor/etc/ormel/qsx-default-spatializer.xml";

    /**
     * Loads the document at kDefaultTuningFile, if there is one. SpatializerParamCache uses
     * getInstance(); an instance of one's own serves a StoreFront, or to look at a document.
     */
    SpatializerParamArray();

    /** A store of one's own without a document. */
    struct Empty {};
    explicit SpatializerParamArray(Empty /* none */);
    SpatializerParamArray(const SpatializerParamArray&) = delete;
    SpatializerParamArray& operator=(const SpatializerParamArray&) = delete;
    ~SpatializerParamArray();

    /**
     * Copies a profile's built-in list, as many bytes as getProfileParamsSize() says; nothing for
     * an unknown profile.
     *
     * @param dest room for the list
     * @return 0, or -22 when @p dest is null
     */
    int getProfileParams(OrmSpatializerProfileId profile, void* dest);

    /** Size of a profile's built-in list in bytes; 0 for an unknown profile. */
    unsigned getProfileParamsSize(OrmSpatializerProfileId profile);

    /** Whether there is a list of the tuning document for the profile, if only an inserted one. */
    bool isXMLProfileValid(int profile);

    /** The profile's list from the tuning document. Inserts. */
    std::vector<int32_t>& getXMLProfileParams(int profile);

    /** Whether there is a list of the document for the tuning device, if only an inserted one. */
    bool isXMLTuningValid(const std::string& device);

    /** The tuning device's list. Inserts. */
    std::vector<int32_t>& getXMLTuningParams(const std::string& device);

    /**
     * Room that the names of getAvailableTuningDevices() take in a character buffer, closing zero
     * included; 0 when there are none or the port is none.
     */
    int getAvailableTuningDevicesLen(int port);

    /** The names of the port's tuning devices in ascending order, one blank between them. */
    std::string getAvailableTuningDevices(int port);

    /** The tuning device in use on a port; inserts an empty name for an unknown port. */
    std::string getSelectedTuningDevice(int port);

    /**
     * Puts a tuning device in use on a port.
     *
     * @return 0; -22 for a number that is no port; -22 with "setSelectedTuningDevice():
     *         tuningDevice D is not available for port P." (error) for a device that is not the
     *         port's
     */
    int setSelectedTuningDevice(int port, const std::string& device);

    /** Whether a tuning device is available on a port. Takes no lock; see the class comment. */
    bool isValidTuningDevice(int port, const std::string& device) const;

    /** The graphic-equalizer gains of a profile. Inserts, and then no document gives it gains. */
    std::vector<int32_t>& getProfileGeqGains(OrmSpatializerProfileId profile);

    /** Replaces a profile's gains by a copy of @p gains, which may be any of the store's own. */
    void setProfileGeqGains(OrmSpatializerProfileId profile, const std::vector<int32_t>& gains);

    /**
     * The mix matrix of a tuning device. For an unknown one says "getXMLTuningMixMatrix(): no mix
     * matrix found with tuning device D" (warning) and returns one empty list, the same each time.
     */
    const std::vector<int32_t>& getXMLTuningMixMatrix(const std::string& device);

    /**
     * Copies at most @p room of a profile's gains, which another thread may set meanwhile. Inserts.
     *
     * @return number of gains copied
     */
    size_t copyProfileGeqGains(OrmSpatializerProfileId profile, int32_t* dest, size_t room);

    /**
     * Adds a tuning document to the store.
     *
     * A document that cannot be read, or that exceeds a bound of DocumentBudget, leaves everything
     * as it was and says "Spatializer Tuning XML parses error!" (error); getLoadError() tells why.
     * Of profiles with one id
     * the first list stands, of tuning devices with one name the last; all of them count. A tuning
     * device whose tuning the document lacks is passed over with a warning. A supported port whose
     * selected tuning device is not available keeps it, with "loadSpatializerXMLFile() default
     * tuningDevice D is not available for port P." (error).
     *
     * @param path path of the document
     */
    void loadSpatializerXMLFile(const std::string& path);

    /** What became of a document. */
    enum class LoadOutcome : int32_t { LOADED, NOT_READ, OVER_BOUND };

    /** The same with a document's text. */
    LoadOutcome loadSpatializerXMLText(const std::string& text);

    /** What became of the document that was loaded last. */
    LoadOutcome getLoadOutcome();

    /**
     * Why the document that was loaded last was refused: the line and libxml2's words, the system's
     * words for a file that cannot be read, or which bound it exceeds. Empty if it was loaded.
     */
    std::string getLoadError();

    /** What the document that was loaded last has cost. */
    DocumentBudget getLoadBudget();

    /** The profile last applied; movie at first. */
    OrmSpatializerProfileId getCurrentProfile();
    void setCurrentProfile(OrmSpatializerProfileId profile);

    /** Number of device tunings that were stored. */
    int32_t getTuningCount();

    /** Number of document profiles met, repeated ids included. */
    int32_t getTuningProfileCount();

    /** Output channels of the internal speaker's tuning; 2 without one. */
    int32_t getOutputChannelCount();

    /**
     * Number of values that the effect's current output mode has beside its first one, which is
     * what it is read back with.
     */
    int32_t getMixMatrixCapacity() const { return mMixMatrixCapacity.load(); }

    /**
     * Appends the state to @p out, for an effect's own dump and for bug reports: kVersion; the
     * document that was loaded last and what became of it; current profile and output channels; the
     * document's profile lists and device tunings with their numbers of entries; graphic-equalizer
     * gains; and each port's tuning devices, the selected one marked with a star. Changes nothing.
     *
     * Lines end in a line feed. ASCII's control characters in the document's names appear as
     * question marks, so that a name takes no more than its line.
     *
     * The lock is tried for a second; after that "could not lock" stands in place of the state. To
     * be sure of that, get the instance beforehand: getInstance() itself waits for a first use that
     * is under way elsewhere.
     *
     * @param indent number of blanks before every line; 0 to 80; any other counts as the nearest
     */
    void dump(std::string& out, int indent);

  private:
    friend class DocumentLoad;
    friend class StoreDump;

    /** A list, and whether a reference to it was returned. */
    struct StoredList {
        std::vector<int32_t> words;
        bool isHandedOut = false;
    };
    using ListsByDevice = std::map<std::string, StoredList>;

    // Hidden, so that the library need not export their names.
    /** @param name what dumps call the document */
    [[gnu::visibility("hidden")]] LoadOutcome load(const std::string& source, bool fromMemory,
                                                   const std::string& name);
    [[gnu::visibility("hidden")]] void refuseDocument(const std::string& reason);
    [[gnu::visibility("hidden")]] void registerBuiltInLists();
    /** The names of a port's tuning devices in ascending order. */
    [[gnu::visibility("hidden")]] std::vector<std::string> devicesOf(int port) const;

    android::DefaultKeyedVector<OrmSpatializerProfileId, const int32_t*> mProfileParams;
    android::DefaultKeyedVector<OrmSpatializerProfileId, unsigned> mProfileParamsSizes;
    android::Mutex mLock;
    OrmSpatializerProfileId mCurrentProfile = ORM_SPATIALIZER_PROFILE_MOVIE;
    std::map<int32_t, std::vector<int32_t>> mXMLProfileParams;
    int32_t mTuningProfileCount = 0;
    ListsByDevice mXMLTuningParams;
    int32_t mTuningCount = 0;
    int32_t mOutputChannelCount = 2;
    /** Port name by tuning device name. */
    std::map<std::string, std::string> mAvailableTuningDevices;
    std::map<int32_t, std::string> mSelectedTuningDevices;
    std::map<int32_t, std::vector<int32_t>> mProfileGeqGains;
    ListsByDevice mMixMatrices;
    /** Lists that a load replaced and that references were returned to. */
    std::vector<ListsByDevice::node_type> mReplacedLists;
    std::atomic<int32_t> mMixMatrixCapacity;
    /** The document that was loaded last, and its outcome. */
    std::string mLoadPath;
    LoadOutcome mLoadOutcome = LoadOutcome::NOT_READ;
    std::string mLoadError;
    DocumentBudget mLoadBudget;
};

/** The ports that a tuning device can be selected for, in ascending order. */
inline constexpr std::array kSupportedPorts = {PORT_INTERNAL_SPEAKER, PORT_HEADPHONE,
                                               PORT_BLUETOOTH, PORT_USB};

}  // namespace ormel
