// The front operations on a store of the caller's choice.
#pragma once

#include <ormel/IEffectOrm.h>
#include <ormel/SpatializerParamArray.h>

#include <cstdint>
#include <string>
#include <vector>

namespace ormel {

/**
 * The operations of SpatializerParamCache that need a store, on any store, for tools and tests.
 * That contract applies with this store in place of the process's.
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
