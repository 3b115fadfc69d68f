// The entries of a packed parameter list, taken apart.
#pragma once

#include <ormel/EntryLayout.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ormel::tools {

struct Entry {
    int32_t device;
    int32_t code;
    std::vector<int32_t> values;
};

/** The entries of a list that the library made. */
std::vector<Entry> entriesOf(const std::vector<int32_t>& list);

/** How the entries under a code are made; those of an unknown one of nothing. */
EntryLayout layoutOf(int32_t code);

/**
 * How many of its layout's lists by channel an entry has; none where it does not depend on
 * channels, or announces channels that there are no lists of.
 */
std::optional<int32_t> channelsOf(const Entry& entry, const EntryLayout& layout);

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

/** The shape's column that a parameter's values are in, null when there is none. */
const Shape::Column* findColumn(const Shape& shape, Parameter param);

}  // namespace ormel::tools
