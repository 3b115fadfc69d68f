// The rows of the table of setters.
#pragma once

#include <ormel/Parameter.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <new>

namespace ormel {

/** The parameters of a row: one, or one for each attribute that its setter reads. */
class RowParameters {
  public:
    constexpr RowParameters(std::initializer_list<Parameter> params) {
        for (const Parameter param : params) {
            mParams[mCount++] = static_cast<uint8_t>(param);
        }
    }

    constexpr Parameter operator[](size_t i) const { return static_cast<Parameter>(mParams[i]); }
    constexpr size_t size() const { return mCount; }

  private:
    static_assert(kParameterCount <= 256);
    std::array<uint8_t, 5> mParams = {};
    uint8_t mCount = 0;
};

/** An element's name, what reads such elements, and what they feed. */
struct SetterRow {
    const char* nodeName;
    uint8_t kind;
    RowParameters params;

    template <typename Setter>
    Setter* make(void* place) const {
        return new (place) Setter(*this);
    }
};

}  // namespace ormel
