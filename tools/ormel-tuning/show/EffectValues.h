// What an effect gets under a code, which every command shows in its own way.
#pragma once

#include <cstdint>
#include <optional>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include "document/AppliedLists.h"
#include "document/EntryOrigins.h"
#include "document/PackedEntries.h"
#include "text/Json.h"

namespace ormel::tools {

struct EffectValue {
    int32_t device = 0;
    int32_t code = 0;
    /** None where the effect gets nothing; then, if there is an entry, why. */
    std::optional<std::vector<int32_t>> values = {};
    std::string notSent = {};
    /** The values by their places; without parts, they are its rest, which has no name. */
    Shape shape = {};
    Origins origins = {};
    /** What stands behind each origin, in words; empty unless somebody asks. */
    std::vector<std::string> reasons = {};
};

/** {device, deviceId, code, meaning, values, structure, from: [{parameter, origin, line, why}]}. */
void to_json(Json& json, const EffectValue& value);

/** An entry of a list as it stands there. */
EffectValue valueOf(const Entry& entry, Origins origins);

/** What an effect keeps for a device and a code of a list, null for none; without origins. */
EffectValue keptValue(const AppliedList* applied, int32_t device, int32_t code);

/**
 * The entries of an applied list in order, each with what the effect keeps. Of entries for one
 * device and code that is the last one.
 */
std::vector<EffectValue> keptValues(const AppliedList& applied, const EntryOrigins& origins);

/** Whether values have named parts; those of a plain value or row have none. */
bool hasParts(const Shape& shape);

/** Whether two shapes have the same fields and bands. Their rests may differ in length. */
bool haveSameParts(const Shape& left, const Shape& right);

/** Where the values of a printed parameter begin, below its name. */
constexpr size_t kValueColumn = 10;

/** Prints values below their parameter: a row as it is, fields by name, and bands as a table. */
void printValues(const Shape& shape, std::ostream& out);

/** The source lines of a value. */
std::set<int32_t> sourceLines(const Origins& origins);

/** "line 12", "lines 12, 40"; empty for no lines. */
std::string linesText(const std::set<int32_t>& lines);

}  // namespace ormel::tools
