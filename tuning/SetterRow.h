// The rows of the table of setters.
#pragma once

#include <ormel/ParameterList.h>

#include <cstdint>
#include <new>
#include <string_view>

namespace ormel {

/** An element's name, what reads such elements, and what they feed. */
struct SetterRow {
    constexpr SetterRow(std::string_view name, uint8_t rowKind, ParameterList fed)
        : nameBegin(name.data()),
          nameSize(static_cast<uint8_t>(name.size())),
          kind(rowKind),
          params(fed) {}

    constexpr std::string_view nodeName() const { return {nameBegin, nameSize}; }

    template <typename Setter>
    Setter* make(void* place) const {
        return new (place) Setter(*this);
    }

    // A length of one byte fits where there would be padding, and spares every lookup the count.
    const char* nameBegin;
    uint8_t nameSize;
    uint8_t kind;
    ParameterList params;
};

}  // namespace ormel
