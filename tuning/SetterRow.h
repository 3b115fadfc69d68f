// The rows of the table of setters.
#pragma once

#include <ormel/ParameterList.h>

#include <cstdint>
#include <new>

namespace ormel {

/** An element's name, what reads such elements, and what they feed. */
struct SetterRow {
    const char* nodeName;
    uint8_t kind;
    ParameterList params;

    template <typename Setter>
    Setter* make(void* place) const {
        return new (place) Setter(*this);
    }
};

}  // namespace ormel
