// Uses the library from a static initialiser that runs before all of the library's own: this file
// is linked ahead of the library's objects, and initialisers run in that order.
#include <ormel/SpatializerParamArray.h>
#include <ormel/SpatializerParamCache.h>
#include <ormel/TuningFileParser.h>

#include "support/RecordingEffect.h"

namespace ormel::test {
namespace {

// Of a reference that refers to nothing yet, which the compiler takes for impossible.
bool isNull(const void* volatile referred) {
    return referred == nullptr;
}

struct EarlyUse {
    EarlyUse() : ranFirst(isNull(&SetterCollection::kAllValueSetters)) {
        SpatializerParamArray::getInstance().loadSpatializerXMLFile(ORMEL_EXAMPLES
                                                                    "/tablet-quad.xml");
        SpatializerParamCache().setProfile(ORM_SPATIALIZER_PROFILE_MOVIE, &effect, false);
    }

    bool ranFirst;
    RecordingEffect effect;
};

const EarlyUse kEarlyUse;

}  // namespace
}  // namespace ormel::test

int main() {
    using namespace ormel::test;
    RecordingEffect late;
    ormel::SpatializerParamCache().setProfile(ormel::ORM_SPATIALIZER_PROFILE_MOVIE, &late, false);
    const bool sameCalls = kEarlyUse.effect.calls == late.calls && late.calls.size() == 134;
    return kEarlyUse.ranFirst && sameCalls ? 0 : 1;
}
