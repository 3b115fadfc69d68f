// The reader of tuning documents.
#pragma once

#include <ormel/DeviceData.h>
#include <ormel/TagIterator.h>
#include <ormel/ValueSetter.h>

#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace ormel {

/**
 * Reads one tuning document into a DeviceData.
 *
 * The parser owns what it reads: the DeviceData and every object that it lists live as long as the
 * parser, and the XML tree until then or until the next document. A parser belongs to one thread,
 * and since all parsers share one setter registry that grows by every unknown element name, no two
 * documents may be read at the same time.
 *
 * Unknown elements, missing attributes and unknown preset types are no errors; missing numbers read
 * as 0. Messages bear the tag "TuningFileParser".
 */
class TuningFileParser {
  public:
    TuningFileParser() : TuningFileParser(TagIterator::createInPlace()) {}
    /** Reads with a walker of one's own, which meets every step of the walk. Must not be null. */
    explicit TuningFileParser(std::unique_ptr<TagIterator> iterator);
    TuningFileParser(const TuningFileParser&) = delete;
    TuningFileParser& operator=(const TuningFileParser&) = delete;
    virtual ~TuningFileParser() = default;

    /**
     * Reads a document. A parser is meant for one; the objects of a second one join those of the
     * first in a new DeviceData, which takes the place of the earlier one.
     *
     * @param path       path of the document, or its text when @p fromMemory
     * @param fromMemory says which
     * @return 0;
     *         -22 when the document cannot be loaded or its walk was given up, as the iterator has
     *         said;
     *         -22 with the error "Too much to read, V values and N bytes of tuning names" after
     *         more than 16 Mi values, replaced ones included, or more than 16 MiB of tuning names
     *         repeated in device tunings.
     *         After -22 the device data of an earlier call stays; the parser is not meant to be
     *         used again
     */
    int setTuningFile(const std::string& path, bool fromMemory);

    /** Whether a document has been read to its end. */
    bool isParsed() const { return mParsed; }

    /** The content of the document, owned by the parser; null before one was read. */
    DeviceData* getDeviceData() const { return mDeviceData.get(); }

    /** Number of profile elements met, whatever became of them. */
    int getNumOfProfiles() const { return mProfileCount; }

    /** Name of the profile read last under that id; an unknown id is remembered with no name. */
    std::string getProfileName(int profileId) { return mProfileNames[profileId]; }

    /**
     * Number of an intelligent-equalizer preset by name; 0 with the error "name is invalid, 313"
     * for any other name.
     */
    int getIeqPresetIdByName(const std::string& name);

    /** The setter registry that all parsers share. Never destroyed. */
    static SetterCollection* const sSetterCollection;

  private:
    /** The objects of one document, each kind in one block and in document order. */
    struct Objects {
        std::vector<IeqPreset> ieqPresets;
        std::vector<GeqPreset> geqPresets;
        std::vector<Profile> profiles;
        std::vector<ProfileEndpoint> profileEndpoints;
        std::vector<Tuning> tunings;
        std::vector<DeviceTuning> deviceTunings;
    };

    void parseTuningFile();
    std::string parseVersion();
    void parseAuthorizedTechnologies();
    void parseGlobalSetting();
    void parsePreset();
    void parseProfile();
    int parseProfileInclude();
    void parseProfileEndpoint(int profileId, int ieqEnable, int ieqAmount, int defaultIeqPresetId);
    int parseEndpointInclude(int defaultIeqPresetId);
    void completeProfileEndpoint(ProfileEndpoint& endpoint, int ieqEnable, int ieqAmount);
    void parseTuning();
    void parseDeviceTuning(const std::string& tuningName);

    void parseDeviceTunings(const std::string& tuningName);
    bool readParameter(std::string_view name, ParameterValues& values);
    bool isTooLarge() const;
    bool presetsAreNamed() const;
    void fillDeviceData();
    /** The objects of one kind of all documents. */
    template <typename Object>
    std::set<Object*> pointersTo(std::vector<Object> Objects::*kind);

    bool mParsed = false;
    int32_t mProfileCount = 0;
    std::map<int, std::string> mProfileNames;
    std::unique_ptr<DeviceData> mDeviceData;
    int32_t mVirtualBassProcess = 1;
    int32_t mGameSystemGain = 0;
    std::string mFormatVersion;
    std::string mToolVersion;
    std::string mDeviceName;
    int32_t mDeviceIndex = -1;
    int32_t mTuningVersion = -1;
    std::unique_ptr<TagIterator> mOwnIterator;
    TagIterator& mIterator;

    /** Bytes of tuning names in device tunings, each of which has one of its own. */
    size_t mTuningNameBytes = 0;
    static constexpr size_t kMaxTuningNameBytes = size_t{16} << 20;
    /** Values read. One row can be read many times over, see TagIterator::childrenNext(). */
    size_t mValueCount = 0;
    static constexpr size_t kMaxValues = size_t{16} << 20;
    /** What has been read, a document each, the last being the one that is read now. */
    std::list<Objects> mDocuments;
};

}  // namespace ormel
