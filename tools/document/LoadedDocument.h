// A tuning document as its reader and its user see it.
#pragma once

#include <android/log.h>
#include <ormel/SpatializerParamArray.h>

#include <memory>
#include <string>
#include <vector>

#include "PackedEntries.h"
#include "ReadTrace.h"
#include "text/Json.h"

namespace ormel::tools {

/** One packed list, and what it is for. */
struct EffectList {
    enum class Kind { PROFILE, TUNING, BUILT_IN };

    Kind kind;
    /** Number of the profile; of no meaning for a tuning device's list. */
    OrmSpatializerProfileId profile;
    /** Name of the profile or tuning device. */
    std::string name;
    std::vector<Entry> entries;
};

/** "profile 1 movie", "tuning device default_usb", "built-in list common". */
std::string titleOf(const EffectList& list);

/** The lists that the library brings along. */
std::vector<EffectList> builtInLists(SpatializerParamArray& store);

/**
 * From now on prints the messages of the whole process to stderr, "level tag: message" each, if
 * they are of at least the given priority.
 */
void setLibraryLog(android_LogPriority lowest);

/**
 * A document that was read twice: into objects, which know the lines that they come from, and into
 * the lists that the effect gets. Throws std::runtime_error when either cannot be done. The
 * library's messages are silenced meanwhile and from then on.
 */
class LoadedDocument {
  public:
    explicit LoadedDocument(std::string file);

    const std::string& file() const { return mFile; }
    const DeviceData& objects() const { return mTrace->getDocument(); }
    const ReadTrace& trace() const { return *mTrace; }
    const XmlElements& elements() const { return *mElements; }
    SpatializerParamArray& store() const { return *mStore; }

    /** The profiles' lists, then the tuning devices', in document order. */
    std::vector<EffectList> lists() const;

  private:
    std::string mFile;
    std::unique_ptr<XmlElements> mElements;
    std::unique_ptr<ReadTrace> mTrace;
    std::unique_ptr<SpatializerParamArray> mStore;
};

/** The profile of a name or number. Throws std::runtime_error for one that the document lacks. */
OrmSpatializerProfileId profileOf(const LoadedDocument& document, const std::string& text);

/**
 * The header, then the objects by class, each class in document order. Of each its title "object",
 * which no other one has; the "line" of its element, but for the header; what it says beside its
 * parameters, by name; and, if its class has parameters, their "values" by name.
 */
Json objectsOf(const LoadedDocument& document);

}  // namespace ormel::tools
