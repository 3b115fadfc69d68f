#include <kivparamstorage/KivParamStore.h>
#include <ormel/SpatializerParamCache.h>

#include <algorithm>
#include <functional>
#include <iomanip>
#include <iostream>
#include <iterator>
#include <memory>
#include <optional>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "Commands.h"
#include "document/AppliedLists.h"
#include "document/LoadedDocument.h"
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

/** One step: how it reads, and what it does. It returns the front's status, or null for none. */
struct Operation {
    std::string text;
    std::function<Json(IEffectOrm*)> run;
};

/** The first word of a trimmed text, and the rest without the blanks between. */
std::pair<std::string, std::string> splitWord(const std::string& text) {
    const size_t end = std::min(text.find_first_of(kBlanks), text.size());
    return {text.substr(0, end), std::string(trimmed(text.substr(end)))};
}

/** The parts of a text between commas, without the blanks around them. */
std::vector<std::string> partsOf(const std::string& text) {
    std::vector<std::string> parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, ',');) {
        parts.emplace_back(trimmed(part));
    }
    return parts;
}

// These throw std::runtime_error for what cannot be done. The process's store has the document
// already, since it says which tuning devices there are.

Operation profileOperation(const std::string& arguments) {
    const auto [profile, content] = splitWord(arguments);
    const bool isOrmelContent = content == "ormel-content";
    if (!content.empty() && !isOrmelContent) {
        throw std::runtime_error("'" + content + "' after the profile is not 'ormel-content'");
    }
    const OrmSpatializerProfileId id = profileOf(profile);
    return {"setProfile(" + profileText(id) +
                    ", isOrmelContent=" + (isOrmelContent ? "true" : "false") + ")",
            [id, isOrmelContent](IEffectOrm* effect) {
                return SpatializerParamCache().setProfile(id, effect, isOrmelContent);
            }};
}

Operation tuningOperation(const std::string& choice) {
    const size_t equals = choice.find('=');
    if (equals == std::string::npos) {
        throw std::runtime_error("'" + choice + "' is not PORT=DEVICE");
    }
    const Port port = portOf(choice.substr(0, equals));
    const std::string device = choice.substr(equals + 1);
    SpatializerParamArray& store = SpatializerParamArray::getInstance();
    if (!store.isValidTuningDevice(port, device)) {
        const std::string available = store.getAvailableTuningDevices(port);
        throw std::runtime_error("unknown tuning device '" + device + "'; port " +
                                 kPortNames[port] + " has " +
                                 (available.empty() ? "none" : available));
    }
    return {std::string("setSelectedTuningDevice(") + kPortNames[port] + ", " + device + ")",
            [port, device](IEffectOrm* effect) {
                return SpatializerParamCache().setSelectedTuningDevice(port, device, effect);
            }};
}

Operation geqOperation(const std::string& gains) {
    std::vector<int32_t> values;
    for (const std::string& part : partsOf(gains)) {
        const std::optional<int32_t> number = integerOf(part);
        if (!number.has_value()) {
            throw std::runtime_error("'" + part + "' is not an integer of 32 bits");
        }
        values.push_back(*number);
    }
    return {"setProfileGeqGains(" + listText(values) + ")", [values](IEffectOrm* effect) {
                return SpatializerParamCache().setProfileGeqGains(values, effect);
            }};
}

Operation deviceProcOperation(const std::string& codes) {
    const std::vector<std::string> letters = partsOf(codes);
    std::set<int> set;
    std::transform(letters.begin(), letters.end(), std::inserter(set, set.end()), codeOf);
    return {"setDeviceProcParams(" + joined(letters, ", ") + ")", [set](IEffectOrm* /* effect */) {
                android::Singleton<KivParamStore>::getInstance().setDeviceProcParams(set);
                return nullptr;
            }};
}

Operation loadTuningOperation(const std::string& arguments) {
    if (!arguments.empty()) {
        throw std::runtime_error("'" + arguments + "' after load-tuning, which takes no arguments");
    }
    return {"loadTuning()",
            [](IEffectOrm* effect) { return SpatializerParamCache().loadTuning(effect); }};
}

/** A line of a script is a word and its arguments, which options of that name take as well. */
struct OperationRow {
    const char* word;
    const char* arguments;
    Operation (*make)(const std::string& arguments);
};

constexpr OperationRow kOperations[] = {
        {"profile", " PROFILE [ormel-content]", profileOperation},
        {"tuning", " PORT=DEVICE", tuningOperation},
        {"geq", " GAINS", geqOperation},
        {"device-proc", " CODES", deviceProcOperation},
        {"load-tuning", "", loadTuningOperation},
};

/**
 * The operations of a script, one a line; blank lines and those that begin with # are none. Errors
 * begin with the script's name and the line's number.
 */
std::vector<Operation> readScript(const std::string& file) {
    std::vector<std::string> words;
    for (const OperationRow& row : kOperations) {
        words.emplace_back(row.word);
    }
    std::istringstream script(readDocument(file));
    std::vector<Operation> operations;
    std::string text;
    for (int line = 1; std::getline(script, text); ++line) {
        const auto [word, arguments] = splitWord(std::string(trimmed(text)));
        if (word.empty() || word.front() == '#') {
            continue;
        }
        try {
            const OperationRow& row = kOperations[indexOf(word, "operation", words)];
            operations.push_back(row.make(arguments));
        } catch (const std::runtime_error& error) {
            throw std::runtime_error((file == "-" ? "stdin" : file) + ":" + std::to_string(line) +
                                     ": " + error.what());
        }
    }
    return operations;
}

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

std::vector<Operation> planOf(const ApplyOptions& options) {
    if (!options.script.empty()) {
        return readScript(options.script);
    }
    std::vector<Operation> plan;
    if (!options.deviceProc.empty()) {
        plan.push_back(deviceProcOperation(options.deviceProc));
    }
    for (const std::string& tuning : options.tunings) {
        plan.push_back(tuningOperation(tuning));
    }
    if (!options.gains.empty()) {
        plan.push_back(geqOperation(options.gains));
    }
    plan.push_back(
            profileOperation(options.profile + (options.ormelContent ? " ormel-content" : "")));
    plan.push_back(loadTuningOperation(""));
    return plan;
}

/** A single value stands before its meaning; a list below, and its length in its place. */
void printCall(const Json& call) {
    const std::string device = call["device"];
    if (!call.contains("code")) {
        std::cout << "  commit " << device << '\n';
        return;
    }
    const std::vector<int32_t> values = call["values"];
    std::string meaning = call["meaning"];
    if (call["status"] != 0) {
        meaning += "; failed with status " + call["status"].dump();
    }
    std::cout << "  " << std::left << std::setw(7) << call["call"].get<std::string>()
              << std::setw(17) << device << std::setw(5) << call["code"].get<std::string>()
              << std::right << std::setw(7) << (values.empty() ? "none" : valueText(values)) << "  "
              << wrapped(meaning, kMeaningColumn) << '\n';
    if (values.size() > 1) {
        std::cout << std::string(kListColumn, ' ') << wrapped(listText(values), kListColumn)
                  << '\n';
    }
}

void print(const Json& outcome) {
    std::cout << outcome["operation"].get<std::string>() << '\n';
    for (const Json& call : outcome["calls"]) {
        printCall(call);
    }
    std::cout << (outcome["calls"].empty() ? "  no calls\n" : "");
    if (!outcome["returned"].is_null()) {
        std::cout << "  returned " << outcome["returned"] << '\n';
    }
}

/**
 * Loads a document into the process's store, which SpatializerParamCache works on. Throws
 * std::runtime_error for one that cannot be loaded, and on a device that has one of its own.
 */
void loadForProcess(const std::string& file, android_LogPriority lowest) {
    using Outcome = SpatializerParamArray::LoadOutcome;
    setLibraryLog(ANDROID_LOG_SILENT);
    SpatializerParamArray& store = SpatializerParamArray::getInstance();
    if (store.getLoadOutcome() == Outcome::LOADED) {
        throw std::runtime_error(std::string(SpatializerParamArray::kDefaultTuningFile) +
                                 " is in use on this device and would mix with the document");
    }
    setLibraryLog(lowest);
    const std::string text = readDocument(file);
    // The library's messages name a document by its path.
    if (isFile(file)) {
        store.loadSpatializerXMLFile(file);
    } else {
        store.loadSpatializerXMLText(text);
    }
    if (store.getLoadOutcome() != Outcome::LOADED) {
        throw std::runtime_error(file + ": cannot be loaded as a tuning document: " +
                                 (text.empty() ? "it is empty" : store.getLoadError()));
    }
}

/** Unusable arguments or documents throw before anything is written. */
void runApply(const ApplyOptions& options) {
    if (options.profile.empty() == options.script.empty()) {
        throw std::runtime_error("one of --profile and --script is needed");
    }
    const bool hasProfile = options.script.empty();
    const OrmSpatializerProfileId profile = hasProfile ? profileOf(options.profile) : 0;
    const android_LogPriority lowest = options.verbose ? ANDROID_LOG_VERBOSE : ANDROID_LOG_WARN;
    loadForProcess(options.file, options.verbose ? lowest : ANDROID_LOG_SILENT);
    setLibraryLog(lowest);
    if (hasProfile) {
        // Gains go to the current profile.
        SpatializerParamArray::getInstance().setCurrentProfile(profile);
    }
    RecordingEffect effect;
    Json outcomes = Json::array();
    for (const Operation& operation : planOf(options)) {
        const Json returned = operation.run(&effect);
        const Json outcome = {{"operation", operation.text},
                              {"calls", effect.takeCalls()},
                              {"returned", returned}};
        if (options.json) {
            outcomes.push_back(outcome);
        } else {
            print(outcome);
        }
    }
    if (options.json) {
        printJson({{"file", options.file}, {"operations", std::move(outcomes)}}, std::cout);
    }
}

}  // namespace

void addApply(CLI::App& app, int& /* status */) {
    CLI::App* const command = app.add_subcommand(
            "apply", "Show every call that the effect gets for a tuning document");
    const auto options = std::make_shared<ApplyOptions>();
    command->add_option("FILE", options->file, "Tuning document")->required();
    command->add_option("--profile", options->profile,
                        "The profile to apply; the tunings are loaded after it: " +
                                joined(profileNames(), ", ") + ", or a number");
    command->add_flag("--ormel-content", options->ormelContent,
                      "Apply the profile as for the maker's own content");
    command->add_option("--tuning", options->tunings,
                        "First select a tuning device for a port; may be repeated")
            ->type_name("PORT=DEVICE")
            ->allow_extra_args(false);
    command->add_option("--geq", options->gains,
                        "First store graphic-equalizer gains, such as 0,16,-8; that returns -22, "
                        "since the effect has no bands yet, and setProfile then sends the gains")
            ->type_name("GAINS");
    command->add_option("--device-proc", options->deviceProc,
                        "Effect parameters that the document sets with --ormel-content too, such "
                        "as aoon,dom")
            ->type_name("CODES");
    CLI::Option* const script =
            command->add_option("--script", options->script,
                                "Run these operations instead, one per line; - is standard input")
                    ->type_name("FILE");
    command->add_flag("--verbose", options->verbose, "Print all messages of the library to stderr");
    command->add_flag("--json", options->json,
                      "{file, operations: [{operation, calls: [{call, device, deviceId, code, "
                      "meaning, values, status}], returned}]}");
    std::string forms;
    for (const OperationRow& row : kOperations) {
        forms += std::string("  ") + row.word + row.arguments + '\n';
    }
    command->footer("Operations of a script:\n" + forms + R"(
Examples:
  ormel-tuning apply examples/phone-multi-tuning.xml --profile music \
      --tuning bluetooth=bluetooth_car
  printf '%s\n' 'profile movie' 'geq 0,16,-8' 'profile custom' |
      ormel-tuning apply examples/tablet-quad.xml --script -)");
    command->callback([options, command, script] {
        for (const std::string step :
             {"--profile", "--ormel-content", "--tuning", "--geq", "--device-proc"}) {
            if (script->count() > 0 && command->count(step) > 0) {
                throw std::runtime_error("--script excludes " + step + "; see --help");
            }
        }
        runApply(*options);
    });
}

}  // namespace ormel::tools
