#include <ormel/SpatializerParamParser.h>

#include "PackedListReader.h"

namespace ormel {

namespace {

constexpr char kLogTag[] = "OrmSpatializerParamParser";

}  // namespace

bool SpatializerParamParser::begin() {
    return PackedListReader(*this, kLogTag).begin();
}

bool SpatializerParamParser::next() {
    return PackedListReader(*this, kLogTag).next();
}

bool SpatializerParamParser::validate() {
    return PackedListReader(*this, kLogTag).validate();
}

}  // namespace ormel
