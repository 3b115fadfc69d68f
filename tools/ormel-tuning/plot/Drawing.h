// Scripts that have gnuplot draw pictures.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "Pictures.h"

namespace ormel::tools {

/** The span of all values of each kind, for one vertical scale. */
using Scales = std::map<Picture::Kind, std::pair<int32_t, int32_t>>;

Scales scalesOf(const std::vector<Picture>& pictures);

/** Colours, dashes and axes, which every script begins with. */
const char* drawingSettings();

/** Lines that the legend of a picture takes. */
size_t legendLines(const Picture& picture);

/** Draws a picture; on the scale of its kind, where there is one. */
void writePicture(const Picture& picture, const Scales& scales, std::ostream& script);

}  // namespace ormel::tools
