// Where the entries of packed lists come from.
#pragma once

#include <ormel/EntryLayout.h>

#include <cstdint>
#include <map>
#include <string>
#include <tuple>
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

/** Tells where the entries of a document's lists come from. */
class EntryOrigins {
  public:
    /** The document must outlive this. */
    explicit EntryOrigins(const LoadedDocument& document);

    /** The origins of each entry of a list, in order. */
    std::vector<Origins> originsOf(const EffectList& list) const;

  private:
    /** A profile, the device that entries are for, and the class of what they are made from. */
    using Key = std::tuple<int32_t, int32_t, ParameterOwner>;

    Origins originsOf(const Entry& entry, const EntryLayout& layout,
                      const ParameterValues& object) const;
    Origin originOf(Parameter param, const ParameterValues& object) const;
    Origin speakerOrigin(Parameter param) const;

    const LoadedDocument& mDocument;
    const std::string mFormatVersion;

    // The document's objects by what refers to them; of those that can be one only, the one that
    // counts.
    std::map<std::string, const ParameterValues*> mTuningOfDevice;
    std::map<int32_t, const ParameterValues*> mIeqPresets;
    std::map<Key, std::vector<const ParameterValues*>> mObjects;
    /** Of the internal speaker; null when the document gives none. */
    const ParameterValues* mSpeakerTuning = nullptr;
};

}  // namespace ormel::tools
