#include "LoadedDocument.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <set>
#include <stdexcept>
#include <type_traits>
#include <utility>

#include "text/Files.h"
#include "text/Names.h"
#include "text/Progress.h"
#include "text/Text.h"

namespace ormel::tools {

namespace {

/** By priority. */
constexpr const char* kLevels[] = {"unknown", "default", "verbose", "debug",
                                   "info",    "warning", "error",   "fatal"};

int32_t sLowestPriority = ANDROID_LOG_SILENT;

void logMessage(const __android_logger_data* data, const char* message) {
    if (data->priority >= sLowestPriority) {
        const char* const level =
                kLevels[std::clamp<int32_t>(data->priority, 0, ANDROID_LOG_FATAL)];
        // Where standard error is gone, there is nobody left to tell.
        (void)std::fprintf(stderr, "%s %s: %s\n", level, data->tag == nullptr ? "" : data->tag,
                           message);
    }
}

bool isSelected(const DeviceTuning& binding, SpatializerParamArray& store) {
    return std::any_of(kSupportedPorts.begin(), kSupportedPorts.end(), [&](Port port) {
        return binding.getPort() == kPortNames[port] &&
               binding.getDevice() == store.getSelectedTuningDevice(port);
    });
}

}  // namespace

std::string titleOf(const EffectList& list) {
    constexpr const char* kKinds[] = {"profile ", "tuning device ", "built-in list "};
    const bool isProfile = list.kind == EffectList::Kind::PROFILE;
    return kKinds[static_cast<size_t>(list.kind)] +
           (isProfile ? std::to_string(list.profile) + ' ' : "") + printable(list.name);
}

std::vector<EffectList> builtInLists(SpatializerParamArray& store) {
    std::vector<EffectList> lists;
    const auto last = static_cast<OrmSpatializerProfileId>(profileNames().size());
    for (OrmSpatializerProfileId profile = ORM_SPATIALIZER_PROFILE_COMMON; profile < last;
         ++profile) {
        std::vector<int32_t> words(store.getProfileParamsSize(profile) / sizeof(int32_t));
        store.getProfileParams(profile, words.data());
        lists.push_back(
                {EffectList::Kind::BUILT_IN, profile, profileText(profile), entriesOf(words)});
    }
    return lists;
}

void setLibraryLog(android_LogPriority lowest) {
    sLowestPriority = lowest;
    __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
    __android_log_set_logger(logMessage);
}

LoadedDocument::LoadedDocument(std::string file) : mFile(std::move(file)) {
    const ProgressStep step("reading " + mFile);
    setLibraryLog(ANDROID_LOG_SILENT);
    mStore = std::make_unique<SpatializerParamArray>(SpatializerParamArray::Empty());
    const std::string text = readDocument(mFile);
    const XmlErrorScope errors;
    mElements = std::make_unique<XmlElements>(text);
    if (!mElements->isReadable()) {
        throw std::runtime_error(mFile +
                                 (text.empty() ? ": the document is empty" : errors.first()));
    }
    mTrace = std::make_unique<ReadTrace>(mFile, text, *mElements);
    if (mStore->loadSpatializerXMLText(text) != SpatializerParamArray::LoadOutcome::LOADED) {
        throw std::runtime_error(
                mFile + ": cannot be loaded as a tuning document: " + mStore->getLoadError());
    }
}

std::vector<EffectList> LoadedDocument::lists() const {
    std::vector<EffectList> lists;
    std::set<int> ids;
    for (const Profile* const profile : objects().getProfiles()) {
        const int id = profile->getProfileId();
        if (ids.insert(id).second) {
            lists.push_back({EffectList::Kind::PROFILE, id, profile->getName(),
                             entriesOf(mStore->getXMLProfileParams(id))});
        }
    }
    std::set<std::string> devices;
    for (const DeviceTuning* const tuning : objects().getDeviceTunings()) {
        const std::string device = tuning->getDevice();
        if (mStore->isXMLTuningValid(device) && devices.insert(device).second) {
            lists.push_back({EffectList::Kind::TUNING, ORM_SPATIALIZER_PROFILE_COMMON, device,
                             entriesOf(mStore->getXMLTuningParams(device))});
        }
    }
    return lists;
}

Json objectsOf(const LoadedDocument& document) {
    const DeviceData& objects = document.objects();
    Json all = Json::array();
    all.push_back({{"object", "document"},
                   {"format_version", objects.getFormatVersion()},
                   {"tool_version", objects.getToolVersion()},
                   {"device_name", objects.getDeviceName()},
                   {"device_index", objects.getDeviceIndex()},
                   {"tuning_version", objects.getTuningVersion()},
                   {"altivo_game_system_gain", objects.getAltivoGameSystemGain()},
                   {"output_channels", document.store().getOutputChannelCount()}});
    std::map<std::string, int> counts;
    const auto add = [&](const auto& object, const std::string& title, const Json& fields) {
        const int count = ++counts[title];
        Json& json = all.emplace_back();
        json["object"] = count == 1 ? title : title + " (" + std::to_string(count) + ")";
        if (const long line = document.trace().lineOf(&object); line != 0) {
            json["line"] = line;
        }
        json.update(fields);
        if constexpr (std::is_base_of_v<ParameterValues, std::decay_t<decltype(object)>>) {
            json["values"] = Json::object();
            for (const auto& [param, values] : object.getValues()) {
                json["values"][parameterName(param)] = values;
            }
        }
    };
    for (const IeqPreset* const preset : objects.getIeqPresets()) {
        add(*preset, "ieq preset " + std::to_string(preset->getPresetId()),
            {{"name", preset->getName()}});
    }
    for (const GeqPreset* const preset : objects.getGeqPresets()) {
        add(*preset, "geq preset of profile " + std::to_string(preset->getProfileId()),
            Json::object());
    }
    for (const Profile* const profile : objects.getProfiles()) {
        add(*profile, "profile " + std::to_string(profile->getProfileId()),
            {{"name", profile->getName()},
             {"mobility", profile->isMobility()},
             {"selected_geq_preset", profile->getSelectedGeqPreset()}});
    }
    for (const ProfileEndpoint* const endpoint : objects.getProfileEndpoints()) {
        add(*endpoint,
            "profile " + std::to_string(endpoint->getProfileId()) + ", endpoint " +
                    endpointName(endpoint->getEndpoint()),
            {{"selected_ieq_preset", endpoint->getSelectedIeqPreset()}});
    }
    for (const Tuning* const tuning : objects.getTunings()) {
        add(*tuning, "tuning " + tuning->getName(),
            {{"endpoint", endpointName(tuning->getEndpoint())}, {"mono", tuning->isMono()}});
    }
    for (const DeviceTuning* const binding : objects.getDeviceTunings()) {
        add(*binding, "tuning device " + binding->getDevice(),
            {{"port", binding->getPort()},
             {"tuning", binding->getTuning()},
             {"selected", isSelected(*binding, document.store())}});
    }
    return all;
}

OrmSpatializerProfileId profileOf(const LoadedDocument& document, const std::string& text) {
    const OrmSpatializerProfileId id = profileOf(text);
    std::vector<std::string> others;
    for (const Profile* const profile : document.objects().getProfiles()) {
        if (profile->getProfileId() == id) {
            return id;
        }
        others.push_back(profileText(profile->getProfileId()));
    }
    throw std::runtime_error(document.file() + ": no profile " + profileText(id) + "; it has " +
                             (others.empty() ? "none" : joined(others, ", ")));
}

}  // namespace ormel::tools
