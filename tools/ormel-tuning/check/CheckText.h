// What the reader makes of the texts of attributes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ormel::tools {

enum class TextFault : uint8_t {
    NONE,
    /** Nothing but whitespace, if that. */
    EMPTY,
    /** A word for true or false that the reader does not take for one. */
    MISSPELT,
    NOT_A_NUMBER,
    OUT_OF_RANGE,
};

/** What is wrong with a text that should be a whole number. */
TextFault faultOfNumber(std::string_view text);

/** The same of a preset's band, whose column is read as a row: a blank behind the number ends it.
 */
TextFault faultOfBand(std::string_view text);

/** The same of one that may be true or false as well. */
TextFault faultOfSwitch(std::string_view text);

/** Whether a text means true, however it is spelt. */
bool meansTrue(std::string_view text);

/** The name that a text is most like, but for case and dashes; empty where none is near. */
std::string nearestOf(std::string_view text, const std::vector<std::string>& names);

/** What is wrong with a row of numbers. */
struct RowFault {
    /** NONE, OUT_OF_RANGE, or NOT_A_NUMBER where the row ends before the text does. */
    TextFault fault = TextFault::NONE;
    /** Numbers that the reader gets out of it. */
    size_t read = 0;
    /** What it stops at. */
    std::string at;
};
RowFault faultOfRow(std::string_view text);

}  // namespace ormel::tools
