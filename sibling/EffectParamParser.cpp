#include <kivparamstorage/EffectParamParser.h>

#include "store/PackedListReader.h"

namespace ormel {

namespace {

constexpr char kLogTag[] = "EffectParamParser";

}  // namespace

bool EffectParamParser::begin() {
    return PackedListReader(*this, kLogTag).begin();
}

bool EffectParamParser::next() {
    return PackedListReader(*this, kLogTag).next();
}

bool EffectParamParser::validate() {
    return PackedListReader(*this, kLogTag).validate();
}

}  // namespace ormel
