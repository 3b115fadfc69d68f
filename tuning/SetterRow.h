// The rows of the setter table.
#pragma once

#include <ormel/ParameterList.h>

#include <cstdint>
#include <new>
#include <string_view>

namespace ormel {

/** An element's name, the class of its setter, and the parameters that it sets. */
struct SetterRow {
    constexpr SetterRow(std::string_view name, uint8_t rowKind, const ParameterList& fed)
        : nameBegin(name.data()),
          nameSize(static_cast<uint8_t>(name.size())),
          kind(rowKind),
          params(fed) {}

    constexpr std::string_view nodeName() const { return {nameBegin, nameSize}; }

    template <typename Setter>
    Setter* make(void* place) const {
        return new (place) Setter(*this);
    }

    // A length of one byte fits into padding, and saves counting the name at every lookup.
    const char* nameBegin;
    uint8_t nameSize;
    uint8_t kind;
    ParameterList params;
};

}  // namespace ormel
