#include <ormel/DeviceData.h>

#include <utility>

namespace ormel {

void DeviceData::setFormatVersion(std::string version) {
    mFormatVersion = std::move(version);
}

void DeviceData::setToolVersion(std::string version) {
    mToolVersion = std::move(version);
}

void DeviceData::setDeviceName(std::string name) {
    mDeviceName = std::move(name);
}

void DeviceData::setSignature(std::string signature) {
    mSignature = std::move(signature);
}

void DeviceData::validateData() {
    for (ProfileEndpoint* const endpoint : mProfileEndpoints) {
        const std::vector<int>& ieqEnable = endpoint->getValues()[IEQ_ENABLE];
        if (!ieqEnable.empty() && ieqEnable.front() == 0) {
            endpoint->setSelectedIeqPreset(0);
        }
    }
}

}  // namespace ormel
