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
 * Holds the built-in lists, the lists made from the tuning document, and the choices made since:
 * current profile, tuning device per port, graphic-equalizer gains per profile.
 *
 * The process's instance is getInstance(), created on first use and never destroyed.
 *
 * A getter marked "Inserts" adds an empty list for an unknown key. Empty gains or an empty mix
 * matrix mean nothing to apply. An empty parameter list counts as one from the document, and
 * applying it fails. Parameter lists are packed (SpatializerParamParser.h). Messages have the tag
 * "OrmSpatializerParamArray".
 *
 * Threads. Every operation except isValidTuningDevice() and getMixMatrixCapacity() holds the
 * instance's lock throughout and calls no other that locks. All operations, loads and front
 * operations (SpatializerParamCache.h) included, may therefore run concurrently on any number of
 * threads. The exceptions:
 * - isValidTuningDevice() takes no lock, and must not run during a load.
 * - A returned reference is used after the lock is released. Parameter lists and mix matrices may
 *   be read through it at any time. Gains may be read unless another thread calls
 *   setProfileGeqGains() for the same profile. A caller that writes through a reference must keep
 *   all other threads out of the store, and must not do so inside an effect's operation.
 *   copyProfileGeqGains() has none of these limits.
 * - The last TagIterator of the process must not be destroyed during a load (TagIterator.h).
 * - A child that is forked while another thread is inside an operation, such as a load, must not
 *   use the store: the lock is never released in the child.
 *
 * Lifetimes. A returned reference is to the store's own list and valid as long as the store. A
 * parameter list or mix matrix that another load replaces keeps its address and values if a
 * reference to it was returned, and is freed otherwise; ask again for the new one. Gains are
 * replaced in place: a reference to them shows the latest, and setting them invalidates iterators
 * into them.
 *
 * A failed allocation ends the process. The first load in the process sets libxml2 up.
 */
class SpatializerParamArray : public android::Singleton<SpatializerParamArray> {
  public:
    static constexpr size_t kProfileWords = 117;
    static constexpr size_t kCommonWords = 456;

    /** The built-in lists. */
    static const std::array<int32_t, kProfileWords> mDynamicProfileParams;
    static const std::array<int32_t, kProfileWords> mMovieProfileParams;
    static const std::array<int32_t, kProfileWords> mMusicProfileParams;
    static const std::array<int32_t, kProfileWords> mCustomProfileParams;
    static const std::array<int32_t, kCommonWords> mCommonParams;

    /** Mix matrix of the profiles' speaker endpoints if the internal speaker's tuning has none. */
    static const std::array<int32_t, 58> kDefaultMixMatrix;

    /** Name and version of the library, to identify shipped files and dumps. */
    static const char kVersion[];

    /** Path of a device's tuning document. */
    static constexpr char kDefaultTuningFile[] = "/vendor/etc/ormel/qsx-default-spatializer.xml";

    /**
     * Loads the document at kDefaultTuningFile, if there is one. SpatializerParamCache uses
     * getInstance(); construct an instance for a StoreFront, or to look at a document.
     */
    SpatializerParamArray();

    /** Constructs a store without a document. */
    struct Empty {};
    explicit SpatializerParamArray(Empty /* none */);
    SpatializerParamArray(const SpatializerParamArray&) = delete;
    SpatializerParamArray& operator=(const SpatializerParamArray&) = delete;
    ~SpatializerParamArray();

    /**
     * Copies a profile's built-in list: getProfileParamsSize() bytes, so nothing for an unknown
     * profile.
     *
     * @param dest room for the list
     * @return 0, or -22 if @p dest is null
     */
    int getProfileParams(OrmSpatializerProfileId profile, void* dest);

    /** Size of a profile's built-in list in bytes; 0 for an unknown profile. */
    unsigned getProfileParamsSize(OrmSpatializerProfileId profile);

    /** Whether the profile has a list, from the tuning document or inserted by a getter. */
    bool isXMLProfileValid(int profile);

    /** The profile's list from the tuning document. Inserts; later documents then give it none. */
    std::vector<int32_t>& getXMLProfileParams(int profile);

    /** Whether the tuning device has a list, from the document or inserted by a getter. */
    bool isXMLTuningValid(const std::string& device);

    /** The tuning device's list. Inserts. */
    std::vector<int32_t>& getXMLTuningParams(const std::string& device);

    /**
     * Size of a character buffer for getAvailableTuningDevices(), terminating zero included; 0 if
     * there are no names or no such port.
     */
    int getAvailableTuningDevicesLen(int port);

    /** The names of the port's tuning devices in ascending order, separated by single spaces. */
    std::string getAvailableTuningDevices(int port);

    /** The tuning device selected for a port; inserts an empty name for an unknown port. */
    std::string getSelectedTuningDevice(int port);

    /**
     * Selects the tuning device of a port.
     *
     * @return 0; -22 if there is no such port; -22 with "setSelectedTuningDevice(): tuningDevice D
     *         is not available for port P." (error) if the device is not the port's
     */
    int setSelectedTuningDevice(int port, const std::string& device);

    /** Whether a tuning device is available on a port. Takes no lock; see the class comment. */
    bool isValidTuningDevice(int port, const std::string& device) const;

    /** The graphic-equalizer gains of a profile. Inserts; later documents then give it no gains. */
    std::vector<int32_t>& getProfileGeqGains(OrmSpatializerProfileId profile);

    /** Replaces a profile's gains with a copy of @p gains, which may be a list of the store. */
    void setProfileGeqGains(OrmSpatializerProfileId profile, const std::vector<int32_t>& gains);

    /**
     * The mix matrix of a tuning device. For an unknown one, logs "getXMLTuningMixMatrix(): no mix
     * matrix found with tuning device D" (warning) and returns an empty list, always the same one.
     */
    const std::vector<int32_t>& getXMLTuningMixMatrix(const std::string& device);

    /**
     * Copies at most @p room of a profile's gains. Other threads may set them meanwhile. Inserts.
     *
     * @return number of gains copied
     */
    size_t copyProfileGeqGains(OrmSpatializerProfileId profile, int32_t* dest, size_t room);

    /**
     * Adds a tuning document to the store.
     *
     * If the document cannot be read or exceeds a bound of DocumentBudget, the store keeps
     * what it had and logs "Spatializer Tuning XML parses error!" (error); getLoadOutcome() and
     * getLoadError() say why.
     *
     * If profiles share an id, the first one's list is kept; if tuning devices share a name, the
     * last one's. All are counted. A tuning device whose tuning the document lacks is skipped with
     * "Tuning id(D): no tuning T" (warning): it is neither counted nor available. A supported port
     * whose selected tuning device is not available keeps it, with "loadSpatializerXMLFile()
     * default tuningDevice D is not available for port P." (error).
     *
     * @param path path of the document
     */
    void loadSpatializerXMLFile(const std::string& path);

    enum class LoadOutcome : int32_t {
        LOADED,
        /** No load yet, or one that failed for any reason but the next. */
        NOT_READ,
        /** The document exceeded a bound of DocumentBudget other than kMaxDocumentBytes. */
        OVER_BOUND,
    };

    /** The same for a document's text. @return as getLoadOutcome() */
    LoadOutcome loadSpatializerXMLText(const std::string& text);

    /** The outcome of the last load. */
    LoadOutcome getLoadOutcome();

    /** Why the last load failed: line and libxml2's message, or another reason; else empty. */
    std::string getLoadError();

    /** The cost of the last load. */
    DocumentBudget getLoadBudget();

    /** The profile last given to setProfile(), applied or not; movie at first. */
    OrmSpatializerProfileId getCurrentProfile();
    void setCurrentProfile(OrmSpatializerProfileId profile);

    /** Number of device tunings stored. */
    int32_t getTuningCount();

    /** Number of document profiles, including repeated ids. */
    int32_t getTuningProfileCount();

    /** Output channels of the internal speaker's tuning in the last document with one; 2 before. */
    int32_t getOutputChannelCount();

    /** Number of values after the first that fit when the effect's output mode is read back. */
    int32_t getMixMatrixCapacity() const { return mMixMatrixCapacity.load(); }

    /**
     * Appends the state to @p out, for an effect's own dump and for bug reports: kVersion; the last
     * document loaded and its outcome; current profile and output channels; the document's profile
     * lists and device tunings with their numbers of entries; graphic-equalizer gains; and each
     * port's tuning devices, the selected one marked with a star. Changes nothing.
     *
     * Every line ends with a line feed. ASCII control characters in names from the document are
     * printed as question marks, so that a name cannot break its line.
     *
     * Tries the lock for one second, then writes "could not lock" instead of the state. To rely on
     * that limit, get the instance beforehand: getInstance() itself waits while another thread
     * creates it.
     *
     * @param indent number of spaces before every line, clamped to 0 to 80
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
    /** @param name the document's name in dumps */
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
    /** Replaced lists that callers may hold references to. */
    std::vector<ListsByDevice::node_type> mReplacedLists;
    std::atomic<int32_t> mMixMatrixCapacity;
    /** The last document loaded, and its outcome. */
    std::string mLoadPath;
    LoadOutcome mLoadOutcome = LoadOutcome::NOT_READ;
    std::string mLoadError;
    DocumentBudget mLoadBudget;
};

/** The ports that a tuning device can be selected for, in ascending order. */
inline constexpr std::array kSupportedPorts = {PORT_INTERNAL_SPEAKER, PORT_HEADPHONE,
                                               PORT_BLUETOOTH, PORT_USB};

}  // namespace ormel
