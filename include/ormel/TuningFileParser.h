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
 * The parser owns the DeviceData and every object listed there; they live as long as the parser. A
 * parser belongs to one thread; several parsers may read at the same time. Its iterator is not
 * counted as live, so parsers leave libxml2's global state alone.
 *
 * Unknown elements, missing attributes and unknown preset types are not errors; missing numbers
 * read as 0. Messages have the tag "TuningFileParser".
 */
class TuningFileParser {
  public:
    TuningFileParser();
    TuningFileParser(const TuningFileParser&) = delete;
    TuningFileParser& operator=(const TuningFileParser&) = delete;
    virtual ~TuningFileParser() = default;

    /**
     * Reads a document. A parser is meant for one: the objects of a second document are added to
     * those of the first, in a new DeviceData that replaces the earlier one.
     *
     * @param path       path of the document, or its text if @p fromMemory
     * @param fromMemory whether @p path is the text
     * @return 0;
     *         -22 if the document cannot be loaded or exceeds a bound of DocumentBudget; getError()
     *         says why. On failure only getError() and getBudget() change
     */
    int setTuningFile(const std::string& path, bool fromMemory);

    /**
     * Reports documents read from now on to @p observer: not owned; null, the default, for none.
     */
    void setObserver(TuningFileObserver* observer) { mObserver = observer; }

    /**
     * Why setTuningFile() last failed: line and libxml2's message, or another reason; else empty.
     */
    const std::string& getError() const { return mError; }

    /** What reading the last document cost. */
    const DocumentBudget& getBudget() const { return mBudget; }

    /** Whether a document was read. */
    bool isParsed() const { return mParsed; }

    /**
     * The content of the documents read so far; null before the first. Owned by the parser, and
     * replaced when it reads another document.
     */
    DeviceData* getDeviceData() const { return mDeviceData.get(); }

    /** Number of `<profile>` elements, including repeated ids. */
    int getNumOfProfiles() const { return mHeader.profileCount; }

    /** Name of the profile last read with that id; an unknown id is added with an empty name. */
    std::string getProfileName(int profileId) { return mHeader.profileNames[profileId]; }

    /**
     * Id of an intelligent-equalizer preset by name; 0 with the error "name is invalid, 313" for
     * any other name.
     */
    int getIeqPresetIdByName(const std::string& name);

    /** The setter registry that all parsers share. */
    static SetterCollection* const sSetterCollection;

  private:
    /** The document's data other than its objects. */
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

    /** Reads one document into mHeader and the last of mDocuments. */
    class Reader;

    void fillDeviceData();
    /** The objects of one kind in all documents. */
    template <typename Object>
    std::set<Object*> pointersTo(std::vector<Object> Objects::*kind);

    bool mParsed = false;
    Header mHeader;
    std::unique_ptr<DeviceData> mDeviceData;
    DocumentBudget mBudget;
    std::string mError;
    TagIterator mIterator;
    TuningFileObserver* mObserver = nullptr;
    /** The objects by document; the last document is the one being read. */
    std::list<Objects> mDocuments;
};

}  // namespace ormel
