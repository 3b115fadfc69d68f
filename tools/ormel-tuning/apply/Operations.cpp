#include "Operations.h"

#include <kivparamstorage/KivParamStore.h>

#include <algorithm>
#include <iterator>
#include <set>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "text/Names.h"
#include "text/Text.h"

namespace ormel::tools {

namespace {

/** The first word of a trimmed text, and the rest without the blanks between. */
std::pair<std::string, std::string> splitWord(const std::string& text) {
    const size_t end = std::min(text.find_first_of(kBlanks), text.size());
    return {text.substr(0, end), std::string(trimmed(text.substr(end)))};
}

Operation makeProfile(const std::string& arguments) {
    const auto [profile, content] = splitWord(arguments);
    if (!content.empty() && content != "ormel-content") {
        throw std::runtime_error("'" + content + "' behind the profile is not 'ormel-content'");
    }
    return profileOperation(profile, !content.empty());
}

Operation makeLoadTuning(const std::string& arguments) {
    if (!arguments.empty()) {
        throw std::runtime_error("'" + arguments + "' behind load-tuning, which takes nothing");
    }
    return loadTuningOperation();
}

struct ScriptWord {
    const char* word;
    const char* arguments;
    Operation (*make)(const std::string& arguments);
};

constexpr ScriptWord kScriptWords[] = {
        {"profile", "PROFILE [ormel-content]", makeProfile},
        {"tuning", "PORT=DEVICE", tuningOperation},
        {"geq", "GAINS", geqOperation},
        {"device-proc", "CODES", deviceProcOperation},
        {"load-tuning", "", makeLoadTuning},
};

Operation makeOperation(const std::string& line) {
    const auto [word, arguments] = splitWord(line);
    std::vector<std::string> words;
    for (const ScriptWord& known : kScriptWords) {
        words.emplace_back(known.word);
    }
    return kScriptWords[indexOf(word, "operation", words)].make(arguments);
}

}  // namespace

Operation profileOperation(const std::string& profile, bool ormelContent) {
    const OrmSpatializerProfileId id = profileOf(profile);
    return {"setProfile(" + profileText(id) +
                    ", isOrmelContent=" + (ormelContent ? "true" : "false") + ")",
            [id, ormelContent](SpatializerParamCache& cache, IEffectOrm& effect) {
                return cache.setProfile(id, &effect, ormelContent);
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
        throw std::runtime_error("unknown tuning device '" + device + "' for port " +
                                 kPortNames[port] + "; there " +
                                 (available.empty() ? "is none" : "are " + available));
    }
    return {std::string("setSelectedTuningDevice(") + kPortNames[port] + ", " + device + ")",
            [port, device](SpatializerParamCache& cache, IEffectOrm& effect) {
                return cache.setSelectedTuningDevice(port, device, &effect);
            }};
}

Operation geqOperation(const std::string& gains) {
    const std::vector<int32_t> values = integersOf(gains);
    return {"setProfileGeqGains(" + listText(values) + ")",
            [values](SpatializerParamCache& cache, IEffectOrm& effect) {
                return cache.setProfileGeqGains(values, &effect);
            }};
}

Operation profileGeqOperation(const std::string& gains, const std::string& profile) {
    Operation operation = geqOperation(gains);
    const OrmSpatializerProfileId id = profileOf(profile);
    operation.run = [id, setGains = std::move(operation.run)](SpatializerParamCache& cache,
                                                              IEffectOrm& effect) {
        // Gains go to the current profile.
        SpatializerParamArray::getInstance().setCurrentProfile(id);
        return setGains(cache, effect);
    };
    return operation;
}

Operation deviceProcOperation(const std::string& codes) {
    const std::vector<std::string> letters = partsOf(codes);
    std::set<int> set;
    std::transform(letters.begin(), letters.end(), std::inserter(set, set.end()), codeOf);
    return {"setDeviceProcParams(" + joined(letters, ", ") + ")",
            [set](SpatializerParamCache& /* cache */, IEffectOrm& /* effect */) {
                android::Singleton<KivParamStore>::getInstance().setDeviceProcParams(set);
                return std::nullopt;
            }};
}

Operation loadTuningOperation() {
    return {"loadTuning()", [](SpatializerParamCache& cache, IEffectOrm& effect) {
                return cache.loadTuning(&effect);
            }};
}

std::vector<Operation> readScript(std::istream& script, const std::string& name) {
    std::vector<Operation> operations;
    std::string text;
    for (int line = 1; std::getline(script, text); ++line) {
        const std::string operation(trimmed(text));
        if (operation.empty() || operation.front() == '#') {
            continue;
        }
        try {
            operations.push_back(makeOperation(operation));
        } catch (const std::runtime_error& error) {
            throw std::runtime_error(name + ":" + std::to_string(line) + ": " + error.what());
        }
    }
    return operations;
}

std::string scriptHelp() {
    std::ostringstream help;
    for (const ScriptWord& known : kScriptWords) {
        const char* const gap = *known.arguments == '\0' ? "" : " ";
        help << "  " << known.word << gap << known.arguments << '\n';
    }
    return help.str();
}

}  // namespace ormel::tools
