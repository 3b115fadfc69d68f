// The shared parameter store's reader of packed parameter lists.
#pragma once

#include <ormel/SpatializerParamParser.h>

namespace ormel {

/**
 * Reads the same lists as SpatializerParamParser, through the same fields and with the same
 * results. Messages have the tag "EffectParamParser".
 */
class EffectParamParser : public ParserBuffer {
  public:
    using ParserBuffer::ParserBuffer;

    bool begin();
    bool next();
    bool validate();

    int32_t mProfileId = 0;
    int32_t mParamCount = 0;
    int32_t mParamIndex = 0;
    int32_t mDeviceId = 0;
    int32_t mParamCode = 0;
    int32_t mValueCount = 0;
    int32_t* mValues = nullptr;
};

}  // namespace ormel
