#include <gmock/gmock.h>
#include <sys/wait.h>

#include <nlohmann/json.hpp>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <tuple>
#include <utility>

namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;

const std::string kTabletFile = "apply " ORMEL_EXAMPLES "/tablet-quad.xml ";
const std::string kTablet = kTabletFile + "--profile movie ";
/** A document of format 3.2.2. kChanged differs from it in content that is read and that is not. */
const std::string kSmall = ORMEL_EXAMPLES "/../tests/tools/small.xml";
const std::string kChanged = ORMEL_EXAMPLES "/../tests/tools/changed.xml";

/** Runs the tool. Returns its exit status and its output on stdout and stderr. */
std::pair<int, std::string> run(const std::string& arguments) {
    FILE* const pipe = ::popen((ORMEL_TUNING " 2>&1 " + arguments).c_str(), "r");
    std::string output;
    std::array<char, 4096> buffer{};
    while (std::fgets(buffer.data(), static_cast<int>(buffer.size()), pipe) != nullptr) {
        output += buffer.data();
    }
    const int status = ::pclose(pipe);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, output};
}

TEST(ApplyTest, ShowsEveryCallInOrder) {
    const auto [status, output] = run(kTablet + "--ormel-content --tuning usb=default_usb");
    EXPECT_EQ(status, 0);
    EXPECT_THAT(output, ::testing::StartsWith(R"(setSelectedTuningDevice(usb, default_usb)
  no calls
  returned 0
setProfile(movie, isOrmelContent=true)
)"));
    EXPECT_THAT(output, HasSubstr(R"(
  set    all devices      gebs    [41]  graphic equalizer bands: count, frequencies, gains
                                20, 47, 141, 234, 328, 469, 656, 844, 1031, 1313, 1688, 2250, 3000,
                                3750, 4688, 5813, 7125, 9000, 11250, 13875, 19688, 35, 16, -7, -16,
                                -11, -4, 1, 4, 10, 16, 25, 23, 18, 17, 17, 15, 18, 17, 14, 6
)"));
    EXPECT_THAT(output, HasSubstr("\n  read   speaker          dom     [61]  output mode: "));
    EXPECT_THAT(output, HasSubstr("\n  returned 0\nloadTuning()\n  set    speaker "));
    EXPECT_THAT(output,
                HasSubstr("\n  set    Bluetooth A2DP   vbog     -64  virtual bass overall "));
    EXPECT_THAT(output, EndsWith("\n  commit all devices\n  returned 0\n"));
}

TEST(ApplyTest, ReportsErrors) {
    // clang-format off
    const std::pair<std::string, std::string> failures[] = {
        {"frob", "ormel-tuning: unknown command 'frob'; see --help"},
        {"apply", "ormel-tuning: FILE is required; see --help"},
        {"apply x", "ormel-tuning: one of --profile and --script is needed"},
        {"apply x --profile 1", "ormel-tuning: x: No such file or directory"},
        {"apply /dev/null --profile 1", "/dev/null: cannot be loaded as a tuning document: it is empty"},
        {"apply x --profile film", ": unknown profile 'film'; use one of dynamic, movie, music, custom"},
        {kTablet + "--tuning usb", "ormel-tuning: 'usb' is not PORT=DEVICE"},
        {kTablet + "--tuning line=x", ": unknown port 'line'; use one of internal_speaker, hdmi, miracast, headphone, bluetooth, usb, other"},
        {kTablet + "--tuning usb=x", ": unknown tuning device 'x'; port usb has default_usb"},
        {kTablet + "--geq 1,2x", "ormel-tuning: '2x' is not an integer of 32 bits"},
        {kTablet + "--device-proc dom,loud", "ormel-tuning: no parameter of the effect has the code 'loud'"},
        {kTabletFile + "--script - <<'END'\n# two of three\ngeq 1\n\nplay it\nEND", "ormel-tuning: stdin:4: unknown operation 'play'; use one of profile, tuning, geq, device-proc, load-tuning"},
        {"show " + kSmall + " --profile 2", "small.xml: no profile music; it has movie"},
        {"show " + kSmall + " --code gebs --device speaker", "small.xml: no entry matches these options"},
        {"show " + kSmall + " --device tv", "ormel-tuning: unknown device 'tv'; use one of all_devices, speaker, wired_headphone, Bluetooth_A2DP, USB_device, default_internal_speaker"},
        {"show " + kSmall + " --parameter volmax_bost", "ormel-tuning: there is no tuning parameter or element 'volmax_bost'; the nearest is 'volmax_boost'"},
        {"report " + kSmall + " -o page.pdf", "page.pdf: pages are .html or .htm"},
        {kTabletFile + "--script x --geq 1", "--script excludes --geq; see --help"},
        {"diff " + kSmall + " x", "ormel-tuning: x: No such file or directory"},
        {"plot " + kSmall + " --tuning narrow -o curves.svg", "small.xml: no curves to draw; its tunings are wide 'n' low"},
        {"plot " + kSmall + " -o curves.pdf", "curves.pdf: pictures are .svg or .png"},
    };
    // clang-format on
    for (const auto& [arguments, end] : failures) {
        const auto [status, output] = run(arguments);
        EXPECT_EQ(status, 2) << arguments;
        EXPECT_THAT(output, EndsWith(end + "\n"));
    }
}

TEST(ApplyTest, RunsAScriptOfOperations) {
    const auto [status, output] = run(kTabletFile + R"(--script - <<'END'
device-proc deon
geq 5, -3
  profile movie ormel-content
END)");
    EXPECT_EQ(status, 0);
    EXPECT_THAT(output, ::testing::HasSubstr("setDeviceProcParams(deon)\n  no calls\n"
                                             "setProfileGeqGains(5, -3)\n"));
    const std::string applied = output.substr(output.find("setProfile(movie"));
    const std::string ofDocument = applied.substr(0, applied.find("  commit"));
    EXPECT_THAT(ofDocument, HasSubstr(" 13875, 19688, 5, -3, 0, 0,"));
    EXPECT_THAT(ofDocument, HasSubstr("  set    speaker          deon       1  "));
    EXPECT_THAT(ofDocument, ::testing::Not(HasSubstr(" ded ")));
}

TEST(ShowTest, ListsValuesTheirLinesAndReasons) {
    const std::string speaker = kSmall + " --profile 1 --device speaker";
    const std::string wide = kSmall + " --device default_internal_speaker";
    const std::pair<std::string, std::string> cases[] = {
            {kSmall,
             "line 29     tuning wide 'n' low: endpoint speaker, mono false, output_channels 4, "
             "orientation 0\n"},
            {speaker, "\n    ieid         3  intelligent equalizer preset id  line 5\n"},
            {speaker,
             "    iebs       [5]  intelligent equalizer bands: count, frequencies, targets"
             "  line 7\n"
             "          frequency           100   1000\n"
             "          target              -16     32\n"},
            {speaker, "    ieon         0  intelligent equalizer enable  default\n"},
            {speaker, "    iea          7  intelligent equalizer amount  line 21\n"},
            {speaker, "    plb  no values  calibration boost  absent\n"},
            {speaker,
             "    vbm          3  virtual bass mode, 0 when switched off  lines 25, 33\n"
             "    vbon         2  virtual bass type  version rule\n"},
            {speaker, "    hpon         0  hearing protection enable  version rule\n"},
            {speaker,
             "mix matrix\n                    line 24; default\n"
             "          virtualizer_enable 1, endpoint speaker, orientation 1, output_mix_matrix "
             "15, 24, 16384, 0,\n"
             "          0, 16384, 11583, 11583, 8192, 8192, 16384, "},
            {kSmall + " --profile 1 --device all_devices",
             "    gebs       [3]  graphic equalizer bands: count, frequencies, gains  line 15\n"},
            {wide,
             "\n                    lines 29, 34, 35, 36, 37, 38\n"
             "          channels 4\n"
             "          left                  1      2\n"
             "          right                 3      4\n"
             "          left_surround         5      6\n"
             "          right_surround        7      8\n"},
            {wide,
             "\n                    lines 29, 39\n"
             "          channels 4\n"
             "          frequency            50\n"
             "          gain_l                1\n"
             "          gain_r                2\n"
             "          gain_ls               3\n"
             "          gain_rs               4\n"},
            {wide, "    bmde         0  bass mbdrc enable  version rule\n"},
            {speaker + " --json", R"(
            {
              "parameter": "virtual_bass_mode",
              "origin": "line",
              "line": 33
            })"},
            {speaker + " --json", R"(
          "structure": {
            "bands": [
              {
                "frequency": 100,
                "target": -16
              },)"},
            {"--list movie", "built-in list movie: 27 entries\n"},
            {speaker + " --parameter ieq_target",
             "          ieq_target: line 7: <ieq-bands>; included in line 22: <include "
             "preset=\"warm\"/>\n"},
            {speaker + " --code hpon", "profile 1 movie: 1 entry\n"},
            {speaker + " --code hpon",
             "          hearing_protection_enable: version rule of format 3.2.2\n"},
            {speaker + " --code vbm --json",
             "\"why\": \"line 33: <virtual-bass-mode value=\\\"3\\\"/>\""},
    };
    for (const auto& [arguments, text] : cases) {
        const auto [status, output] = run("show " + arguments);
        EXPECT_EQ(status, 0) << arguments;
        EXPECT_THAT(output, HasSubstr(text));
    }
}

TEST(DiffTest, ComparesListsOrDocuments) {
    // Only a graphic equalizer with 20 bands is sent, and order makes no difference.
    const std::tuple<std::string, int, std::string> cases[] = {
            {kSmall + ' ' + kSmall, 0, "no differences\n"},
            {kSmall + ' ' + kChanged, 1, R"(profile 1
  speaker
    iebs  [5]  intelligent equalizer bands: count, frequencies, targets
          target at 1000 Hz: 32 -> 48
          line 7 -> line 7
    vbm  3 -> 1  virtual bass mode, 0 when switched off
          lines 25, 33 -> lines 24, 34
tuning device internal_speaker_night
  38 values only in NEW
40 differences
)"},
            {"--document " + kChanged + ' ' + kSmall, 1, R"(geq preset of profile 1
    geq_gain  9 -> 8
          line 13 -> line 13
ieq preset 3
    ieq_target  [2]
          value 2: 48 -> 32
          line 5 -> line 5
tuning device internal_speaker_night
  3 values only in OLD
tuning wide 'n' low
    virtual_bass_mode  1 -> 3
          line 29 -> line 29
6 differences
)"},
    };
    for (const auto& [arguments, expected, text] : cases) {
        EXPECT_EQ(run("diff " + arguments), std::make_pair(expected, text));
    }
}

using Json = nlohmann::json;

/** The tool's JSON output; a discarded value if it is not JSON. */
Json jsonOf(const std::string& arguments) {
    return Json::parse(run("2>/dev/null " + arguments).second, nullptr, false);
}

const std::string kScript = "apply " + kChanged + R"( --json --script - <<'END'
device-proc deon, dom
tuning internal_speaker=internal_speaker_night
END)";

const std::string kCheck =
        "check --json " + kSmall + " " ORMEL_EXAMPLES "/../tests/check/misspelt-boolean.xml";

TEST(JsonTest, PrintsEachCommandsData) {
    const std::tuple<std::string, std::string, Json> cases[] = {
            {"diff --json --document " + kChanged + ' ' + kSmall, "/differences", R"([
    {"in": "geq preset of profile 1", "parameter": "geq_gain", "a": [9], "b": [8],
     "aLines": [13], "bLines": [13]},
    {"in": "ieq preset 3", "parameter": "ieq_target", "a": [-16, 48], "b": [-16, 32],
     "aLines": [5], "bLines": [5]},
    {"in": "tuning device internal_speaker_night", "parameter": "port",
     "a": "internal_speaker", "b": null, "aLines": [31], "bLines": []},
    {"in": "tuning device internal_speaker_night", "parameter": "selected",
     "a": "false", "b": null, "aLines": [31], "bLines": []},
    {"in": "tuning device internal_speaker_night", "parameter": "tuning",
     "a": "wide 'n' low", "b": null, "aLines": [31], "bLines": []},
    {"in": "tuning wide 'n' low", "parameter": "virtual_bass_mode", "a": [1], "b": [3],
     "aLines": [29], "bLines": [29]}])"_json},
            {"diff --json " + kSmall + ' ' + kChanged, "/a", kSmall},
            {"diff --json " + kSmall + ' ' + kChanged, "/b", kChanged},
            {"diff --json " + kSmall + ' ' + kChanged, "/differences/0", R"(
    {"in": "profile 1", "device": "speaker", "code": "iebs",
     "meaning": "intelligent equalizer bands: count, frequencies, targets",
     "a": [2, 100, 1000, -16, 32], "b": [2, 100, 1000, -16, 48],
     "aLines": [7], "bLines": [7]})"_json},
            {kScript, "/file", kChanged},
            {kScript, "/operations/0", R"json(
    {"operation": "setDeviceProcParams(deon, dom)", "calls": [], "returned": null})json"_json},
            {kScript, "/operations/1/operation",
             "setSelectedTuningDevice(internal_speaker, internal_speaker_night)"},
            {kScript, "/operations/1/returned", 0},
            // Nothing is set yet, so the read fails; -2 is ENOENT.
            {kScript, "/operations/1/calls/0", R"(
    {"call": "read", "device": "speaker", "deviceId": 2, "code": "dom",
     "meaning": "output mode: virtualizer enable, endpoint, orientation, mix matrix",
     "values": [], "status": -2})"_json},
            {kScript, "/operations/1/calls/2", R"(
    {"call": "set", "device": "speaker", "deviceId": 2, "code": "aobs",
     "meaning": "audio optimizer bands: count, channels, frequencies, gains by channel",
     "values": [1, 4, 50, 1, 2, 3, 4], "status": 0})"_json},
            {kScript, "/operations/1/calls/39", R"(
    {"call": "commit", "device": "all devices", "deviceId": 1073741824, "status": 0})"_json},
            {kCheck, "/files/0/file", kSmall},
            {kCheck, "/files/0/errors", 1},
            {kCheck, "/files/0/warnings", 4},
            {kCheck, "/files/1/findings/1", R"(
    {"line": 10, "severity": "error", "id": "misspelt-boolean",
     "element": "bass-extraction-enable", "attribute": "value",
     "what": "\"no\" reads as 0; write false",
     "remedy": "Write true or false, in lower case and without blanks."})"_json},
            {kCheck, "/checked", 2},
            {kCheck, "/errors", 5},
            {kCheck, "/warnings", 4},
            {"check --json --explain repeated-tuning", "", R"(
    {"id": "repeated-tuning", "severity": "error",
     "sentence": "Two tunings have the same name. The devices of both get the first one.",
     "remedy": "Give each tuning a name of its own."})"_json},
    };
    for (const auto& [arguments, place, expected] : cases) {
        const Json json = jsonOf(arguments).value(Json::json_pointer(place), Json());
        EXPECT_EQ(json, expected) << arguments << ' ' << place;
    }
}

TEST(JsonTest, ListsTheSameRulesAsTheText) {
    std::string text;
    for (const Json& rule : jsonOf("check --rules --json")) {
        EXPECT_EQ(rule.size(), 4U);
        text += "- `" + rule.value("id", "") + "` (" + rule.value("severity", "") +
                "): " + rule.value("sentence", "") + ' ' + rule.value("remedy", "") + '\n';
    }
    EXPECT_EQ(run("check --rules"), std::make_pair(0, text));
}

TEST(PlotTest, DrawsTheCurves) {
    const std::string directory = ::testing::TempDir() + "ormel-plot";
    std::filesystem::create_directory(directory);
    const std::string picture = directory + "/curves.svg";
    const std::string program = directory + "/gnuplot";
    // A stand-in for gnuplot that copies its input to the picture.
    std::ofstream(program) << "#!/bin/sh\nexec /bin/cat\n";
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    ::setenv("PATH", directory.c_str(), 1);
    EXPECT_EQ(run("plot " + kSmall + " -o " + picture), std::make_pair(0, std::string()));
    std::ifstream file(picture);
    const std::string drawn(std::istreambuf_iterator<char>(file), {});
    for (const char* const text : {
                 "title 'small.xml, values in the effect''s own units' noenhanced\n",
                 "$curve0 << EOD\n100 -16\n1000 32\nEOD\n",
                 "linecolor rgb '#8c8c8c' dashtype 1 linewidth 2 pointtype 7 pointsize 0.5 title "
                 "'speaker, off'\n",
                 "'graphic_equalizer_enable: speaker absent, headphone absent; not sent, since it "
                 "has 1 band'",
                 "set title 'wide ''n'' low: audio optimizer gains'.\"\\n\"."
                 "'audio_optimizer_enable: absent' noenhanced\n",
                 "set title 'wide ''n'' low: complex equalizer'.\"\\n\"."
                 "'complex_equalizer_enable: 1' noenhanced\n",
                 "$curve3 << EOD\n50 4\nEOD\n",
                 "$curve3 << EOD\n1 7\n2 8\nEOD\n",
                 "set logscale x\nset xlabel 'Frequency (Hz)'\n",
                 "unset logscale x\nset xlabel 'Place in the list'\n",
                 "set ylabel 'Target'\nset yrange []\n",
                 "\nplot [20:20000] $curve0 using ($1 > 0 ? $1 : NaN):2 with linespoints",
         }) {
        EXPECT_THAT(drawn, HasSubstr(text));
    }
    // Without thresholds, there is no picture of them.
    EXPECT_THAT(drawn, ::testing::Not(HasSubstr("regulator")));

    EXPECT_EQ(run("plot --same-scale " + kSmall + " --against " + kChanged + " -o " + picture),
              std::make_pair(0, std::string()));
    std::ifstream comparison(picture);
    const std::string compared(std::istreambuf_iterator<char>(comparison), {});
    for (const char* const text : {
                 "; thin lines, old: changed.xml' noenhanced\n",
                 "$curve1 << EOD\n100 -16\n1000 48\nEOD\n",
                 // From -16 to 48, plus a twentieth of that range and 1 on each side.
                 "set yrange [-20:52]\n",
                 "with lines linecolor rgb '#8c8c8c' dashtype 1 linewidth 1 title 'speaker, old, "
                 "off'\n",
         }) {
        EXPECT_THAT(compared, HasSubstr(text));
    }

    // Without a gain the one band is none.
    EXPECT_EQ(run("plot --against " + kSmall + " -o " + picture +
                  " - <<END\n$(/bin/sed 's/ gain=\"8\"//' " + kSmall + ")\nEND"),
              std::make_pair(0, std::string()));
    std::ifstream incomplete(picture);
    EXPECT_THAT(std::string(std::istreambuf_iterator<char>(incomplete), {}),
                HasSubstr("; not sent, since it has 0 bands; old: "));
    std::filesystem::remove_all(directory);
    EXPECT_EQ(run("plot " + kSmall + " -o " + picture),
              std::make_pair(2, std::string("ormel-tuning: drawing needs gnuplot, which is not "
                                            "installed; install Debian's gnuplot-nox\n")));
}

TEST(ReportTest, HasVerdictChangesFindingsAndValues) {
    const std::string page = ::testing::TempDir() + "ormel-report.html";
    const auto pageOf = [&page](const std::string& arguments) {
        EXPECT_EQ(run("report " + arguments + " -o " + page), std::make_pair(0, std::string()));
        std::ifstream file(page);
        return std::string(std::istreambuf_iterator<char>(file), {});
    };
    const std::string examples = ORMEL_EXAMPLES "/";
    const std::string markup = ORMEL_EXAMPLES "/../tests/tools/markup.xml";
    const std::tuple<std::string, std::vector<std::string>, std::vector<std::string>> cases[] = {
            {examples + "faulty.xml --against " + examples + "tablet-quad.xml",
             {"3 errors and 0 warnings. The effect gets other values in 2 of 8 lists.",
              "<a href=\"#list-2\">profile 1 movie</a>: 2 of ",
              " values change: dom for speaker; gebs for all devices.",
              "<a href=\"#line-361\">line 361</a>: <code>&lt;virtualizer-enable&gt; value</code>",
              "<span class=\"number\">361</span><span class=\"line\">            "
              "&lt;virtualizer-enable value=&quot;True&quot;/&gt;</span>",
              "virtualizer_enable <del>1</del> <ins>0</ins>",
              "Not sent: 20 bands take 41 values, and it has 39.",
              "<td class=\"value\">1</td><td class=\"value\">0</td>"},
             {}},
            {kSmall,
             {"Format 3.2.2.", "<small>virtual_bass_enable</small>",
              "version rule <small>hearing_protection_enable</small>"},
             {"<del>", "<ins>", "Old</th>"}},
            {kChanged + " --against " + kSmall,
             {"tuning device internal_speaker_night</a>: New, with 38 values."},
             {}},
            {markup,
             {"profile 1 &lt;/title&gt;&lt;script&gt;stolen=1&lt;/script&gt;{{{svg}}}</h3>",
              "tuning device &lt;iframe src=&quot;javascript:stolen=1&quot;&gt;</h3>"},
             {"<script", "<iframe", "<img", "</title><", "href=\"http", " src=\""}},
            {ORMEL_EXAMPLES "/../tests/check/not-well-formed.xml",
             {"The library does not read this document.", "<article class=\"finding error\""},
             {"<table"}},
    };
    for (const auto& [arguments, texts, absent] : cases) {
        const std::string content = pageOf(arguments);
        for (const std::string& text : texts) {
            EXPECT_NE(content.find(text), std::string::npos) << arguments << ": " << text;
        }
        for (const std::string& text : absent) {
            EXPECT_EQ(content.find(text), std::string::npos) << arguments << ": " << text;
        }
    }
}

}  // namespace
