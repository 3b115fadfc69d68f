#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <ostream>
#include <stdexcept>
#include <system_error>

#include "Pictures.h"
#include "text/Files.h"
#include "text/Progress.h"
#include "text/Text.h"

namespace ormel::tools {

namespace {

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
/** Lines that the tics of an axis and its label take. */
constexpr size_t kAxisLines = 4;

/** What the values run over. */
struct Axis {
    const char* settings;
    /** The span of every picture; one with curves beyond it shows them, too. */
    int32_t low;
    int32_t high;
};

constexpr Axis kPlaces = {"unset logscale x\nset xlabel 'Place in the list'\nset xtics auto\n", 1,
                          2};
constexpr Axis kFrequencies = {
        "set logscale x\nset xlabel 'Frequency (Hz)'\n"
        "set xtics ('20' 20, '50' 50, '100' 100, '200' 200, '500' 500, '1k' 1000, "
        "'2k' 2000, '5k' 5000, '10k' 10000, '20k' 20000)\n",
        20, 20000};

/** Writes the data of the curves, and widens the axis to them. */
void writeData(const Picture& picture, Axis& axis, std::ostream& script) {
    for (size_t i = 0; i < picture.curves.size(); ++i) {
        script << "$curve" << i << " << EOD\n";
        const Curve& curve = picture.curves[i];
        for (size_t band = 0; band < curve.values.size(); ++band) {
            const int32_t place = curve.places[band];
            script << place << ' ' << curve.values[band] << '\n';
            // The logarithmic axis has no place for 0.
            axis.low = std::min(axis.low, std::max(place, 1));
            axis.high = std::max(axis.high, place);
        }
        script << "EOD\n";
    }
}

void writeStyle(const Curve& curve, size_t style, std::ostream& script) {
    script << "with " << (curve.isOld ? "lines" : "linespoints") << " linecolor rgb '"
           << (curve.isOff ? kOffColour : kColours[style % std::size(kColours)]) << "' dashtype "
           << kDashes[style % std::size(kDashes)] << " linewidth " << (curve.isOld ? 1 : 2);
    if (!curve.isOld) {
        script << " pointtype " << kPoints[style % std::size(kPoints)] << " pointsize 0.5";
    }
}

/** The status of a shell that does not find a program. */
constexpr int kNotFound = 127;

/** A file without a name, which is gone with the object. */
class ScratchFile {
  public:
    ScratchFile() : mFile(std::tmpfile(), std::fclose) {
        if (mFile == nullptr) {
            throw std::runtime_error("no temporary file: " +
                                     std::generic_category().message(errno));
        }
    }

    /** Opens it, here and in programs that are started from here. */
    std::string path() const { return "/dev/fd/" + std::to_string(::fileno(mFile.get())); }

    std::string content() const {
        std::ifstream file(path(), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

  private:
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> mFile;
};

}  // namespace

Scales scalesOf(const std::vector<Picture>& pictures) {
    Scales scales;
    for (const Picture& picture : pictures) {
        for (const Curve& curve : picture.curves) {
            const auto [low, high] = std::minmax_element(curve.values.begin(), curve.values.end());
            auto& scale = scales.try_emplace(picture.kind, *low, *high).first->second;
            scale = {std::min<int64_t>(scale.first, *low), std::max<int64_t>(scale.second, *high)};
        }
    }
    for (auto& [kind, scale] : scales) {
        // A twentieth on either side, so that nothing lies on the edge.
        const int64_t room = (scale.second - scale.first) / 20 + 1;
        scale = {std::max<int64_t>(scale.first - room, INT32_MIN),
                 std::min<int64_t>(scale.second + room, INT32_MAX)};
    }
    return scales;
}

size_t legendLines(const Picture& picture) {
    return std::min(picture.curves.size(), kMaxKeyRows);
}

void writePicture(const Picture& picture, const Scales& scales, size_t legendLines,
                  std::ostream& script) {
    Axis axis = picture.kind->frequency.has_value() ? kFrequencies : kPlaces;
    writeData(picture, axis, script);
    script << axis.settings << "set ylabel '" << picture.kind->valueName << "'\nset yrange [";
    if (const auto scale = scales.find(picture.kind); scale != scales.end()) {
        script << scale->second.first << ':' << scale->second.second;
    }
    script << "]\nset key maxrows " << kMaxKeyRows << "\nset bmargin " << kAxisLines + legendLines
           << "\nplot [" << axis.low << ':' << axis.high << "] ";
    std::map<std::string, size_t> styles;
    for (size_t i = 0; i < picture.curves.size(); ++i) {
        const Curve& curve = picture.curves[i];
        const std::string legend =
                curve.name + (curve.isOld ? ", old" : "") + (curve.isOff ? ", off" : "");
        // An old curve has the colour and dash of the one of its name.
        const size_t style = styles.emplace(curve.name, i).first->second;
        script << (i == 0 ? "" : ", \\\n    ") << "$curve" << i << " using ($1 > 0 ? $1 : NaN):2 ";
        writeStyle(curve, style, script);
        script << " title " << gnuplotLiteral(legend);
    }
    script << '\n';
}

std::string gnuplotLiteral(const std::string& text) {
    std::string literal = "'";
    for (const char character : printable(text)) {
        literal.append(character == '\'' ? 2 : 1, character);
    }
    return literal + "'";
}

std::string drawnByGnuplot(const std::string& script) {
    const ProgressStep step("drawing");
    const ScratchFile in;
    const ScratchFile out;
    const ScratchFile messages;
    writeFile(in.path(), kSettings + script);
    // Without the user's own settings (-d), which would change the picture.
    const std::string command =
            "gnuplot -d <" + in.path() + " >" + out.path() + " 2>" + messages.path();
    // NOLINTNEXTLINE(cert-env33-c,concurrency-mt-unsafe): no text from outside, and one thread.
    const int status = std::system(command.c_str());
    if (WIFEXITED(status) && WEXITSTATUS(status) == kNotFound) {
        throw std::runtime_error(
                "drawing needs gnuplot, which is not installed; install Debian's gnuplot-nox");
    }
    std::string picture = out.content();
    if (status != 0 || picture.empty()) {
        throw std::runtime_error("gnuplot failed: " + printable(messages.content()));
    }
    return picture;
}

}  // namespace ormel::tools
