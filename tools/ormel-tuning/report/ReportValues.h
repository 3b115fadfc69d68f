// Values of the effect as parts of a page, old ones beside new ones.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "document/PackedEntries.h"
#include "text/Json.h"

namespace ormel::tools {

/** What an effect keeps under a code; null where it keeps nothing. */
struct ReportValue {
    const std::vector<int32_t>* values = nullptr;
    std::optional<Shape> shape = {};
};

/**
 * {now, was, parts: {fields: [{name, now, was}], bands: {names, rows: [{cells}]}, items,
 * oldValues}}. A cell has "was" where the other document has another number in its place; where the
 * two do not have the same shape, "oldValues" has all of them.
 */
Json valuesJson(const ReportValue& now, const ReportValue& was);

}  // namespace ormel::tools
