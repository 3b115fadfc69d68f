// The entries of a packed parameter list, taken apart.
#pragma once

#include <ormel/EntryLayout.h>
#include <ormel/ParameterValues.h>

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace ormel::tools {

struct Entry {
    int32_t device;
    int32_t code;
    std::vector<int32_t> values;
};

/** The entries of a list that the library made. */
std::vector<Entry> entriesOf(const std::vector<int32_t>& list);

/** What an object holds of a parameter; empty where it holds nothing. */
const std::vector<int>& valuesOf(const ParameterValues& object, Parameter param);

/** How the entries under a code are made; those of an unknown one of nothing. */
EntryLayout layoutOf(int32_t code);

/** The class of the objects that entries under a code are made from. */
ParameterOwner ownerOf(int32_t code);

/** The parameters that an entry was made from, of the object that it was made from. */
std::set<Parameter> sourcesOf(const Entry& entry, const ParameterValues& object);

/** What the values of an entry are, by their places. */
struct Shape {
    struct Column {
        std::string name;
        Parameter param;
        std::vector<int32_t> values;
    };

    /** Values that stand for themselves, by name. */
    std::vector<std::pair<std::string, int32_t>> fields;
    /** Values by band, all of one length. */
    std::vector<Column> columns;
    /** Values whose number nothing tells beforehand, and their name. */
    std::vector<int32_t> rest;
    std::string restName;
};

/**
 * The shape of an entry's values. None for parameters that are a plain value or row, and for values
 * that are too few or too many for what they announce.
 */
std::optional<Shape> shapeOf(int32_t code, const std::vector<int32_t>& values);

/** The shape of values whose first stand for themselves; none if there are fewer. */
std::optional<Shape> shapeOf(const std::vector<int32_t>& values,
                             std::initializer_list<const char*> fields, const char* restName);

}  // namespace ormel::tools
