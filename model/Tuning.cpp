#include <ormel/Tuning.h>

#include <utility>

#include "DumpText.h"
#include "NeverDestroyed.h"

namespace ormel {

namespace {

std::map<std::string, Endpoint> buildEndpointsByName() {
    std::map<std::string, Endpoint> map;
    for (size_t i = 0; i < kEndpointCount; ++i) {
        map.emplace(kEndpointNames[i], static_cast<Endpoint>(i));
    }
    return map;
}

const std::map<std::string, Endpoint>& endpointsByName() {
    static NeverDestroyed<std::map<std::string, Endpoint>> map(buildEndpointsByName());
    return *map;
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
