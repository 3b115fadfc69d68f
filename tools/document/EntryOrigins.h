// Where the entries of packed lists come from.
#pragma once

#include <cstddef>
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
    long line = 0;
};

/** The word for a kind of origin. */
constexpr const char* nameOf(Origin::Kind kind) {
    constexpr const char* kNames[] = {"line", "version rule", "default", "absent"};
    return kNames[static_cast<size_t>(kind)];
}

using Origins = std::vector<Origin>;

/** Tells where the entries of a document's lists come from. */
class EntryOrigins {
  public:
    /** The document must outlive this. */
    explicit EntryOrigins(const LoadedDocument& document);

    /** The origins of each entry of a list, in order. */
    std::vector<Origins> originsOf(const EffectList& list) const;

    /** The tuning that a device's list is made from; null for other lists. */
    const ParameterValues* tuningOf(const EffectList& list) const;

  private:
    /** A class of objects, the number or name that they go by, and whether they are a speaker's. */
    using Key = std::tuple<ParameterOwner, std::string, bool>;

    Origins originsOf(const Entry& entry, const ParameterValues& object) const;
    Origin originOf(Parameter param, const ParameterValues& object) const;

    const LoadedDocument& mDocument;
    std::map<Key, std::vector<const ParameterValues*>> mObjects;
    /** Of the internal speaker; null when the document gives none. */
    const ParameterValues* mSpeakerTuning = nullptr;
};

}  // namespace ormel::tools
