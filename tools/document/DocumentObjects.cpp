#include "DocumentObjects.h"

#include <map>
#include <string>
#include <type_traits>
#include <utility>

#include "ReadTrace.h"

namespace ormel::tools {

namespace {

Json headerOf(const LoadedDocument& document) {
    const DeviceData& objects = document.objects();
    return {{"format_version", objects.getFormatVersion()},
            {"tool_version", objects.getToolVersion()},
            {"device_name", objects.getDeviceName()},
            {"device_index", objects.getDeviceIndex()},
            {"tuning_version", objects.getTuningVersion()},
            {"altivo_game_system_gain", objects.getAltivoGameSystemGain()},
            {"output_channels", document.store().getOutputChannelCount()}};
}

/** Numbers the objects of one title from the second on. */
class ObjectList {
  public:
    explicit ObjectList(const ReadTrace& trace) : mTrace(trace) {}

    template <typename Object>
    void add(const Object& object, const std::string& title, const Json& fields) {
        const int count = ++mCounts[title];
        Json& json = mObjects.emplace_back();
        json["object"] = count == 1 ? title : title + " (" + std::to_string(count) + ")";
        if (const long line = mTrace.lineOf(&object); line != 0) {
            json["line"] = line;
        }
        json.update(fields);
        if constexpr (std::is_base_of_v<ParameterValues, Object>) {
            json["values"] = Json::object();
            for (const auto& [param, values] : object.getValues()) {
                json["values"][parameterName(param)] = values;
            }
        }
    }

    void addHeader(const Json& fields) {
        mObjects.push_back({{"object", "document"}});
        mObjects.back().update(fields);
    }

    Json take() { return std::move(mObjects); }

  private:
    const ReadTrace& mTrace;
    std::map<std::string, int> mCounts;
    Json mObjects = Json::array();
};

bool isSelected(const DeviceTuning& binding, SpatializerParamArray& store) {
    for (const Port port : kSupportedPorts) {
        if (binding.getPort() == kPortNames[port]) {
            return store.getSelectedTuningDevice(port) == binding.getDevice();
        }
    }
    return false;
}

}  // namespace

Json objectsOf(const LoadedDocument& document) {
    const DeviceData& objects = document.objects();
    ObjectList list(document.trace());
    list.addHeader(headerOf(document));
    for (const IeqPreset* const preset : objects.getIeqPresets()) {
        list.add(*preset, "ieq preset " + std::to_string(preset->getPresetId()),
                 {{"name", preset->getName()}});
    }
    for (const GeqPreset* const preset : objects.getGeqPresets()) {
        list.add(*preset, "geq preset of profile " + std::to_string(preset->getProfileId()),
                 Json::object());
    }
    for (const Profile* const profile : objects.getProfiles()) {
        list.add(*profile, "profile " + std::to_string(profile->getProfileId()),
                 {{"name", profile->getName()},
                  {"mobility", profile->isMobility()},
                  {"selected_geq_preset", profile->getSelectedGeqPreset()}});
    }
    for (const ProfileEndpoint* const endpoint : objects.getProfileEndpoints()) {
        list.add(*endpoint,
                 "profile " + std::to_string(endpoint->getProfileId()) + ", endpoint " +
                         endpointName(endpoint->getEndpoint()),
                 {{"selected_ieq_preset", endpoint->getSelectedIeqPreset()}});
    }
    for (const Tuning* const tuning : objects.getTunings()) {
        list.add(*tuning, "tuning " + tuning->getName(),
                 {{"endpoint", endpointName(tuning->getEndpoint())}, {"mono", tuning->isMono()}});
    }
    for (const DeviceTuning* const binding : objects.getDeviceTunings()) {
        list.add(*binding, "tuning device " + binding->getDevice(),
                 {{"port", binding->getPort()},
                  {"tuning", binding->getTuning()},
                  {"selected", isSelected(*binding, document.store())}});
    }
    return list.take();
}

}  // namespace ormel::tools
