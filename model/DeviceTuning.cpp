#include <ormel/DeviceTuning.h>

#include <utility>

#include "DumpText.h"

namespace ormel {

DeviceTuning::DeviceTuning(std::string device, std::string port, std::string tuning)
    : DeviceTuning(-1, std::move(device), std::move(port), std::move(tuning)) {}

DeviceTuning::DeviceTuning(long long id, std::string device, std::string port, std::string tuning)
    : mId(id),
      mDevice(std::move(device)),
      mPort(std::move(port)),
      mTuning(std::move(tuning)),
      mDirty(true) {}

std::string DeviceTuning::toString() const {
    return dumpLine("id", mId) + dumpLine("device", mDevice) + dumpLine("port", mPort) +
           "tuning=" + mTuning;
}

}  // namespace ormel
