// The operations of the front on a store of the caller's choice.
#pragma once

#include <ormel/IEffectOrm.h>
#include <ormel/SpatializerParamArray.h>

#include <cstdint>
#include <string>
#include <vector>

namespace ormel {

/**
 * Does on any store what SpatializerParamCache does on the process's, operation by operation, for
 * tools and tests. What the contract there says of the process's store is said of this one.
 */
class StoreFront {
  public:
    /** @param store must outlive this */
    explicit StoreFront(SpatializerParamArray& store) : mStore(store) {}

    int32_t setProfile(OrmSpatializerProfileId profile, IEffectOrm* effect, bool isOrmelContent);
    void setOrmelContentProfile(OrmSpatializerProfileId profile, IEffectOrm* effect);
    int32_t loadTuning(IEffectOrm* effect);
    int32_t loadTuningDevice(const std::string& device, IEffectOrm* effect);
    int32_t setSelectedTuningDevice(int port, const std::string& device, IEffectOrm* effect);
    int32_t setProfileGeqGains(const std::vector<int32_t>& gains, IEffectOrm* effect);
    std::vector<int32_t>& getProfileGeqGains();
    bool isTuningAvailable();

  private:
    SpatializerParamArray& mStore;
};

}  // namespace ormel
