#include "ReportPictures.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>

#include "plot/Drawing.h"
#include "text/Text.h"

namespace ormel::tools {

namespace {

constexpr size_t kWidth = 440;
/** Of a picture without its legend. */
constexpr size_t kHeight = 300;
constexpr size_t kLineHeight = 18;
constexpr size_t kAxisLines = 4;
constexpr size_t kMaxPictures = 120;

bool isFlat(const Picture& picture) {
    return std::all_of(picture.curves.begin(), picture.curves.end(), [](const Curve& curve) {
        return std::all_of(curve.values.begin(), curve.values.end(),
                           [](int32_t value) { return value == 0; });
    });
}

bool isChanged(const Picture& picture) {
    return std::any_of(picture.curves.begin(), picture.curves.end(),
                       [](const Curve& curve) { return curve.isOld; });
}

/** Each picture as an SVG document of its own, one behind the other. */
std::string scriptFor(const std::vector<Picture>& pictures) {
    const Scales scales = scalesOf(pictures);
    std::ostringstream script;
    for (size_t i = 0; i < pictures.size(); ++i) {
        const size_t lines = legendLines(pictures[i]);
        script << "set terminal svg name 'picture" << i << "' size " << kWidth << ','
               << kHeight + lines * kLineHeight << " dynamic font 'sans-serif,14'\n"
               << (i == 0 ? drawingSettings() : "") << "set bmargin " << kAxisLines + lines << '\n';
        writePicture(pictures[i], scales, script);
        script << "set output\n";
    }
    return script.str();
}

/** Takes a part of a text out of it. */
std::string cut(std::string& text, const std::string& begin, const std::string& end) {
    const size_t from = text.find(begin);
    const size_t to = from == std::string::npos ? from : text.find(end, from);
    if (to == std::string::npos) {
        return "";
    }
    std::string part = text.substr(from, to + end.size() - from);
    text.erase(from, part.size());
    return part;
}

/** "speaker from -12 to 160". */
std::string spanOf(const Curve& curve) {
    const auto [low, high] = std::minmax_element(curve.values.begin(), curve.values.end());
    return curve.name + (curve.isOld ? " (old)" : "") + (curve.isOff ? " (off)" : "") + " from " +
           std::to_string(*low) + " to " + std::to_string(*high);
}

Json curveJson(const Curve& curve, bool hasFrequencies) {
    std::vector<std::string> points;
    for (size_t i = 0; i < curve.values.size(); ++i) {
        points.push_back(std::to_string(curve.values[i]) + " at " +
                         std::to_string(curve.places[i]) + (hasFrequencies ? " Hz" : ""));
    }
    return {{"name", curve.name + (curve.isOld ? ", old" : "") + (curve.isOff ? ", off" : "")},
            {"values", joined(points, ", ")}};
}

/** The documents that gnuplot drew, as parts of a page: what they all define is in one place. */
std::vector<std::string> svgParts(std::string drawn, std::string& defs) {
    std::vector<std::string> parts;
    for (size_t at = drawn.find("<svg"); at != std::string::npos; at = drawn.find("<svg", at)) {
        const size_t end = std::min(drawn.find("<?xml", at), drawn.size());
        std::string part = drawn.substr(at, end - at);
        cut(part, "<title>", "</title>");
        cut(part, "<desc>", "</desc>");
        cut(part, " id=\"gnuplot", "canvas\"");
        defs = cut(part, "<defs>", "</defs>");
        parts.push_back(part.substr(std::string("<svg").size()));
        at = end;
    }
    return parts;
}

}  // namespace

Json picturesJson(std::vector<Picture> all) {
    // What changes comes first.
    std::stable_partition(all.begin(), all.end(), isChanged);
    std::vector<Picture> pictures;
    std::vector<std::string> flat;
    for (const Picture& picture : all) {
        if (isFlat(picture)) {
            flat.push_back(titleOf(picture));
        } else if (pictures.size() < kMaxPictures) {
            pictures.push_back(picture);
        }
    }
    Json json = {{"pictures", Json::array()},
                 {"flat", flat.empty() ? Json(false) : Json(joined(flat, "; "))}};
    if (pictures.size() == kMaxPictures) {
        json["notDrawn"] = "Only the first " + std::to_string(kMaxPictures) + " are drawn.";
    }
    std::vector<std::string> parts;
    std::string defs;
    try {
        if (!pictures.empty()) {
            parts = svgParts(drawnByGnuplot(scriptFor(pictures)), defs);
        }
    } catch (const std::runtime_error& error) {
        json["notDrawn"] = error.what();
    }
    json["defs"] = defs;
    for (size_t i = 0; i < std::min(parts.size(), pictures.size()); ++i) {
        const Picture& picture = pictures[i];
        std::vector<std::string> spans;
        Json curves = Json::array();
        for (const Curve& curve : picture.curves) {
            spans.push_back(spanOf(curve));
            curves.push_back(curveJson(curve, isOverFrequency(picture.kind)));
        }
        json["pictures"].push_back({{"id", "picture-" + std::to_string(i + 1)},
                                    {"title", titleOf(picture)},
                                    {"flags", picture.flags},
                                    {"isChanged", isChanged(picture)},
                                    {"spans", joined(spans, "; ")},
                                    {"svg", parts[i]},
                                    {"curves", std::move(curves)}});
    }
    return json;
}

}  // namespace ormel::tools
