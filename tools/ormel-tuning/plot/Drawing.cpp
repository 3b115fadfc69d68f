#include "Drawing.h"

#include <algorithm>
#include <iterator>
#include <ostream>
#include <string>

#include "Gnuplot.h"

namespace ormel::tools {

namespace {

/** The frequencies that every picture spans, in Hz. */
constexpr int32_t kLowestFrequency = 20;
constexpr int32_t kHighestFrequency = 20000;

/** Curves are told apart by colour, and without it by their points and dashes. */
constexpr char kSettings[] = R"(set border 3 linecolor rgb '#404040'
set tics nomirror out
set grid linecolor rgb '#d8d8d8' linetype 1 linewidth 0.5
set zeroaxis linecolor rgb '#808080' linetype 1 linewidth 1
set key below left vertical Left reverse samplen 3 noenhanced
)";
constexpr const char* kColours[] = {"#0072b2", "#d55e00", "#007f5f", "#b0468c",
                                    "#6b6b00", "#3a3a9f", "#8c510a", "#202020"};
constexpr const char* kOffColour = "#8c8c8c";
constexpr int kDashes[] = {1, 2, 4, 5};
constexpr int kPoints[] = {7, 5, 9, 11, 6, 4, 8, 10};
constexpr size_t kMaxKeyRows = 4;

void writeData(const Picture& picture, std::ostream& script) {
    for (size_t i = 0; i < picture.curves.size(); ++i) {
        script << "$curve" << i << " << EOD\n";
        const Curve& curve = picture.curves[i];
        for (size_t band = 0; band < curve.values.size(); ++band) {
            script << curve.places[band] << ' ' << curve.values[band] << '\n';
        }
        script << "EOD\n";
    }
}

/** The span of every picture of a kind, and what the curves have beyond it. */
std::pair<int32_t, int32_t> placeRange(const Picture& picture) {
    const bool hasFrequencies = isOverFrequency(picture.kind);
    std::pair<int32_t, int32_t> range = {1, 2};
    if (hasFrequencies) {
        range = {kLowestFrequency, kHighestFrequency};
    }
    for (const Curve& curve : picture.curves) {
        for (const int32_t place : curve.places) {
            // The logarithmic axis has no place for 0.
            range.first = std::min(range.first, std::max(place, 1));
            range.second = std::max(range.second, place);
        }
    }
    return range;
}

void writeAxes(const Picture& picture, const Scales& scales, std::ostream& script) {
    if (isOverFrequency(picture.kind)) {
        script << "set logscale x\nset xlabel 'Frequency (Hz)'\n"
                  "set xtics ('20' 20, '50' 50, '100' 100, '200' 200, '500' 500, '1k' 1000, "
                  "'2k' 2000, '5k' 5000, '10k' 10000, '20k' 20000)\n";
    } else {
        script << "unset logscale x\nset xlabel 'Place in the list'\nset xtics auto\n";
    }
    script << "set ylabel '" << valueName(picture.kind) << "'\n";
    const auto scale = scales.find(picture.kind);
    script << "set yrange [";
    if (scale != scales.end()) {
        script << scale->second.first << ':' << scale->second.second;
    }
    script << "]\n";
}

void writeStyle(const Curve& curve, std::ostream& script) {
    const size_t style = curve.style;
    script << "with " << (curve.isOld ? "lines" : "linespoints") << " linecolor rgb '"
           << (curve.isOff ? kOffColour : kColours[style % std::size(kColours)]) << "' dashtype "
           << kDashes[style % std::size(kDashes)] << " linewidth " << (curve.isOld ? 1 : 2);
    if (!curve.isOld) {
        script << " pointtype " << kPoints[style % std::size(kPoints)] << " pointsize 0.5";
    }
}

}  // namespace

Scales scalesOf(const std::vector<Picture>& pictures) {
    Scales scales;
    for (const Picture& picture : pictures) {
        for (const Curve& curve : picture.curves) {
            const auto [low, high] = std::minmax_element(curve.values.begin(), curve.values.end());
            auto& scale = scales.emplace(picture.kind, std::pair(*low, *high)).first->second;
            scale.first = std::min(scale.first, *low);
            scale.second = std::max(scale.second, *high);
        }
    }
    for (auto& [kind, scale] : scales) {
        // A twentieth on either side, so that nothing lies on the edge.
        const auto room = (static_cast<int64_t>(scale.second) - scale.first) / 20 + 1;
        scale.first = static_cast<int32_t>(std::max<int64_t>(scale.first - room, INT32_MIN));
        scale.second = static_cast<int32_t>(std::min<int64_t>(scale.second + room, INT32_MAX));
    }
    return scales;
}

const char* drawingSettings() {
    return kSettings;
}

size_t legendLines(const Picture& picture) {
    return std::min(picture.curves.size(), kMaxKeyRows);
}

void writePicture(const Picture& picture, const Scales& scales, std::ostream& script) {
    writeData(picture, script);
    writeAxes(picture, scales, script);
    script << "set key maxrows " << kMaxKeyRows << '\n';
    const auto [low, high] = placeRange(picture);
    std::string separator = "plot [" + std::to_string(low) + ':' + std::to_string(high) + "] ";
    for (size_t i = 0; i < picture.curves.size(); ++i) {
        const Curve& curve = picture.curves[i];
        const std::string legend =
                curve.name + (curve.isOld ? ", old" : "") + (curve.isOff ? ", off" : "");
        script << separator << "$curve" << i << " using ($1 > 0 ? $1 : NaN):2 ";
        writeStyle(curve, script);
        script << " title " << gnuplotLiteral(legend);
        separator = ", \\\n    ";
    }
    script << '\n';
}

}  // namespace ormel::tools
