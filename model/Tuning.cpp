#include <ormel/Tuning.h>

#include <utility>

#include "DumpText.h"

namespace ormel {

namespace {

const std::map<std::string, Endpoint>& endpointsByName() {
    static const auto& map = *new std::map<std::string, Endpoint>{
            {kEndpointNames[ENDPOINT_SPEAKER], ENDPOINT_SPEAKER},
            {kEndpointNames[ENDPOINT_HEADPHONE], ENDPOINT_HEADPHONE},
            {kEndpointNames[ENDPOINT_OTHER], ENDPOINT_OTHER},
    };
    return map;
}

}  // namespace

const std::set<Parameter>& Tuning::kValidParams = parametersOf(ParameterOwner::TUNING);
const std::map<std::string, Endpoint>& Tuning::kEndpNameToEndpoint = endpointsByName();

Tuning::Tuning(std::string name, Endpoint endpoint, bool mono)
    : Tuning(-1, std::move(name), endpoint, mono, true) {
    mDirty = true;
}

Tuning::Tuning(long id, std::string name, Endpoint endpoint, bool mono, bool readonly)
    : ParameterValues(id, false),
      mName(std::move(name)),
      mEndpoint(endpoint),
      mMono(mono),
      mReadonly(readonly) {}

const std::set<Parameter>& Tuning::getValidParams() const {
    return parametersOf(ParameterOwner::TUNING);
}

void Tuning::setEndpoint(const std::string& name) {
    const auto found = endpointsByName().find(name);
    if (found != endpointsByName().end()) {
        mEndpoint = found->second;
    }
}

std::string Tuning::toString() {
    fillAbsentParams();
    return dumpLine("id", mId) + dumpLine("name", mName) +
           dumpLine("endpoint", endpointName(mEndpoint)) + dumpLine("mono", mMono) +
           dumpLine("readonly", mReadonly) + valuesToString();
}

}  // namespace ormel
