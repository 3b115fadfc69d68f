// The reader of tuning documents.
#pragma once

#include <ormel/DeviceData.h>
#include <ormel/DocumentBudget.h>
#include <ormel/TagIterator.h>
#include <ormel/TuningFileObserver.h>
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
 * parser. A parser belongs to one thread; several may read at the same time. Its iterator does not
 * count as a live one, so parsers leave libxml2's global state alone.
 *
 * Unknown elements, missing attributes and unknown preset types are no errors; missing numbers read
 * as 0. Messages bear the tag "TuningFileParser".
 */
class TuningFileParser {
  public:
    TuningFileParser();
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
     *         -22 when the document cannot be loaded or exceeds a bound of DocumentBudget, which
     *         getError() tells. The parser is as it was before, but for getError() and getBudget()
     */
    int setTuningFile(const std::string& path, bool fromMemory);

    /** Has documents that are read from now on reported to @p observer, which is not owned; null
     * for nobody, as at first. */
    void setObserver(TuningFileObserver* observer) { mObserver = observer; }

    /** Why setTuningFile() failed last: the line and libxml2's words, or what else; empty if it did
     * not. */
    const std::string& getError() const { return mError; }

    /** What the last document has cost so far. Its load goes on paying with it. */
    DocumentBudget& getBudget() { return mBudget; }

    /** Whether a document has been read to its end. */
    bool isParsed() const { return mParsed; }

    /** The content of the document, owned by the parser; null before one was read. */
    DeviceData* getDeviceData() const { return mDeviceData.get(); }

    /** Number of `<profile>` elements, those of repeated ids included. */
    int getNumOfProfiles() const { return mHeader.profileCount; }

    /** Name of the profile read last under that id; an unknown id is remembered with no name. */
    std::string getProfileName(int profileId) { return mHeader.profileNames[profileId]; }

    /**
     * Number of an intelligent-equalizer preset by name; 0 with the error "name is invalid, 313"
     * for any other name.
     */
    int getIeqPresetIdByName(const std::string& name);

    /** The setter registry that all parsers share. */
    static SetterCollection* const sSetterCollection;

  private:
    /** What is known of the document beside its objects. */
    struct Header {
        int32_t profileCount = 0;
        std::map<int, std::string> profileNames;
        int32_t virtualBassProcess = 1;
        int32_t gameSystemGain = 0;
        std::string formatVersion;
        std::string toolVersion;
        std::string deviceName;
        int32_t deviceIndex = -1;
        int32_t tuningVersion = -1;
    };

    /** The objects of one document, each kind in one block and in document order. */
    struct Objects {
        std::vector<IeqPreset> ieqPresets;
        std::vector<GeqPreset> geqPresets;
        std::vector<Profile> profiles;
        std::vector<ProfileEndpoint> profileEndpoints;
        std::vector<Tuning> tunings;
        std::vector<DeviceTuning> deviceTunings;
    };

    /** Reads one document into the last of mDocuments and the header. */
    class Reader;

    void fillDeviceData();
    /** The objects of one kind of all documents. */
    template <typename Object>
    std::set<Object*> pointersTo(std::vector<Object> Objects::*kind);

    bool mParsed = false;
    Header mHeader;
    std::unique_ptr<DeviceData> mDeviceData;
    DocumentBudget mBudget;
    std::string mError;
    TagIterator mIterator;
    TuningFileObserver* mObserver = nullptr;
    /** What has been read, a document each, the last being the one that is read now. */
    std::list<Objects> mDocuments;
};

}  // namespace ormel
