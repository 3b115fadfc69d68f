// A list of parameters in a table row.
#pragma once

#include <ormel/Parameter.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <vector>

namespace ormel {

/** Up to five parameters, one byte each. */
class ParameterList {
  public:
    constexpr ParameterList(std::initializer_list<Parameter> params) {
        for (const Parameter param : params) {
            mParams[mCount++] = static_cast<uint8_t>(param);
        }
    }

    constexpr size_t size() const { return mCount; }

    /** @param i below size() */
    constexpr Parameter operator[](size_t i) const { return static_cast<Parameter>(mParams[i]); }

    std::vector<Parameter> toVector() const {
        std::vector<Parameter> params;
        for (size_t i = 0; i < mCount; ++i) {
            params.push_back((*this)[i]);
        }
        return params;
    }

  private:
    static_assert(kParameterCount <= 256, "a parameter fits a byte");
    std::array<uint8_t, 5> mParams = {};
    uint8_t mCount = 0;
};

}  // namespace ormel
