// The curves of a tuning document, and their pictures, which the program gnuplot draws.
#pragma once

#include <ormel/SpatializerParamArray.h>

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <map>
#include <optional>
#include <string>
#include <utility>
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

/** What all pictures of a kind show of a profile or tuning. */
struct PictureKind {
    struct CurveRow {
        const char* name = nullptr;
        Parameter values = {};
        /** Whether it is sent where there are more than two channels alone. */
        bool isSurround = false;
        /** The device that gets it; a tuning's values are under this one. */
        int32_t device = DEVICE_OUT_DEFAULT;
    };

    /** "graphic equalizer gains". */
    const char* title;
    /** "Gain", "Target": what the values are. */
    const char* valueName;
    Parameter flag;
    /** What the values run over; none for the places of a list. */
    std::optional<Parameter> frequency;
    /** The only number of bands that is sent; 0 where any is. */
    size_t bands;
    /** Those behind the last one have no name. */
    CurveRow curves[4];
};

struct Picture {
    const PictureKind* kind;
    /** The profiles or tunings that it is the picture of. */
    std::vector<std::string> owners;
    /** What the enable flags say: "ieq_enable: speaker 1, headphone 0". */
    std::string flags;
    std::vector<Curve> curves = {};
};

bool operator==(const Curve& left, const Curve& right);

/** "movie, music: graphic equalizer gains". */
std::string titleOf(const Picture& picture);

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

/** The span of all values of each kind, for one vertical scale. */
using Scales = std::map<const PictureKind*, std::pair<int64_t, int64_t>>;

Scales scalesOf(const std::vector<Picture>& pictures);

/** Lines that the legend of a picture takes. */
size_t legendLines(const Picture& picture);

/**
 * Draws a picture, above room for so many lines of a legend; on the scale of its kind, where there
 * is one.
 */
void writePicture(const Picture& picture, const Scales& scales, size_t legendLines,
                  std::ostream& script);

/** A text as a literal of a script, in which nothing of it is more than itself. */
std::string gnuplotLiteral(const std::string& text);

/**
 * What gnuplot draws on its standard output by a script. Throws std::runtime_error when it fails,
 * and when there is no gnuplot.
 */
std::string drawnByGnuplot(const std::string& script);

}  // namespace ormel::tools
