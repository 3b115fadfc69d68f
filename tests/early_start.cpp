// Uses the library from a static initialiser that runs before all of the library's own: this file
// is linked before the library's objects, and initialisers run in link order.
#include <ormel/SpatializerParamArray.h>
#include <ormel/SpatializerParamCache.h>
#include <ormel/TuningFileParser.h>

#include <algorithm>
#include <tuple>
#include <vector>

#include "support/RecordingEffect.h"

namespace ormel::test {
namespace {

// Whether a reference is not yet bound. The compiler assumes that this cannot be.
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

bool isSame(const Call& a, const Call& b) {
    return std::tie(a.what, a.device, a.code, a.values) ==
           std::tie(b.what, b.device, b.code, b.values);
}

}  // namespace
}  // namespace ormel::test

int main() {
    using namespace ormel::test;
    RecordingEffect late;
    ormel::SpatializerParamCache().setProfile(ormel::ORM_SPATIALIZER_PROFILE_MOVIE, &late, false);
    const std::vector<Call>& early = kEarlyUse.effect.calls;
    const bool sameCalls =
            std::equal(early.begin(), early.end(), late.calls.begin(), late.calls.end(), isSame);
    return kEarlyUse.ranFirst && early.size() > 100 && sameCalls ? 0 : 1;
}
