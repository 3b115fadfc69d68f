// Checks what shows only when a caller is linked and run: caller and library share one store and
// one shared store, and the caller can derive from the library's classes.
#include <kivparamstorage/KivParamStore.h>
#include <ormel/KivEffect.h>
#include <ormel/SetParamCommand.h>
#include <ormel/SpatializerParamArray.h>
#include <ormel/SpatializerParamCache.h>
#include <ormel/TuningFileParser.h>

#include <cstdio>

namespace {

class CountingObserver : public ormel::TuningFileObserver {
  public:
    void onSection(const ormel::DocumentSection& /* section */) override { ++count; }
    int count = 0;
};

bool sharesTheStore() {
    using ormel::SpatializerParamArray;
    const int profile = ormel::ORM_SPATIALIZER_PROFILE_MUSIC;
    SpatializerParamArray::getInstance().setCurrentProfile(profile);
    SpatializerParamArray::getInstance().setProfileGeqGains(profile, {4, 2});
    return ormel::SpatializerParamCache().getProfileGeqGains() == std::vector<int32_t>{4, 2};
}

bool sharesTheSharedStore() {
    ormel::SetParamCommand command(0);
    command.add(ormel::VOL, 7);
    ormel::KivEffect effect(0, android::String16("caller"));
    command.execute(effect);
    return ormel::KivParamStore::getInstance().getCommitCount() == 1;
}

bool reportsToTheCallersObserver() {
    CountingObserver observer;
    ormel::TuningFileParser parser;
    parser.setObserver(&observer);
    return parser.setTuningFile("<d> <profile id='1'> </profile></d>", true) == 0 &&
           observer.count == 1;
}

}  // namespace

int main() {
    std::puts(ormel::SpatializerParamArray::kVersion);
    return (sharesTheStore() ? 0 : 1) + (sharesTheSharedStore() ? 0 : 2) +
           (reportsToTheCallersObserver() ? 0 : 4);
}
