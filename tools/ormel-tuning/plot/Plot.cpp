#include <algorithm>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "Commands.h"
#include "Pictures.h"
#include "document/LoadedDocument.h"
#include "text/Files.h"
#include "text/Names.h"
#include "text/Text.h"

namespace ormel::tools {

namespace {

constexpr size_t kPicturesPerRow = 2;
/** Three rows print on one page of paper. */
constexpr size_t kPicturesPerPage = kPicturesPerRow * 3;
constexpr size_t kMaxPages = 40;
constexpr size_t kWidth = 1200;
constexpr size_t kRowHeight = 440;
constexpr size_t kTitleHeight = 40;

struct PlotOptions {
    std::string file;
    std::string old;
    std::string output;
    std::string profile;
    PictureChoice choice;
    bool hasSameScale = false;
};

std::string terminalFor(const std::string& output, size_t rows) {
    const auto size = [rows](size_t scale) {
        return std::to_string(scale * kWidth) + ',' +
               std::to_string(scale * (rows * kRowHeight + kTitleHeight));
    };
    const std::string ending = output.substr(std::min(output.rfind('.'), output.size()));
    if (ending == ".svg") {
        return "svg size " + size(1) + " dynamic background '#ffffff' font 'sans-serif,13'";
    }
    // Two pixels per unit, so that it prints well.
    if (ending == ".png") {
        return "pngcairo size " + size(2) +
               " background '#ffffff' font 'sans,10' fontscale 2 linewidth 2 pointscale 2";
    }
    throw std::runtime_error(output + ": pictures are .svg or .png");
}

/** Draws some pictures on one page. */
std::string scriptFor(const std::vector<Picture>& pictures, const Scales& scales,
                      const std::string& title, const std::string& output) {
    const size_t rows = (pictures.size() + kPicturesPerRow - 1) / kPicturesPerRow;
    std::ostringstream script;
    script << "set terminal " << terminalFor(output, rows) << '\n'
           << "set multiplot layout " << rows << ',' << kPicturesPerRow << " title "
           << gnuplotLiteral(title) << " noenhanced\n";
    for (size_t i = 0; i < pictures.size(); ++i) {
        const Picture& picture = pictures[i];
        const Picture& beside = pictures[i % 2 == 1 ? i - 1 : std::min(i + 1, pictures.size() - 1)];
        script << "set title " << gnuplotLiteral(titleOf(picture)) << ".\"\\n\"."
               << gnuplotLiteral(picture.flags) << " noenhanced\n";
        writePicture(picture, scales, std::max(legendLines(picture), legendLines(beside)), script);
    }
    script << "unset multiplot\n";
    return script.str();
}

/** "curves.svg", "curves-2.svg". */
std::string pageFile(std::string output, size_t page) {
    return page == 0 ? output : output.insert(output.rfind('.'), '-' + std::to_string(page + 1));
}

void plot(const PlotOptions& options) {
    terminalFor(options.output, 1);
    PictureChoice choice = options.choice;
    if (!options.profile.empty()) {
        choice.profile = profileOf(options.profile);
    }
    const LoadedDocument document(options.file);
    std::optional<LoadedDocument> old;
    std::string title = baseName(options.file) + ", values in the effect's own units";
    if (!options.old.empty()) {
        old.emplace(options.old);
        title += "; thin lines, old: " + baseName(options.old);
    }
    const auto pictures = picturesOf(document, old.has_value() ? &*old : nullptr, choice);
    if (pictures.empty() && choice.profile.has_value()) {
        throw std::runtime_error(options.file + ": profile " +
                                 profileText(profileOf(document, options.profile)) +
                                 " has no curves");
    }
    if (pictures.empty()) {
        std::string tunings;
        for (const Tuning* const tuning : document.objects().getTunings()) {
            tunings += (tunings.empty() ? "; its tunings are " : ", ") + tuning->getName();
        }
        throw std::runtime_error(options.file + ": no curves to draw" + tunings);
    }
    if (pictures.size() > kMaxPages * kPicturesPerPage) {
        throw std::runtime_error(options.file + ": too many curves; choose some with " +
                                 "--profile or --tuning");
    }
    const Scales scales = options.hasSameScale ? scalesOf(pictures) : Scales();
    std::vector<std::string> pages;
    for (auto next = pictures.begin(); next != pictures.end();) {
        const auto begin = next;
        next += std::min<std::ptrdiff_t>(kPicturesPerPage, pictures.end() - begin);
        pages.push_back(drawnByGnuplot(scriptFor({begin, next}, scales, title, options.output)));
    }
    for (size_t page = 0; page < pages.size(); ++page) {
        writeFile(pageFile(options.output, page), pages[page]);
    }
}

}  // namespace

void addPlot(CLI::App& app, int& /* status */) {
    CLI::App* const command = app.add_subcommand("plot", "Draw the curves of a tuning document");
    const auto options = std::make_shared<PlotOptions>();
    command->add_option("FILE", options->file, "Tuning document")->required();
    command->add_option("-o,--output", options->output,
                        "Picture, .svg or .png; what does not fit on a page goes to further "
                        "files, with -2, -3, ... in their names")
            ->required();
    command->add_option("--against", options->old,
                        "Also draw the curves that differ in another document, as thin lines")
            ->type_name("OLD");
    command->add_flag("--same-scale", options->hasSameScale,
                      "Draw all pictures of a kind with the same vertical scale");
    command->add_option(
            "--profile", options->profile,
            "Only the equalizers of a profile: " + joined(profileNames(), ", ") + ", or a number");
    command->add_option("--tuning", options->choice.tunings,
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
