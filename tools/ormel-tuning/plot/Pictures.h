// The curves of a tuning document, before they are drawn.
#pragma once

#include <ormel/SpatializerParamArray.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "document/LoadedDocument.h"

namespace ormel::tools {

struct Curve {
    std::string name;
    /** Frequencies, or places in a list. */
    std::vector<int32_t> places;
    std::vector<int32_t> values;
    /** Whether a flag keeps the effect from using it. */
    bool isOff = false;
    /** Whether it is that of the document which is compared with. */
    bool isOld = false;
};

struct Picture {
    enum class Kind : size_t { IEQ_TARGETS, GEQ_GAINS, OPTIMIZER_GAINS, THRESHOLDS, COMPLEX_EQ };

    Kind kind;
    /** The profiles or tunings that it is the picture of. */
    std::vector<std::string> owners;
    /** What the enable flags say: "ieq_enable: speaker 1, headphone 0". */
    std::string flags;
    std::vector<Curve> curves = {};
};

bool operator==(const Curve& left, const Curve& right);
/** Whether two pictures show the same, whoever owns them. */
bool operator==(const Picture& left, const Picture& right);

/** "movie, music: graphic equalizer gains". */
std::string titleOf(const Picture& picture);

/** "Gain", "Target": what a kind's values are. */
const char* valueName(Picture::Kind kind);

/** Whether a kind's curves run over frequencies, and not over the places of a list. */
bool isOverFrequency(Picture::Kind kind);

/** Which pictures are wanted. */
struct PictureChoice {
    /** Only of this profile, where there is one. */
    std::optional<OrmSpatializerProfileId> profile = {};
    /** Only of these tunings, where there are any. */
    std::vector<std::string> tunings = {};
};

/**
 * The pictures that have curves; those of a kind that are the same become one. With @p old, the
 * curves that it has otherwise are in them as old ones.
 */
std::vector<Picture> picturesOf(const LoadedDocument& document, const LoadedDocument* old,
                                const PictureChoice& choice);

}  // namespace ormel::tools
