#include <ormel/KivParameter.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "Commands.h"
#include "Gnuplot.h"
#include "document/LoadedDocument.h"
#include "text/Names.h"
#include "text/Text.h"

namespace ormel::tools {

namespace {

using Values = std::vector<int32_t>;

constexpr size_t kPanelsPerRow = 2;
constexpr size_t kMaxPanels = 64;
constexpr size_t kWidth = 1200;
constexpr size_t kRowHeight = 440;
/** The frequencies that every panel spans, in Hz. */
constexpr int32_t kLowestFrequency = 20;
constexpr int32_t kHighestFrequency = 20000;
/** Pixels per unit of a picture that is made of them, so that it prints well. */
constexpr size_t kPixelScale = 2;

struct Curve {
    std::string title;
    Values frequencies;
    Values values;
};

struct Panel {
    std::string title;
    /** What the curves' values are. */
    std::string axis;
    std::vector<Curve> curves;
};

struct PlotOptions {
    std::string file;
    std::string output;
    std::string profile;
    std::vector<std::string> tunings;
};

/** Adds a curve, or just its title to the same one that is there already. */
void addCurve(Panel& panel, Curve curve) {
    const size_t size = std::min(curve.frequencies.size(), curve.values.size());
    curve.frequencies.resize(size);
    curve.values.resize(size);
    if (size == 0) {
        return;
    }
    const auto same =
            std::find_if(panel.curves.begin(), panel.curves.end(), [&curve](const Curve& other) {
                return other.frequencies == curve.frequencies && other.values == curve.values;
            });
    if (same == panel.curves.end()) {
        panel.curves.push_back(std::move(curve));
    } else {
        same->title.append(", ").append(curve.title);
    }
}

/** What the effect keeps of a list's entries for a device and a code; null without any. */
const Entry* lastEntry(const EffectList& list, int32_t device, KivParameter param) {
    const auto found = std::find_if(list.entries.rbegin(), list.entries.rend(),
                                    [device, code = kivCode(param)](const Entry& entry) {
                                        return entry.device == device && entry.code == code;
                                    });
    return found == list.entries.rend() ? nullptr : &*found;
}

void addEntry(Panel& panel, const std::string& title, const Entry* entry, Parameter frequency,
              Parameter value) {
    const auto shape = entry == nullptr ? std::nullopt : shapeOf(entry->code, entry->values);
    if (!shape.has_value()) {
        return;
    }
    const Shape::Column* const frequencies = findColumn(*shape, frequency);
    const Shape::Column* const values = findColumn(*shape, value);
    addCurve(panel, {title, frequencies->values, values->values});
}

bool isWanted(const EffectList& list, const PlotOptions& options) {
    return list.kind == EffectList::Kind::PROFILE &&
           (options.profile.empty() || list.profile == profileOf(options.profile));
}

std::vector<Panel> profilePanels(const LoadedDocument& document, const PlotOptions& options) {
    Panel intelligent = {"Intelligent equalizer targets", "Target", {}};
    Panel graphic = {"Graphic equalizer gains", "Gain", {}};
    // The headphone's devices all get what its endpoint asks for.
    constexpr std::pair<int32_t, Endpoint> kOutputs[] = {
            {DEVICE_OUT_SPEAKER, ENDPOINT_SPEAKER},
            {kHeadphoneDevices.front(), ENDPOINT_HEADPHONE}};
    for (const EffectList& list : document.lists()) {
        if (!isWanted(list, options)) {
            continue;
        }
        const std::string name =
                list.name.empty() ? "profile " + std::to_string(list.profile) : list.name;
        addEntry(graphic, name, lastEntry(list, DEVICE_OUT_DEFAULT, GEBS), GEQ_FREQUENCY, GEQ_GAIN);
        for (const auto& [device, endpoint] : kOutputs) {
            addEntry(intelligent, name + ' ' + endpointName(endpoint),
                     lastEntry(list, device, IEBS), IEQ_FREQUENCY, IEQ_TARGET);
        }
    }
    return {std::move(intelligent), std::move(graphic)};
}

/** The curves of a tuning's parameters over one of frequencies. */
Panel tuningPanel(const Tuning& tuning, const std::string& title, const std::string& axis,
                  Parameter frequency,
                  const std::vector<std::pair<const char*, Parameter>>& params) {
    Panel panel = {tuning.getName() + ": " + title, axis, {}};
    const auto valuesOf = [&tuning](Parameter param) {
        const auto found = tuning.getValues().find(param);
        return found == tuning.getValues().end() ? Values() : found->second;
    };
    for (const auto& [name, param] : params) {
        addCurve(panel, {name, valuesOf(frequency), valuesOf(param)});
    }
    return panel;
}

void addTuningPanels(const Tuning& tuning, std::vector<Panel>& panels) {
    std::vector<std::pair<const char*, Parameter>> channels = {{"left", AUDIO_OPTIMIZER_GAIN_L},
                                                               {"right", AUDIO_OPTIMIZER_GAIN_R}};
    const auto found = tuning.getValues().find(OUTPUT_CHANNELS);
    // The effect gets the surrounds' gains when there are surrounds.
    if (found != tuning.getValues().end() && firstOr0(found->second) > 2) {
        channels.insert(channels.end(), {{"left surround", AUDIO_OPTIMIZER_GAIN_LS},
                                         {"right surround", AUDIO_OPTIMIZER_GAIN_RS}});
    }
    panels.push_back(tuningPanel(tuning, "audio optimizer gains", "Gain", AUDIO_OPTIMIZER_FREQUENCY,
                                 channels));
    panels.push_back(
            tuningPanel(tuning, "regulator thresholds", "Threshold", REGULATOR_FREQUENCY,
                        {{"low", REGULATOR_THRESHOLD_LOW}, {"high", REGULATOR_THRESHOLD_HIGH}}));
}

std::vector<Panel> panelsOf(const LoadedDocument& document, const PlotOptions& options) {
    std::vector<Panel> panels;
    if (options.tunings.empty() || !options.profile.empty()) {
        panels = profilePanels(document, options);
    }
    for (const Tuning* const tuning : document.objects().getTunings()) {
        const auto& names = options.tunings;
        const bool isNamed =
                std::find(names.begin(), names.end(), tuning->getName()) != names.end();
        if (isNamed || (names.empty() && options.profile.empty())) {
            addTuningPanels(*tuning, panels);
        }
    }
    return panels;
}

/** Curves are told apart by colour, and without it by their points and dashes. */
constexpr char kSettings[] = R"(set logscale x
set xlabel 'Frequency (Hz)'
set xtics ('20' 20, '50' 50, '100' 100, '200' 200, '500' 500, '1k' 1000, '2k' 2000, '5k' 5000, \
    '10k' 10000, '20k' 20000)
set border 3 linecolor rgb '#404040'
set tics nomirror out
set grid linecolor rgb '#d8d8d8' linetype 1 linewidth 0.5
set zeroaxis linecolor rgb '#808080' linetype 1 linewidth 1
set key below left vertical Left reverse samplen 3 noenhanced
set style line 1 linecolor rgb '#0072b2' dashtype 1 pointtype 7 pointsize 0.5 linewidth 2
set style line 2 linecolor rgb '#d55e00' dashtype 2 pointtype 5 pointsize 0.5 linewidth 2
set style line 3 linecolor rgb '#007f5f' dashtype 4 pointtype 9 pointsize 0.6 linewidth 2
set style line 4 linecolor rgb '#b0468c' dashtype 5 pointtype 11 pointsize 0.6 linewidth 2
set style line 5 linecolor rgb '#6b6b00' dashtype 1 pointtype 6 pointsize 0.6 linewidth 2
set style line 6 linecolor rgb '#3a3a9f' dashtype 2 pointtype 4 pointsize 0.6 linewidth 2
set style line 7 linecolor rgb '#8c510a' dashtype 4 pointtype 8 pointsize 0.7 linewidth 2
set style line 8 linecolor rgb '#202020' dashtype 5 pointtype 10 pointsize 0.7 linewidth 2
)";
constexpr size_t kStyles = 8;
constexpr size_t kMaxKeyRows = 4;
/** Lines that the frequency axis takes. */
constexpr size_t kAxisLines = 4;

void writeData(const Panel& panel, std::ostream& script) {
    for (size_t i = 0; i < panel.curves.size(); ++i) {
        script << "$curve" << i << " << EOD\n";
        const Curve& curve = panel.curves[i];
        for (size_t band = 0; band < curve.values.size(); ++band) {
            script << curve.frequencies[band] << ' ' << curve.values[band] << '\n';
        }
        script << "EOD\n";
    }
}

/** The span of every panel, and what the curves have beyond it. */
std::pair<int32_t, int32_t> frequencyRange(const Panel& panel) {
    std::pair<int32_t, int32_t> range = {kLowestFrequency, kHighestFrequency};
    for (const Curve& curve : panel.curves) {
        for (const int32_t frequency : curve.frequencies) {
            // The logarithmic axis has no place for 0.
            range.first = std::min(range.first, std::max(frequency, 1));
            range.second = std::max(range.second, frequency);
        }
    }
    return range;
}

void writePanel(const Panel& panel, std::ostream& script) {
    writeData(panel, script);
    script << "set title " << gnuplotLiteral(panel.title) << " noenhanced\n"
           << "set ylabel " << gnuplotLiteral(panel.axis + " (effect's own units)") << '\n';
    if (panel.curves.empty()) {
        script << "set label 1 'none' at graph 0.5, graph 0.5 center\n"
                  "plot ["
               << kLowestFrequency << ':' << kHighestFrequency
               << "] [-1:1] NaN notitle\nunset label 1\n";
        return;
    }
    const auto [low, high] = frequencyRange(panel);
    std::string separator = "plot [" + std::to_string(low) + ':' + std::to_string(high) + "] ";
    for (size_t i = 0; i < panel.curves.size(); ++i) {
        script << separator << "$curve" << i << " using ($1 > 0 ? $1 : NaN):2 "
               << "with linespoints linestyle " << i % kStyles + 1 << " title "
               << gnuplotLiteral(panel.curves[i].title);
        separator = ", \\\n    ";
    }
    script << '\n';
}

std::string terminalFor(const std::string& output, size_t rows) {
    const auto endsWith = [&output](const std::string& end) {
        return output.size() >= end.size() &&
               output.compare(output.size() - end.size(), end.size(), end) == 0;
    };
    std::ostringstream terminal;
    if (endsWith(".svg")) {
        terminal << "svg size " << kWidth << ',' << rows * kRowHeight
                 << " dynamic background '#ffffff' font 'sans-serif,13'";
    } else if (endsWith(".png")) {
        terminal << "pngcairo size " << kPixelScale * kWidth << ','
                 << kPixelScale * rows * kRowHeight << " background '#ffffff' font 'sans,10' "
                 << "fontscale " << kPixelScale << " linewidth " << kPixelScale << " pointscale "
                 << kPixelScale;
    } else {
        throw std::runtime_error(output + ": pictures are .svg or .png");
    }
    return terminal.str();
}

/** Lines that the longest legend of some panels takes. */
size_t keyRows(const Panel* begin, const Panel* end) {
    const Panel* const longest =
            std::max_element(begin, end, [](const Panel& left, const Panel& right) {
                return left.curves.size() < right.curves.size();
            });
    return std::min(longest->curves.size(), kMaxKeyRows);
}

std::string scriptFor(const std::vector<Panel>& panels, const std::string& output) {
    const size_t rows = (panels.size() + kPanelsPerRow - 1) / kPanelsPerRow;
    std::ostringstream script;
    script << "set terminal " << terminalFor(output, rows) << '\n'
           << kSettings << "set key maxrows " << kMaxKeyRows << "\nset multiplot layout " << rows
           << ',' << kPanelsPerRow << '\n';
    for (size_t i = 0; i < panels.size(); ++i) {
        if (i % kPanelsPerRow == 0) {
            const size_t end = std::min(panels.size(), i + kPanelsPerRow);
            script << "set bmargin " << kAxisLines + keyRows(&panels[i], &panels[end - 1] + 1)
                   << '\n';
        }
        writePanel(panels[i], script);
    }
    script << "unset multiplot\n";
    return script.str();
}

void plot(const PlotOptions& options) {
    terminalFor(options.output, 1);
    const LoadedDocument document(options.file);
    const std::vector<Panel> panels = panelsOf(document, options);
    if (panels.empty()) {
        throw std::runtime_error(options.file + ": nothing to draw by that name");
    }
    if (panels.size() > kMaxPanels) {
        throw std::runtime_error(options.file + ": too much for one picture; name some with " +
                                 "--profile or --tuning");
    }
    drawWithGnuplot(scriptFor(panels, options.output), options.output);
}

}  // namespace

void addPlot(CLI::App& app) {
    CLI::App* const command =
            app.add_subcommand("plot", "Draw the curves of a tuning document over frequency");
    const auto options = std::make_shared<PlotOptions>();
    command->add_option("FILE", options->file, "Tuning document")->required();
    command->add_option("-o,--output", options->output, "Picture, .svg or .png")->required();
    command->add_option(
            "--profile", options->profile,
            "Only the equalizers of a profile: " + joined(profileNames(), ", ") + ", or a number");
    command->add_option("--tuning", options->tunings,
                        "Only the optimizer and regulator of a tuning; may be repeated")
            ->allow_extra_args(false);
    command->footer(R"(Values are the document's numbers, in the effect's own units.

Example:
  ormel-tuning plot examples/tablet-quad.xml -o curves.svg)");
    command->callback([options] { plot(*options); });
}

}  // namespace ormel::tools
