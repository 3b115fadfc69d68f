#include "DocumentObjects.h"

#include <map>
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
    void add(const Object& object, const std::string& title, Json fields) {
        const int count = ++mCounts[title];
        mObjects.push_back({count == 1 ? title : title + " (" + std::to_string(count) + ")",
                            mTrace.lineOf(object), std::move(fields), parametersOf(object)});
    }

    void addHeader(Json fields) { mObjects.push_back({"document", 0, std::move(fields), nullptr}); }

    std::vector<DocumentObject> take() { return std::move(mObjects); }

  private:
    static const ParameterValues* parametersOf(const ParameterValues& object) { return &object; }
    static const ParameterValues* parametersOf(const DeviceTuning& /* object */) { return nullptr; }

    const ReadTrace& mTrace;
    std::map<std::string, int> mCounts;
    std::vector<DocumentObject> mObjects;
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

std::vector<DocumentObject> objectsOf(const LoadedDocument& document) {
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
