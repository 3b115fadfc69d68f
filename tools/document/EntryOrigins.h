// Where the entries of packed lists come from.
#pragma once

#include <ormel/Parameter.h>

#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <vector>

#include "LoadedDocument.h"

namespace ormel::tools {

/** What stands behind one tuning parameter of an entry. */
struct Origin {
    enum class Kind {
        /** An element of the document. */
        LINE,
        /** What the document's format version makes of it. */
        VERSION_RULE,
        DEFAULT,
        /** Nothing: the effect gets an entry without these values. */
        ABSENT
    };

    Kind kind;
    Parameter param;
    long line;
};

/** The word for a kind of origin. */
const char* nameOf(Origin::Kind kind);

using Origins = std::vector<Origin>;

/**
 * Tells where the entries of a document's lists come from.
 *
 * Which parameters an entry is made from is found out from the translators: those whose change
 * changes the entry.
 */
class EntryOrigins {
  public:
    /** The document must outlive this. */
    explicit EntryOrigins(const LoadedDocument& document);

    /** The origins of each entry of a list, in order. */
    std::vector<Origins> originsOf(const EffectList& list) const;

  private:
    class Source;
    /** What a list is made from, by the device that the entries are for, in the list's order. */
    using Sources = std::map<int32_t, std::deque<Source>>;

    Sources tuningSources(const EffectList& list) const;
    Sources profileSources(const EffectList& list) const;
    void addEndpoint(const ProfileEndpoint& endpoint, Sources& sources) const;
    Origin speakerOrigin(Parameter param) const;

    const LoadedDocument& mDocument;

    // The document's objects by what refers to them; of those that can be one only, the one that
    // counts.
    std::map<std::string, const Tuning*> mTunings;
    std::map<std::string, const Tuning*> mTuningOfDevice;
    std::map<int, const IeqPreset*> mIeqPresets;
    std::map<int, const Profile*> mProfiles;
    std::map<int, std::vector<const GeqPreset*>> mGeqPresets;
    std::map<int, std::vector<const ProfileEndpoint*>> mProfileEndpoints;
    /** Of the internal speaker; null when the document gives none. */
    const Tuning* mSpeakerTuning = nullptr;
};

}  // namespace ormel::tools
