#include <algorithm>
#include <memory>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "Commands.h"
#include "Drawing.h"
#include "Gnuplot.h"
#include "Pictures.h"
#include "document/LoadedDocument.h"
#include "text/Files.h"
#include "text/Names.h"
#include "text/Text.h"

namespace ormel::tools {

namespace {

constexpr size_t kPicturesPerRow = 2;
/** A page of this many rows prints on one of paper. */
constexpr size_t kRowsPerPage = 3;
constexpr size_t kPicturesPerPage = kPicturesPerRow * kRowsPerPage;
constexpr size_t kMaxPages = 40;
constexpr size_t kWidth = 1200;
constexpr size_t kRowHeight = 440;
constexpr size_t kTitleHeight = 40;
/** Pixels per unit of a picture that is made of them, so that it prints well. */
constexpr size_t kPixelScale = 2;
/** Lines that an axis of places takes. */
constexpr size_t kAxisLines = 4;

struct PlotOptions {
    std::string file;
    std::string old;
    std::string output;
    std::string profile;
    std::vector<std::string> tunings;
    bool hasSameScale = false;
};

bool endsWith(const std::string& text, const std::string& end) {
    return text.size() >= end.size() &&
           text.compare(text.size() - end.size(), end.size(), end) == 0;
}

std::string terminalFor(const std::string& output, size_t rows) {
    const size_t height = rows * kRowHeight + kTitleHeight;
    std::ostringstream terminal;
    if (endsWith(output, ".svg")) {
        terminal << "svg size " << kWidth << ',' << height
                 << " dynamic background '#ffffff' font 'sans-serif,13'";
    } else if (endsWith(output, ".png")) {
        terminal << "pngcairo size " << kPixelScale * kWidth << ',' << kPixelScale * height
                 << " background '#ffffff' font 'sans,10' fontscale " << kPixelScale
                 << " linewidth " << kPixelScale << " pointscale " << kPixelScale;
    } else {
        throw std::runtime_error(output + ": pictures are .svg or .png");
    }
    return terminal.str();
}

using PictureIterator = std::vector<Picture>::const_iterator;

/** Draws some pictures on one page. */
std::string scriptFor(PictureIterator begin, PictureIterator end, const Scales& scales,
                      const std::string& title, const std::string& output) {
    const auto count = static_cast<size_t>(end - begin);
    const size_t rows = (count + kPicturesPerRow - 1) / kPicturesPerRow;
    std::ostringstream script;
    script << "set terminal " << terminalFor(output, rows) << '\n'
           << drawingSettings() << "set multiplot layout " << rows << ',' << kPicturesPerRow
           << " title " << gnuplotLiteral(title) << " noenhanced\n";
    for (size_t i = 0; i < count; ++i) {
        const Picture& picture = begin[static_cast<std::ptrdiff_t>(i)];
        if (i % kPicturesPerRow == 0) {
            const bool hasNext = i + 1 < count;
            const Picture& next = begin[static_cast<std::ptrdiff_t>(hasNext ? i + 1 : i)];
            script << "set bmargin "
                   << kAxisLines + std::max(legendLines(picture), legendLines(next)) << '\n';
        }
        script << "set title " << gnuplotLiteral(titleOf(picture)) << ".\"\\n\"."
               << gnuplotLiteral(picture.flags) << " noenhanced\n";
        writePicture(picture, scales, script);
    }
    script << "unset multiplot\n";
    return script.str();
}

/** "curves.svg", "curves-2.svg". */
std::string pageFile(const std::string& output, size_t page) {
    const size_t dot = output.rfind('.');
    return page == 0 ? output
                     : output.substr(0, dot) + '-' + std::to_string(page + 1) + output.substr(dot);
}

std::vector<Picture> wantedPictures(const PlotOptions& options) {
    PictureChoice choice;
    choice.tunings = options.tunings;
    if (!options.profile.empty()) {
        choice.profile = profileOf(options.profile);
    }
    const LoadedDocument document(options.file);
    return options.old.empty() ? picturesOf(document, choice)
                               : picturesOf(document, LoadedDocument(options.old), choice);
}

void plot(const PlotOptions& options) {
    terminalFor(options.output, 1);
    const std::vector<Picture> pictures = wantedPictures(options);
    if (pictures.empty()) {
        throw std::runtime_error(options.file + ": nothing to draw by that name");
    }
    const size_t pages = (pictures.size() + kPicturesPerPage - 1) / kPicturesPerPage;
    if (pages > kMaxPages) {
        throw std::runtime_error(options.file + ": too much to draw; name some with " +
                                 "--profile or --tuning");
    }
    std::string title = baseName(options.file) + ", values in the effect's own units";
    title += options.old.empty() ? "" : "; thin lines, old: " + baseName(options.old);
    const Scales scales = options.hasSameScale ? scalesOf(pictures) : Scales();
    std::vector<std::string> drawn;
    for (size_t page = 0; page < pages; ++page) {
        const auto begin = pictures.begin() + static_cast<std::ptrdiff_t>(page * kPicturesPerPage);
        const auto left = static_cast<size_t>(pictures.end() - begin);
        const auto size = static_cast<std::ptrdiff_t>(std::min(left, kPicturesPerPage));
        drawn.push_back(
                drawnByGnuplot(scriptFor(begin, begin + size, scales, title, options.output)));
    }
    for (size_t page = 0; page < pages; ++page) {
        writeFile(pageFile(options.output, page), drawn[page]);
    }
}

}  // namespace

void addPlot(CLI::App& app) {
    CLI::App* const command =
            app.add_subcommand("plot", "Draw the curves of a tuning document over frequency");
    const auto options = std::make_shared<PlotOptions>();
    command->add_option("FILE", options->file, "Tuning document")->required();
    command->add_option("-o,--output", options->output,
                        "Picture, .svg or .png; what does not fit on a page goes to further "
                        "files, with -2, -3, ... in their names")
            ->required();
    command->add_option("--against", options->old,
                        "Draw the curves that another document has otherwise, too, as thin lines")
            ->type_name("OLD");
    command->add_flag("--same-scale", options->hasSameScale,
                      "Draw all pictures of a kind on one vertical scale");
    command->add_option(
            "--profile", options->profile,
            "Only the equalizers of a profile: " + joined(profileNames(), ", ") + ", or a number");
    command->add_option("--tuning", options->tunings,
                        "Only the optimizer, regulator and complex equalizer of a tuning; may be "
                        "repeated")
            ->allow_extra_args(false);
    command->footer(R"(Values are the document's numbers, in the effect's own units. Curves that an
enable flag switches off are grey.

Examples:
  ormel-tuning plot examples/tablet-quad.xml -o curves.svg
  ormel-tuning plot new.xml --against old.xml --same-scale -o curves.png)");
    command->callback([options] { plot(*options); });
}

}  // namespace ormel::tools
