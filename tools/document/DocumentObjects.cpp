#include <algorithm>
#include <map>
#include <type_traits>

#include "LoadedDocument.h"

namespace ormel::tools {

namespace {

Json headerOf(const LoadedDocument& document) {
    const DeviceData& objects = document.objects();
    return {{"object", "document"},
            {"format_version", objects.getFormatVersion()},
            {"tool_version", objects.getToolVersion()},
            {"device_name", objects.getDeviceName()},
            {"device_index", objects.getDeviceIndex()},
            {"tuning_version", objects.getTuningVersion()},
            {"altivo_game_system_gain", objects.getAltivoGameSystemGain()},
            {"output_channels", document.store().getOutputChannelCount()}};
}

bool isSelected(const DeviceTuning& binding, SpatializerParamArray& store) {
    return std::any_of(kSupportedPorts.begin(), kSupportedPorts.end(), [&](Port port) {
        return binding.getPort() == kPortNames[port] &&
               binding.getDevice() == store.getSelectedTuningDevice(port);
    });
}

}  // namespace

Json objectsOf(const LoadedDocument& document) {
    const DeviceData& objects = document.objects();
    Json all = Json::array({headerOf(document)});
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

}  // namespace ormel::tools
