#include <iomanip>
#include <iostream>
#include <memory>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "Commands.h"
#include "Operations.h"
#include "document/AppliedLists.h"
#include "document/Store.h"
#include "text/Files.h"
#include "text/Json.h"
#include "text/Names.h"
#include "text/Text.h"

namespace ormel::tools {

void to_json(Json& json, const EffectCall& call) {
    constexpr const char* kKinds[] = {"set", "read", "commit"};
    json = {{"call", kKinds[static_cast<size_t>(call.kind)]},
            {"device", deviceText(call.device)},
            {"deviceId", call.device}};
    if (call.kind != EffectCall::Kind::COMMIT) {
        const auto [letters, meaning] = codeText(call.code);
        json["code"] = letters;
        json["meaning"] = meaning;
        json["values"] = call.values;
    }
    json["status"] = call.status;
}

namespace {

/** Where lists of values begin, and the meanings of parameters. */
constexpr size_t kListColumn = 32;
constexpr size_t kMeaningColumn = 40;

/** The command's arguments, as they stand on the command line. */
struct ApplyOptions {
    std::string file;
    std::string profile;
    std::string script;
    std::string gains;
    std::string deviceProc;
    bool ormelContent = false;
    /** "PORT=DEVICE" each. */
    std::vector<std::string> tunings;
    /** Whether all messages of the library are printed, not just warnings and errors. */
    bool verbose = false;
    bool json = false;
};

std::vector<Operation> readScriptFile(const std::string& file) {
    std::istringstream script(readDocument(file));
    return readScript(script, file == "-" ? "stdin" : file);
}

std::vector<Operation> planOf(const ApplyOptions& options) {
    if (!options.script.empty()) {
        return readScriptFile(options.script);
    }
    std::vector<Operation> plan;
    if (!options.deviceProc.empty()) {
        plan.push_back(deviceProcOperation(options.deviceProc));
    }
    for (const std::string& tuning : options.tunings) {
        plan.push_back(tuningOperation(tuning));
    }
    if (!options.gains.empty()) {
        plan.push_back(profileGeqOperation(options.gains, options.profile));
    }
    plan.push_back(profileOperation(options.profile, options.ormelContent));
    plan.push_back(loadTuningOperation());
    return plan;
}

/** A single value stands before its meaning; a list below, and its length in its place. */
void print(const EffectCall& call, std::ostream& out) {
    const std::string device = deviceText(call.device);
    if (call.kind == EffectCall::Kind::COMMIT) {
        out << "  commit " << device << '\n';
        return;
    }
    auto [letters, meaning] = codeText(call.code);
    if (call.status != 0) {
        meaning += "; failed with status " + std::to_string(call.status);
    }
    out << (call.kind == EffectCall::Kind::SET ? "  set    " : "  read   ") << std::left
        << std::setw(17) << device << std::setw(5) << letters << std::right << std::setw(7)
        << valueText(call.values) << "  " << wrapped(meaning, kMeaningColumn) << '\n';
    if (call.values.size() > 1) {
        out << std::string(kListColumn, ' ') << wrapped(listText(call.values), kListColumn) << '\n';
    }
}

/** What came of one operation. */
struct Outcome {
    std::string operation;
    std::vector<EffectCall> calls;
    std::optional<int32_t> status;
};

void print(const Outcome& outcome, std::ostream& out) {
    out << outcome.operation << '\n';
    for (const EffectCall& call : outcome.calls) {
        print(call, out);
    }
    out << (outcome.calls.empty() ? "  no calls\n" : "");
    if (outcome.status.has_value()) {
        out << "  returned " << *outcome.status << '\n';
    }
}

void to_json(Json& json, const Outcome& outcome) {
    json = {{"operation", outcome.operation}, {"calls", outcome.calls}};
    json["returned"] = outcome.status.has_value() ? Json(*outcome.status) : Json(nullptr);
}

/** Unusable arguments or documents throw before anything is written. */
void runApply(const ApplyOptions& options, std::ostream& out) {
    if (options.profile.empty() == options.script.empty()) {
        throw std::runtime_error("one of --profile and --script is needed");
    }
    if (options.script.empty()) {
        profileOf(options.profile);
    }
    const android_LogPriority lowest = options.verbose ? ANDROID_LOG_VERBOSE : ANDROID_LOG_WARN;
    loadForProcess(options.file, options.verbose ? lowest : ANDROID_LOG_SILENT);
    setLibraryLog(lowest);
    SpatializerParamCache cache;
    RecordingEffect effect;
    Json operations = Json::array();
    for (const Operation& operation : planOf(options)) {
        const std::optional<int32_t> status = operation.run(cache, effect);
        const Outcome outcome = {operation.text, effect.takeCalls(), status};
        if (options.json) {
            operations.push_back(outcome);
        } else {
            print(outcome, out);
        }
    }
    if (options.json) {
        printJson(Json{{"file", options.file}, {"operations", std::move(operations)}}, out);
    }
}

}  // namespace

void addApply(CLI::App& app) {
    CLI::App* const command = app.add_subcommand(
            "apply", "Show every call that a tuning document makes an effect get");
    const auto options = std::make_shared<ApplyOptions>();
    command->add_option("FILE", options->file, "Tuning document")->required();
    command->add_option("--profile", options->profile,
                        joined(profileNames(), ", ") + ", or a number");
    command->add_flag("--ormel-content", options->ormelContent,
                      "Apply the profile as for content in the maker's own encoding");
    command->add_option("--tuning", options->tunings,
                        "Select a tuning device for a port first; may be repeated")
            ->type_name("PORT=DEVICE")
            ->allow_extra_args(false);
    command->add_option("--geq", options->gains,
                        "Set the profile's graphic-equalizer gains first, as 0,16,-8")
            ->type_name("GAINS");
    command->add_option("--device-proc", options->deviceProc,
                        "Effect parameters that belong to the device processing, as aoon,dom; they "
                        "reach the effect whatever the content")
            ->type_name("CODES");
    CLI::Option* const script =
            command->add_option("--script", options->script,
                                "Do these operations instead, one a line; - reads standard input")
                    ->type_name("FILE");
    for (const char* const step :
         {"--profile", "--ormel-content", "--tuning", "--geq", "--device-proc"}) {
        script->excludes(command->get_option(step));
    }
    command->add_flag("--verbose", options->verbose, "Print all messages of the library to stderr");
    command->add_flag("--json", options->json,
                      "{file, operations: [{operation, calls: [{call, device, deviceId, code, "
                      "meaning, values, status}], returned}]}");
    command->footer(R"(Operations of a script:
)" + scriptHelp() + R"(
Examples:
  ormel-tuning apply examples/phone-multi-tuning.xml --profile music \
      --tuning bluetooth=bluetooth_car
  printf '%s\n' 'profile movie' 'geq 0,16,-8' 'profile custom' |
      ormel-tuning apply examples/tablet-quad.xml --script -)");
    command->callback([options] { runApply(*options, std::cout); });
}

}  // namespace ormel::tools
